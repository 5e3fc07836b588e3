#include "app/editor.h"

std::string Editor::expand_formfeed_display(const std::string& line) const {
  std::string expanded;
  for (const char c : line) {
    if (c == '\f') expanded += text_formfeed;
    else expanded += c;
  }
  return expanded;
}
