#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zan {

// A to Z as a to z, for searches that do not tell them apart: to_lower where it must cost nothing.
constexpr char folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

// A byte string to be found in texts, exactly or with A to Z taken for a to z; the text is never copied.
//
// Two of its rarer bytes are compared with the text at 64 places at once, so a text that does not hold it is
// passed at the speed of memory. Where these let through too many false places, a long needle is searched
// for by an automaton instead, so the cost is linear whatever the text and the needle.
class Substring {
 public:
  static constexpr std::size_t npos = std::string_view::npos;

  Substring() = default; // empty: found everywhere
  Substring(std::string_view needle, bool exact);
  static Substring either(char a, char b, bool exact); // of one byte, which is one of the two

  std::size_t size() const { return bytes_.size(); }
  bool empty() const { return bytes_.empty(); }
  std::string_view bytes() const { return bytes_; } // in lower case, unless exact

  // How often it may be found in ordinary text, from 0 for the rarest; for a choice of what to look for.
  unsigned commonness() const;

  // First occurrence that starts at or after `from`; npos when there is none.
  std::size_t find(std::string_view text, std::size_t from) const;
  // Last occurrence within the first `limit` bytes of the text.
  std::size_t find_last(std::string_view text, std::size_t limit) const;

 private:
  using Borders = std::vector<std::size_t>;
  // One byte of the needle; `fold` is the bit that its text byte may have either way.
  struct Probe {
    std::size_t at = 0;
    unsigned char byte = 0;
    unsigned char fold = 0;
  };

  Probe probe_at(std::size_t at) const;
  bool matches(const char* text, std::size_t& work) const;
  bool worth_automaton(std::size_t work, std::size_t passed) const;
  std::uint64_t places(const char* text, std::size_t count) const;
  std::size_t run_forward(std::string_view text, std::size_t from) const;
  std::size_t run_backward(std::string_view text, std::size_t limit) const;

  std::string bytes_;
  bool exact_ = true;
  bool either_ = false; // what one of the probes finds is found; otherwise both must
  Probe first_, second_;
  Borders forward_, backward_; // of the needle and of the reversed one; empty for a short needle
};

} // namespace zan
