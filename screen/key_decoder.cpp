#include "screen/key_decoder.h"

namespace zan {

void KeyDecoder::learn(Meaning meaning) {
  meaning_ = meaning;
  for (std::size_t byte = 1; byte < begins_sequence_.size(); ++byte) {
    const char sequence[] = {static_cast<char>(static_cast<unsigned char>(byte)), '\0'};
    begins_sequence_[byte] = meaning(sequence) != 0;
  }
}

void KeyDecoder::feed(std::string_view bytes) {
  if (empty()) {
    bytes_.clear();
    used_ = 0;
  }
  bytes_.append(bytes);
}

std::optional<int> KeyDecoder::next(bool complete) {
  if (empty()) return std::nullopt;
  const auto byte = static_cast<unsigned char>(bytes_[used_]);
  if (begins_sequence_[byte]) {
    std::string sequence;
    int key = -1;
    for (std::size_t i = used_; key < 0 && i < bytes_.size(); ++i) {
      sequence += bytes_[i];
      // No sequence holds a NUL, which would end it for whoever looks it up.
      key = bytes_[i] == '\0' ? 0 : meaning_(sequence.c_str());
    }
    if (key < 0 && !complete) return std::nullopt;
    if (key > 0) {
      used_ += sequence.size();
      return key;
    }
  }
  ++used_;
  return byte;
}

bool KeyDecoder::remove(char byte) {
  const std::size_t at = bytes_.find(byte, used_);
  if (at == std::string::npos) return false;
  bytes_.erase(at, 1);
  return true;
}

std::string KeyDecoder::take_rest() {
  std::string rest = bytes_.substr(used_);
  used_ = bytes_.size();
  return rest;
}

} // namespace zan
