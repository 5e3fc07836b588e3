#include "screen/prompt_editor.h"

#include <algorithm>

#include "screen/keys.h"
#include "screen/picture.h"
#include "text/bytes.h"

namespace zan {

namespace {

constexpr std::size_t kLongestAnswer = 511; // bytes

bool continues_character(char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80; }

} // namespace

bool ends_answer(int key) { return key == kReturn || key == kLinefeed || key == kEnter || key == kKpEnter; }

PromptEditor::Outcome PromptEditor::type(int key) {
  if (ends_answer(key)) return Outcome::answered;
  switch (key) {
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

PromptEditor::Outcome PromptEditor::paste(std::string_view pasted) {
  std::string text = with_line_feeds(pasted);
  text.resize(text.find_last_not_of('\n') + 1);
  std::ranges::replace(text, '\n', ' ');
  const bool fits = text.size() <= kLongestAnswer - answer_.size();
  answer_.append(text, 0, kLongestAnswer - answer_.size());
  return fits ? Outcome::going : Outcome::refused;
}

// All bytes of a UTF-8 character.
void PromptEditor::delete_last() {
  std::size_t start = answer_.size();
  while (start > 0 && answer_.size() - start < 3 && continues_character(answer_[start - 1])) --start;
  if (start > 0) --start;
  const bool whole = utf8_character(std::string_view(answer_).substr(start)).length == answer_.size() - start;
  if (!answer_.empty()) answer_.resize(whole ? start : answer_.size() - 1);
}

} // namespace zan
