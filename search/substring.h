#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zan {

// A to Z in lower case, for searches that ignore case: to_lower without a call.
constexpr char folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

// A byte string to search texts for, matching the case of A to Z or ignoring it. The text is never copied.
//
// Its two rarest bytes are compared with the text at 64 places at once, so that a text without it is passed
// at the speed of memory. When they match too often in vain, the search for a long needle falls back to
// Knuth-Morris-Pratt: the cost is linear for any text and needle.
class Substring {
 public:
  static constexpr std::size_t npos = std::string_view::npos;

  Substring() = default; // empty: found everywhere
  Substring(std::string_view needle, bool exact);
  static Substring either(char a, char b, bool exact); // of one byte, which is one of the two

  std::size_t size() const { return bytes_.size(); }
  bool empty() const { return bytes_.empty(); }
  std::string_view bytes() const { return bytes_; } // in lower case, unless exact

  // How common it may be in ordinary text, 0 for the rarest: to choose what to search for.
  unsigned commonness() const;

  // First occurrence that starts at or after `from`; npos when there is none.
  std::size_t find(std::string_view text, std::size_t from) const;
  // Last occurrence within the first `limit` bytes of the text.
  std::size_t find_last(std::string_view text, std::size_t limit) const;

 private:
  using Borders = std::vector<std::size_t>;
  // A byte of the needle that is compared first. `fold`, the bit in which letter cases differ or 0, is set in
  // the text byte before.
  struct Probe {
    std::size_t at = 0;
    unsigned char byte = 0;
    unsigned char fold = 0;
  };

  Probe probe_at(std::size_t at) const;
  bool matches(const char* text, std::size_t& work) const;
  bool worth_fallback(std::size_t work, std::size_t passed) const;
  std::uint64_t places(const char* text, std::size_t count) const;
  std::size_t kmp_forward(std::string_view text, std::size_t from) const;
  std::size_t kmp_backward(std::string_view text, std::size_t limit) const;

  std::string bytes_;
  bool exact_ = true;
  bool either_ = false; // one matching probe is enough; otherwise both must match
  Probe first_, second_;
  Borders forward_, backward_; // of the needle and of its reverse; empty for a short needle
};

} // namespace zan
