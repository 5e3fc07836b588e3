#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace zan::fuzz {

// What a target takes its decisions from. At its end every byte is 0 and every line empty. Lines and letters
// rather than numbers, so that a corpus can be read and written by hand.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool empty() const { return rest_.empty(); }
  unsigned char byte() {
    if (rest_.empty()) return 0;
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return static_cast<unsigned char>(c);
  }
  std::size_t below(std::size_t limit) { return byte() % limit; }
  bool flag() { return byte() % 2 == 1; }
  // Up to the next line feed, which is passed over.
  std::string line() {
    const std::size_t length = std::min(rest_.find('\n'), rest_.size());
    std::string taken(rest_.substr(0, length));
    rest_.remove_prefix(std::min(length + 1, rest_.size()));
    return taken;
  }
  // Up to an empty one.
  std::vector<std::string> lines() {
    std::vector<std::string> taken;
    for (std::string next = line(); !next.empty(); next = line()) taken.push_back(next);
    return taken;
  }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

// Ends the program when what must hold does not. `line` is the caller's.
inline void check(bool holds, int line = __builtin_LINE(), const char* file = __builtin_FILE()) {
  if (holds) return;
  std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
  std::abort();
}

inline std::vector<std::string> split_lines(std::string_view text) {
  std::vector<std::string> lines(1);
  for (const char c : text) {
    if (c == '\n') lines.emplace_back();
    else lines.back() += c;
  }
  return lines;
}

} // namespace zan::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
