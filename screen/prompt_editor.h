#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "screen/picture.h"

namespace zan {

// The answer to a prompt while it is typed, key by key.
class PromptEditor {
 public:
  enum class Outcome { going, refused, answered, cancelled };

  // Return, Linefeed and Enter end the answer, Ctrl/C cancels it; DELETE and Ctrl/U edit it. Every other byte
  // is kept as typed, control bytes included. Refused: a key that is no byte, or one byte too many.
  Outcome take(int key);
  const std::string& answer() const { return answer_; }

  // The prompt and the answer on a row of `columns`, the last column left to the cursor: the tail when not
  // all of it fits. Control bytes appear as ^X, so each row shows what was typed.
  std::vector<Run> shown(std::string_view prompt, int columns, CharacterWidth width) const;

 private:
  void delete_last();

  std::string answer_;
};

} // namespace zan
