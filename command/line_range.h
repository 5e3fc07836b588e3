#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace zan {

// Lines by zero-based index, both included. first > last only for "REST" with the cursor below the text.
struct LineRange {
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  bool operator==(const LineRange&) const = default;
};

// What a line reference counts from. The cursor may stand below the last line.
struct LineContext {
  std::uint64_t line_count = 1;
  std::uint64_t cursor_row = 0;
};

// One line: "12", ".", CURRENT, BEGIN, FIRST, START, END, LAST, ".+3", ". - 3". Clamped to the last line
// (".-n" to the first). Nothing for any other text, for line 0, for a number beyond 64 bits and when there
// are no lines.
std::optional<std::uint64_t> parse_line_ref(std::string_view text, const LineContext& context);

// Lines: one reference, two of them joined by " THRU ", ":" or "-" (in either order), WHOLE, ALL or REST.
// What follows a slash is ignored. Nothing for any other text and when there are no lines.
std::optional<LineRange> parse_line_range(std::string_view text, const LineContext& context);

// The same for lines of a buffer that has no cursor here: line numbers, " THRU ", ":", WHOLE and ALL only.
std::optional<LineRange> parse_number_range(std::string_view text, std::uint64_t line_count);

// The text before the first slash, trimmed.
std::string_view strip_qualifiers_for_range(std::string_view text);

} // namespace zan
