#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/standard_input.h"

namespace zan {

// The three standard streams as line mode uses them. Output is gathered into large blocks; it reaches the
// terminal before every wait for input, before anything is said on standard error, and on flush(). Nothing is
// reported when a stream cannot be written: an editor must not die of a closed pipe. Once a signal has asked
// the program to end, nothing is waited for any more: what is written is dropped, and no input comes.
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
  void release_input(); // before a child or, at the end of the program, somebody else uses standard input
  bool reads_terminal() const {
    return input_.is_terminal();
  }                             // it did at the start: since then it may have gone
  bool waits_for_input() const; // no line can be read yet, nor within a moment

 private:
  std::string output_;
  StandardInput& input_ = standard_input();
};

// Writes all of `text` to a descriptor, going on after interrupts and short writes. False on an error, and
// when it would have to wait although a signal asks the program to end.
bool write_fully(int descriptor, std::string_view text);

} // namespace zan
