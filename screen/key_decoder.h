#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace zan {

// Makes keys of the bytes that a terminal sends: a byte is a key of its own, or begins a sequence that stands
// for one.
class KeyDecoder {
 public:
  // What a sequence stands for: the code of a key, 0 for nothing, a negative number when it begins a longer
  // sequence.
  using Meaning = int (*)(const char* sequence);

  void learn(Meaning meaning); // again whenever a meaning has changed
  // The key that `bytes` begin with. Nothing when there are none, or when they may go on as a sequence; once
  // nothing more has come for a while, `complete` makes a byte of what only began one.
  struct Key {
    int code = 0;
    std::size_t length = 0; // in bytes
  };
  std::optional<Key> first(std::string_view bytes, bool complete) const;

 private:
  Meaning meaning_ = nullptr;
  std::array<bool, 256> begins_sequence_{};
};

} // namespace zan
