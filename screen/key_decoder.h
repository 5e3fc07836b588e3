#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace zan {

// What some bytes mean as the escape sequence of a key.
struct SequenceMeaning {
  enum class Kind { none, begins, key }; // no sequence; the first bytes of some; a whole one
  Kind kind = Kind::none;
  int key = 0;
};

// Turns the bytes that a terminal sends into keys. A byte is a key of its own or begins an escape sequence.
class KeyDecoder {
 public:
  using Lookup = SequenceMeaning (*)(std::string_view sequence);

  void learn(Lookup meaning_of); // again whenever a meaning has changed
  // The key that `bytes` begin with. Nothing when there are none, or when they may become an escape sequence.
  // `complete`: no more bytes have followed in time, so the first byte is a key of its own.
  struct Key {
    int code = 0;
    std::size_t length = 0; // in bytes
  };
  std::optional<Key> first(std::string_view bytes, bool complete) const;

 private:
  Lookup meaning_of_ = nullptr;
  std::array<bool, 256> begins_sequence_{};
};

} // namespace zan
