#pragma once

#include <chrono>
#include <csignal>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zan {

// Standard input, the only one that reads it. Line mode takes lines from it and the screen keys, out of the
// same bytes, so that what one of them has not taken is the other's.
//
// No byte is taken from a terminal or a pipe that is not needed yet: it stays for the program that reads
// next. A file is read in blocks, because it can be wound back. Of a terminal, the bytes kept here were typed
// as keys, or are made so: Return is a carriage return, not yet a line's end.
class StandardInput {
 public:
  StandardInput();

  bool is_terminal() const { return kind_ == Kind::terminal; } // it was one at the start
  bool lost_terminal() const;                                  // it was one, and has gone or fails

  // One line without its line feed; the last one may lack it. Nothing at the end of the input, on an error,
  // and when Ctrl/C is caught while waiting (g_zan_abort_requested is then set).
  std::optional<std::string> read_line();

  std::string_view unread() const { return std::string_view(bytes_).substr(used_); }
  void take(std::size_t count) { used_ += count; } // of them
  void retype(char key) { bytes_ += key; }         // behind them
  bool ended() const { return ended_ && unread().empty(); }
  bool waits() const { return wait(nullptr, 0) > 0; } // something can be read, be it the end
  // Positive when something can be read, 0 after `milliseconds` (negative: never), negative after a signal.
  // `mask`, if any, holds while it waits.
  int wait(const sigset_t* mask, int milliseconds) const;
  // After a wait: reads what is there, as much as a key needs, and more once it is a paste. False at the end.
  bool read_key_bytes();

  // For a terminal only; of a pipe or file nothing is read ahead. After its mode has been changed,
  // read_across is to be called: what was typed in the old mode is readable only then.
  void read_ahead();
  void read_across();

  void give_back(); // what has been read of a file and not been taken, before somebody else reads it

 private:
  enum class Kind { terminal, file, other };

  std::size_t read(std::size_t most); // bytes
  bool wait_for_line();

  Kind kind_;
  std::string bytes_;
  std::size_t used_ = 0;
  std::size_t at_once_ = 0; // bytes read for keys since moment_
  std::chrono::steady_clock::time_point moment_;
  bool typed_as_keys_ = false; // what is unread; where it is false, Return has become a line feed
  bool ended_ = false;         // said the last read
  bool failed_ = false;
};

StandardInput& standard_input();

} // namespace zan
