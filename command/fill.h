#pragma once

#include <cstdint>
#include <string>

#include "text/line_store.h"

namespace zan {

// The words of `text` (what white space separates) as lines of at most `width` bytes, one blank between
// words; a longer word stands alone. Nothing but one empty line when there are no words.
LineStore fill_words(const LineStore& text, std::uint64_t width);

// `text` as one line, its line feeds taken as blanks, broken anew: at the last blank before a byte that would
// be the width's next; blanks stay as they are. A last line feed stays. One pass.
std::string fill_span(std::string text, std::uint64_t width);

} // namespace zan
