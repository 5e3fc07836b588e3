#pragma once

#include <cstddef>
#include <span>
#include <string_view>

// The spellings of the command language. A line is compared, in any case of letters, with the exact forms and
// then with the prefix forms.
namespace zan {

// A whole line, upper case, with one blank between words.
struct ExactForm {
  std::string_view line;
  std::string_view key;
  std::string_view arg = {};
};

// The beginning of a line; the argument is what follows it, trimmed.
struct PrefixForm {
  std::string_view prefix;
  std::string_view key;
};

inline constexpr std::size_t kLongestExactForm = 21;

// Lines whose key is the line itself with "-" for each blank. Sorted.
std::span<const std::string_view> regular_forms();
// Abbreviations, aliases and lines that imply an argument. Sorted by line.
std::span<const ExactForm> other_forms();
// The first that fits decides.
std::span<const PrefixForm> prefix_forms();

} // namespace zan
