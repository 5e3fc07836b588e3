#pragma once

#include <cstdint>
#include <string>

#include "text/line_store.h"

namespace zan {

// The words of `text`, which white space separates, as lines of at most `width` bytes, with one blank between
// words. A longer word has a line of its own. One empty line when there are no words.
LineStore fill_words(const LineStore& text, std::uint64_t width);

// Turns the line feeds of `text` into blanks and breaks it anew: a line that would exceed `width` is broken
// at its last blank, if it has one. All other blanks stay, and so does a last line feed. One pass.
std::string fill_span(std::string text, std::uint64_t width);

} // namespace zan
