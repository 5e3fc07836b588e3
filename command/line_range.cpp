#include "command/line_range.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "text/bytes.h"

namespace zan {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

std::optional<Sides> split_at_thru_or_colon(std::string_view text) {
  const auto sides = cut_at(text, " THRU ");
  return sides ? sides : cut_at(text, ":");
}

// At the first "-" that has something on both sides, unless it is the sign of ".-n".
std::optional<Sides> split_at_dash(std::string_view text) {
  const std::size_t at = text.find('-', 1);
  if (at == kNone || at + 1 == text.size() || trim(text.substr(0, at)) == ".") return std::nullopt;
  return Sides{text.substr(0, at), text.substr(at + 1)};
}

std::optional<LineRange> ordered(std::optional<std::uint64_t> one, std::optional<std::uint64_t> other) {
  if (!one || !other) return std::nullopt;
  return LineRange{std::min(*one, *other), std::max(*one, *other)};
}

std::optional<std::uint64_t> parse_line_number(std::string_view text, std::uint64_t line_count) {
  const auto number = parse_digits(trim(text));
  if (!number || *number == 0 || line_count == 0) return std::nullopt;
  return std::min(*number, line_count) - 1;
}

// `offset` is what follows the dot: a sign and digits, with white space around the sign. `current` is below
// `line_count`.
std::optional<std::uint64_t> parse_relative(std::string_view offset, std::uint64_t current,
                                            std::uint64_t line_count) {
  offset = trim(offset);
  if (!offset.starts_with('+') && !offset.starts_with('-')) return std::nullopt;
  const auto number = parse_digits(trim(offset.substr(1)));
  if (!number) return std::nullopt;
  if (offset.front() == '-') return current - std::min(*number, current);
  return current + std::min(*number, line_count - 1 - current); // the sum of the two could overflow
}

} // namespace

std::optional<std::uint64_t> parse_line_ref(std::string_view text, const LineContext& context) {
  if (context.line_count == 0) return std::nullopt;
  const std::uint64_t last = context.line_count - 1;
  const std::uint64_t current = std::min(context.cursor_row, last);
  const std::string word = upper(trim(text));
  if (word == "." || word == "CURRENT") return current;
  if (word == "BEGIN" || word == "FIRST" || word == "START") return 0;
  if (word == "END" || word == "LAST") return last;
  if (word.starts_with('.'))
    return parse_relative(std::string_view(word).substr(1), current, context.line_count);
  return parse_line_number(word, context.line_count);
}

std::optional<LineRange> parse_line_range(std::string_view text, const LineContext& context) {
  const std::string_view range = strip_qualifiers_for_range(text);
  if (range.empty() || context.line_count == 0) return std::nullopt;
  const std::uint64_t last = context.line_count - 1;
  const std::string word = upper(range);
  if (word == "WHOLE" || word == "ALL") return LineRange{0, last};
  if (word == "REST") return LineRange{context.cursor_row, last};
  auto sides = split_at_thru_or_colon(range);
  if (!sides) sides = split_at_dash(range);
  if (sides) return ordered(parse_line_ref(sides->before, context), parse_line_ref(sides->after, context));
  const auto line = parse_line_ref(range, context);
  return ordered(line, line);
}

std::optional<LineRange> parse_number_range(std::string_view text, std::uint64_t line_count) {
  const std::string_view range = strip_qualifiers_for_range(text);
  const std::string word = upper(range);
  if (word == "WHOLE" || word == "ALL") {
    if (line_count == 0) return std::nullopt;
    return LineRange{0, line_count - 1};
  }
  const Sides sides = split_at_thru_or_colon(range).value_or(Sides{range, range});
  return ordered(parse_line_number(sides.before, line_count), parse_line_number(sides.after, line_count));
}

std::string_view strip_qualifiers_for_range(std::string_view text) {
  return trim(text.substr(0, text.find('/')));
}

} // namespace zan
