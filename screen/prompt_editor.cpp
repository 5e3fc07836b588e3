#include "screen/prompt_editor.h"

#include <algorithm>

#include "screen/keys.h"

namespace zan {

namespace {

constexpr std::size_t kLongestAnswer = 511; // bytes

bool continues_character(char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80; }

} // namespace

PromptEditor::Outcome PromptEditor::take(int key) {
  switch (key) {
  case kReturn:
  case kLinefeed:
  case kEnter:
  case kKpEnter:
    return Outcome::answered;
  case kCtrlC:
    return Outcome::cancelled;
  case kCtrlU:
    answer_.clear();
    return Outcome::going;
  case kDelete:
  case kBackspaceByte:
  case kBackspace:
    delete_last();
    return Outcome::going;
  case kIgnored:
    return Outcome::going;
  default:
    break;
  }
  if (key < 0 || key > 255 || answer_.size() >= kLongestAnswer) return Outcome::refused;
  answer_ += static_cast<char>(static_cast<unsigned char>(key));
  return Outcome::going;
}

// A character of several bytes goes as a whole.
void PromptEditor::delete_last() {
  std::size_t start = answer_.size();
  while (start > 0 && answer_.size() - start < 3 && continues_character(answer_[start - 1])) --start;
  if (start > 0) --start;
  const bool whole = utf8_character(std::string_view(answer_).substr(start)).length == answer_.size() - start;
  if (!answer_.empty()) answer_.resize(whole ? start : answer_.size() - 1);
}

std::vector<Run> PromptEditor::shown(std::string_view prompt, int columns, CharacterWidth width) const {
  std::vector<std::string> glyphs; // one for each column; "" goes on with the one before
  for (const char c : prompt) glyphs.emplace_back(1, c);
  for (std::string_view rest = answer_; !rest.empty();) {
    const auto [code, length] = width != nullptr ? utf8_character(rest) : Utf8Character{};
    const int wide = length > 0 ? width(code) : 0;
    if (wide > 0) {
      glyphs.emplace_back(rest.substr(0, length));
      glyphs.resize(glyphs.size() + static_cast<std::size_t>(wide - 1));
    } else if (is_printable(rest.front())) {
      glyphs.emplace_back(1, rest.front());
    } else {
      for (const char c : visible_byte(rest.front())) glyphs.emplace_back(1, c);
    }
    rest.remove_prefix(wide > 0 ? length : 1);
  }
  const std::size_t room = static_cast<std::size_t>(std::max(columns - 1, 0));
  const std::size_t first = glyphs.size() - std::min(room, glyphs.size());
  std::vector<Run> runs;
  for (std::size_t i = first; i < glyphs.size(); ++i)
    runs.push_back({i == first && glyphs[i].empty() ? " " : glyphs[i]});
  return runs;
}

} // namespace zan
