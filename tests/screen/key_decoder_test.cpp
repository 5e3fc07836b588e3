#include "screen/key_decoder.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

// ESC [ A is 1, ESC [ 1 ~ is 2, the byte 155 with A is 3.
zan::SequenceMeaning meaning(std::string_view sequence) {
  using Kind = zan::SequenceMeaning::Kind;
  struct Known {
    std::string_view bytes;
    int key;
  };
  for (const Known& known : {Known{"\033[A", 1}, Known{"\033[1~", 2}, Known{"\233A", 3}}) {
    if (known.bytes == sequence) return {Kind::key, known.key};
    if (known.bytes.starts_with(sequence)) return {Kind::begins};
  }
  return {};
}

// Takes the keys.
std::vector<int> keys_of(std::string_view& bytes, bool complete) {
  zan::KeyDecoder decoder;
  decoder.learn(meaning);
  std::vector<int> keys;
  while (const auto key = decoder.first(bytes, complete)) {
    keys.push_back(key->code);
    bytes.remove_prefix(key->length);
  }
  return keys;
}

} // namespace

TEST(KeyDecoder, MakesKeysOfBytes) {
  struct Case {
    std::string_view bytes;
    std::vector<int> at_once, complete;
  };
  const Case cases[] = {
      {"ab", {'a', 'b'}, {}},
      {"\033[A\033[1~x\233A", {1, 2, 'x', 3}, {}},
      {"\033", {}, {27}},
      {"x\033[1", {'x'}, {27, '[', '1'}},
      {"\033[2~", {27, '[', '2', '~'}, {}},
      {"\033\033[A", {27, 1}, {}},
      {"\033[1~z\003", {2, 'z', 3}, {}},
      {{"\033[\0A\0", 5}, {27, '[', 0, 'A', 0}, {}},
      {"\377\200", {255, 128}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.bytes);
    std::string_view bytes = c.bytes;
    EXPECT_EQ(keys_of(bytes, false), c.at_once);
    EXPECT_EQ(keys_of(bytes, true), c.complete);
    EXPECT_TRUE(bytes.empty());
  }
}
