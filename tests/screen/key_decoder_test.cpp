#include "screen/key_decoder.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

// ESC [ A is 1, ESC [ 1 ~ is 2, the byte 155 with A is 3.
int meaning(const char* sequence) {
  struct Known {
    std::string_view bytes;
    int key;
  };
  for (const Known& known : {Known{"\033[A", 1}, Known{"\033[1~", 2}, Known{"\233A", 3}}) {
    if (known.bytes == sequence) return known.key;
    if (known.bytes.starts_with(sequence)) return -1;
  }
  return 0;
}

std::vector<int> keys_of(zan::KeyDecoder& decoder, bool complete) {
  std::vector<int> keys;
  while (const auto key = decoder.next(complete)) keys.push_back(*key);
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
      {{"\033[\0A\0", 5}, {27, '[', 0, 'A', 0}, {}},
      {"\377\200", {255, 128}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.bytes);
    zan::KeyDecoder decoder;
    decoder.learn(meaning);
    decoder.feed(c.bytes);
    EXPECT_EQ(keys_of(decoder, false), c.at_once);
    EXPECT_EQ(keys_of(decoder, true), c.complete);
    EXPECT_TRUE(decoder.empty());
  }
}

TEST(KeyDecoder, ASequenceMayComeInParts) {
  zan::KeyDecoder decoder;
  decoder.learn(meaning);
  for (const char c : std::string_view("\033[1")) {
    decoder.feed({&c, 1});
    EXPECT_EQ(decoder.next(false), std::nullopt);
  }
  decoder.feed("~\003z\003");
  EXPECT_TRUE(decoder.remove('\003'));
  EXPECT_EQ(keys_of(decoder, false), (std::vector{2, int{'z'}, 3}));
  EXPECT_FALSE(decoder.remove('\003'));
}
