#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/standard_input.h"

namespace zan {

// The three standard streams as line mode uses them. Output is gathered into large blocks; it reaches the
// terminal before every wait for input, before a message on standard error, and on flush(). A stream that
// cannot be written is not reported: an editor must not die of a closed pipe. Once a signal has asked the
// program to end, output is dropped and no line is returned, so that nothing waits.
class Console {
 public:
  Console() = default;
  ~Console() { flush(); } // also when an exception ends the program
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  void write(std::string_view text);
  void write_error(std::string_view text); // unbuffered, after flushing standard output
  void flush();

  std::optional<std::string> read_line(); // as StandardInput's, after flushing
  void release_input(); // before a child, or the shell after the program, reads standard input
  bool reads_terminal() const { return input_.is_terminal(); } // at the start: it may have hung up since
  bool waits_for_input() const;                                // nothing can be read now, nor within a moment

 private:
  std::string output_;
  StandardInput& input_ = standard_input();
};

// Writes all of `text` to a descriptor. False after an error, and when a signal asks the program to end and
// the rest would have to wait.
bool write_fully(int descriptor, std::string_view text);

} // namespace zan
