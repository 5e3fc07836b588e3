#pragma once

#include <optional>

#include "search/pattern.h"
#include "text/byte_scan.h"
#include "text/line_store.h"

namespace zan {

// What a match must satisfy beyond the pattern.
struct SearchConstraints {
  bool begin = false; // starts its line
  bool end = false;   // ends its line
  bool word = false;  // delimiters, or nothing, on both sides
  ByteSet delimiters{};

  bool none() const { return !begin && !end && !word; }
};

// What stands before a match: the start of its line, or a byte.
struct LeftSide {
  bool line_start = true;
  char byte = 0;
};

// Does a match of `length` bytes at `col` of the line satisfy them? The second form is told what stands
// before.
bool constraints_ok(std::string_view line, std::size_t col, std::size_t length,
                    const SearchConstraints& wanted);
bool constraints_ok(LeftSide left, std::string_view line, std::size_t col, std::size_t length,
                    const SearchConstraints& wanted);

// The first match at or after `start` (a column beyond the line's end: from the next line on), or the nearest
// one before it, that satisfies the constraints. After a rejected match the search continues behind its
// end, or backward, before its start. Nothing for an empty pattern.
//
// Plain strings are searched in the pieces of the text as they lie in memory, wildcard patterns line by line,
// in the lines that contain the bytes that every match contains. The cost is linear in the text passed over.
// `abort` set from outside stops the search early, with nothing found.
std::optional<Position> search_forward(const LineStore& text, const Pattern& pattern, Position start,
                                       const SearchConstraints& wanted, Abort& abort);
std::optional<Position> search_backward(const LineStore& text, const Pattern& pattern, Position start,
                                        const SearchConstraints& wanted, Abort& abort);

} // namespace zan
