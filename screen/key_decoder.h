#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zan {

// Makes keys of the bytes that a terminal sends: a byte is a key of its own, or begins a sequence that stands
// for one. Each key costs a look at its bytes, however many wait behind it.
class KeyDecoder {
 public:
  // What a sequence stands for: the code of a key, 0 for nothing, a negative number when it begins a longer
  // sequence.
  using Meaning = int (*)(const char* sequence);

  void learn(Meaning meaning); // again whenever a meaning has changed
  void feed(std::string_view bytes);
  bool empty() const { return used_ == bytes_.size(); }
  // The first key. Nothing when there are no bytes, or when they may go on as a sequence; once nothing more
  // has come for a while, `complete` makes a byte of what only began one.
  std::optional<int> next(bool complete);
  bool remove(char byte); // its first occurrence; false when there is none
  std::string take_rest();

 private:
  Meaning meaning_ = nullptr;
  std::array<bool, 256> begins_sequence_{};
  std::string bytes_;
  std::size_t used_ = 0; // of bytes_
};

} // namespace zan
