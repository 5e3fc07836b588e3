#pragma once

#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Character classes and case of single bytes, in the "C" locale: only ASCII letters change case, bytes above
// 127 belong to no class. This is the one place that calls <cctype>, which is undefined for negative chars.
namespace zan {

inline unsigned char to_byte(char c) { return static_cast<unsigned char>(c); }
// Bytes above 127 before the others, also where char has no sign.
struct SignedByteOrder {
  bool operator()(char a, char b) const { return static_cast<signed char>(a) < static_cast<signed char>(b); }
};
inline bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
inline bool is_digit(char c) { return c >= '0' && c <= '9'; }
inline bool is_alpha(char c) { return std::isalpha(to_byte(c)) != 0; }
inline bool is_punct(char c) { return std::ispunct(to_byte(c)) != 0; }
inline bool is_lower(char c) { return std::islower(to_byte(c)) != 0; }
inline bool is_upper(char c) { return std::isupper(to_byte(c)) != 0; }
inline char to_upper(char c) { return static_cast<char>(std::toupper(to_byte(c))); }
inline char to_lower(char c) { return static_cast<char>(std::tolower(to_byte(c))); }

std::string_view trim(std::string_view text); // without leading and trailing white space
// Removes the next word from `text` and returns it; "" at its end. White space separates words.
std::string_view take_word(std::string_view& text);
std::string upper(std::string_view text);
std::string lower(std::string_view text);
bool starts_with_ci(std::string_view text, std::string_view prefix);
// Without the double quotes when it begins and ends with one; a single `"` stays.
std::string_view strip_optional_quotes(std::string_view text);
std::string joined(const std::vector<std::string>& parts, std::string_view separator);
std::string counted(std::uint64_t count, std::string_view noun); // "1 line", "2 lines"

std::string with_line_feeds(std::string_view text); // for line ends of any kind
std::string hexadecimal(char byte);                 // two digits

// What stands on the two sides of a separator.
struct Sides {
  std::string_view before;
  std::string_view after;
};
// Around the first `separator`, which is in upper case, in any case of letters. Nothing when there is none.
std::optional<Sides> cut_at(std::string_view text, std::string_view separator);

bool all_digits(std::string_view text); // false for ""

// The whole of `text` as a decimal number: digits only. Nothing for "", any other byte, or overflow.
std::optional<std::uint64_t> parse_digits(std::string_view text);
// As the C library's strtol converts into an int: leading white space, a sign, digits, anything after them.
// Nothing when there are no digits or the value does not fit.
std::optional<int> parse_int_prefix(std::string_view text);

} // namespace zan
