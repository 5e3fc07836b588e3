#pragma once

#include <cstdint>

#include "search/text_search.h"

namespace zan {

struct Substitution {
  LineStore text;          // the whole text, with the replacements made
  std::uint64_t count = 0; // replacements
  Position last;           // where the last one starts in `text`; meaningless when there is none
  bool changed = false;    // some replacement differs from what it replaced
};

// Replaces up to `limit` matches, one after the other from `start` on, in one pass. The result shares the
// text between them. Each match is searched for in its line as rewritten so far, after the last replacement
// (one byte further after an empty match): what stands before the match includes earlier replacements. When
// `abort` becomes nonzero, the pass ends and the replacements made so far stay.
Substitution substitute(const LineStore& text, const Pattern& pattern, const SearchConstraints& wanted,
                        Position start, std::uint64_t limit, std::string_view replacement, Abort& abort);

} // namespace zan
