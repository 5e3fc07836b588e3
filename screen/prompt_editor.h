#pragma once

#include <string>
#include <string_view>

namespace zan {

bool ends_answer(int key); // Return, Linefeed and Enter, the keypad's too

// The answer to a prompt, edited key by key.
class PromptEditor {
 public:
  enum class Outcome { going, refused, answered, cancelled };

  // Keys that ends_answer names end the answer, Ctrl/C cancels it, DELETE and Ctrl/U edit it. Every other
  // byte is appended, control bytes included. Refused: a key that is no byte, and a byte too many.
  Outcome type(int key);
  // Appends what fits of a paste; line ends inside become blanks, those at its end are left out.
  Outcome paste(std::string_view pasted);
  const std::string& answer() const { return answer_; }

 private:
  void delete_last();

  std::string answer_;
};

} // namespace zan
