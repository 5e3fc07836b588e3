#include "command/fill.h"

#include <algorithm>

#include "text/bytes.h"

namespace zan {

LineStore fill_words(const LineStore& text, std::uint64_t width) {
  LineStoreBuilder filled;
  std::uint64_t column = 0; // bytes of the line being filled
  LineWalker walker(text, 0);
  for (std::string_view line; walker.next(line);) {
    while (!line.empty()) {
      const auto word_begin = std::ranges::find_if_not(line, is_space);
      line.remove_prefix(static_cast<std::size_t>(word_begin - line.begin()));
      const auto word_end = std::ranges::find_if(line, is_space);
      const std::string_view word = line.substr(0, static_cast<std::size_t>(word_end - line.begin()));
      line.remove_prefix(word.size());
      if (word.empty()) break;
      const bool joins = column > 0 && column + 1 + word.size() <= width;
      if (column > 0) filled.append_text(joins ? " " : "\n");
      filled.append_bytes(word);
      column = word.size() + (joins ? column + 1 : 0);
    }
  }
  return filled.finish();
}

std::string fill_span(std::string text, std::uint64_t width) {
  const bool ends_line = text.ends_with('\n');
  std::ranges::replace(text, '\n', ' ');
  std::size_t line_start = 0;
  std::size_t blank = std::string::npos; // the last one of the line
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ' ') blank = i;
    if (i + 1 - line_start <= width || blank == std::string::npos) continue;
    text[blank] = '\n';
    line_start = blank + 1;
    blank = std::string::npos;
  }
  if (ends_line) text += '\n';
  return text;
}

} // namespace zan
