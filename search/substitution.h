#pragma once

#include <cstdint>

#include "search/text_search.h"

namespace zan {

struct Substitution {
  LineStore text;          // the whole text, with the replacements made
  std::uint64_t count = 0; // replacements
  Position last;           // start of the last one in `text`; of no meaning when there is none
  bool changed = false;    // some replacement differs from what it replaced
};

// Replaces up to `limit` matches, one after the other from `start` on, in one pass that shares the text
// between them. Each is looked for in its line as it is by then: what stands before it is what earlier
// replacements have left, and the search goes on right after the new text (one byte further after an empty
// match). `abort` set from outside ends the pass; what has been replaced by then stays.
Substitution substitute(const LineStore& text, const Pattern& pattern, const SearchConstraints& wanted,
                        Position start, std::uint64_t limit, std::string_view replacement, Abort& abort);

} // namespace zan
