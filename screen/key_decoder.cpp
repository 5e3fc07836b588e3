#include "screen/key_decoder.h"

namespace zan {

using Kind = SequenceMeaning::Kind;

void KeyDecoder::learn(Lookup meaning_of) {
  meaning_of_ = meaning_of;
  for (std::size_t byte = 0; byte < begins_sequence_.size(); ++byte) {
    const char c = static_cast<char>(static_cast<unsigned char>(byte));
    begins_sequence_[byte] = meaning_of({&c, 1}).kind != Kind::none;
  }
}

std::optional<KeyDecoder::Key> KeyDecoder::first(std::string_view bytes, bool complete) const {
  if (bytes.empty()) return std::nullopt;
  const Key byte{static_cast<unsigned char>(bytes.front()), 1};
  if (!begins_sequence_[static_cast<std::size_t>(byte.code)]) return byte;
  for (std::size_t length = 1; length <= bytes.size(); ++length) {
    const SequenceMeaning meaning = meaning_of_(bytes.substr(0, length));
    if (meaning.kind == Kind::key) return Key{meaning.key, length};
    if (meaning.kind == Kind::none) return byte;
  }
  return complete ? std::optional(byte) : std::nullopt;
}

} // namespace zan
