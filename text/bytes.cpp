#include "text/bytes.h"

#include <algorithm>
#include <limits>

namespace zan {

std::string_view trim(std::string_view text) {
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view take_word(std::string_view& text) {
  text = trim(text);
  std::size_t length = 0;
  while (length < text.size() && !is_space(text[length])) ++length;
  const std::string_view word = text.substr(0, length);
  text.remove_prefix(length);
  return word;
}

std::string upper(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(), to_upper);
  return result;
}

std::string lower(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(), to_lower);
  return result;
}

bool starts_with_ci(std::string_view text, std::string_view prefix) {
  return std::ranges::equal(text.substr(0, prefix.size()), prefix, {}, to_upper, to_upper);
}

std::string_view strip_optional_quotes(std::string_view text) {
  const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return quoted ? text.substr(1, text.size() - 2) : text;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (&part != &parts.front()) text += separator;
    text += part;
  }
  return text;
}

std::string with_line_feeds(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    result += text[i] == '\r' ? '\n' : text[i];
  }
  return result;
}

std::string hexadecimal(char byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  return {kDigits[to_byte(byte) >> 4U], kDigits[to_byte(byte) & 15U]};
}

std::string counted(std::uint64_t count, std::string_view noun) {
  return std::to_string(count).append(" ").append(noun).append(count == 1 ? "" : "s");
}

std::optional<Sides> cut_at(std::string_view text, std::string_view separator) {
  const std::size_t at = upper(text).find(separator);
  if (at == std::string::npos) return std::nullopt;
  return Sides{text.substr(0, at), text.substr(at + separator.size())};
}

bool all_digits(std::string_view text) { return !text.empty() && std::ranges::all_of(text, is_digit); }

std::optional<std::uint64_t> parse_digits(std::string_view text) {
  if (!all_digits(text)) return std::nullopt;
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t value = 0;
  for (const char c : text) {
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (value > (kMost - digit) / 10) return std::nullopt;
    value = value * 10 + digit;
  }
  return value;
}

std::optional<int> parse_int_prefix(std::string_view text) {
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const auto end = std::ranges::find_if_not(text, is_digit);
  const auto digits = parse_digits(text.substr(0, static_cast<std::size_t>(end - text.begin())));
  // The magnitude of the lowest int is one more than that of the highest.
  constexpr std::uint64_t kHighest = std::numeric_limits<int>::max();
  if (!digits || *digits > kHighest + (negative ? 1 : 0)) return std::nullopt;
  const auto value = static_cast<std::int64_t>(*digits);
  return static_cast<int>(negative ? -value : value);
}

} // namespace zan
