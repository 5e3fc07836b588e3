#include "screen/key_decoder.h"

#include <string>

namespace zan {

void KeyDecoder::learn(Meaning meaning) {
  meaning_ = meaning;
  for (std::size_t byte = 1; byte < begins_sequence_.size(); ++byte) {
    const char sequence[] = {static_cast<char>(static_cast<unsigned char>(byte)), '\0'};
    begins_sequence_[byte] = meaning(sequence) != 0;
  }
}

std::optional<KeyDecoder::Key> KeyDecoder::first(std::string_view bytes, bool complete) const {
  if (bytes.empty()) return std::nullopt;
  const auto byte = static_cast<unsigned char>(bytes.front());
  if (begins_sequence_[byte]) {
    std::string sequence;
    int key = -1;
    for (std::size_t i = 0; key < 0 && i < bytes.size(); ++i) {
      sequence += bytes[i];
      // No sequence holds a NUL, which would end it for whoever looks it up.
      key = bytes[i] == '\0' ? 0 : meaning_(sequence.c_str());
    }
    if (key < 0 && !complete) return std::nullopt;
    if (key > 0) return Key{key, sequence.size()};
  }
  return Key{byte, 1};
}

} // namespace zan
