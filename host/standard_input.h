#pragma once

#include <chrono>
#include <csignal>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace zan {

// The one reader of standard input. Line mode takes lines from it and the screen takes keys, out of the same
// bytes: type-ahead that one of them leaves is read by the other.
//
// It reads no byte from a terminal or a pipe before it is needed, so that type-ahead stays for the program
// that reads next. It reads a file in blocks, because it can set the file's offset back. Bytes of a terminal
// are kept as keys send them: Return is a carriage return.
class StandardInput {
 public:
  StandardInput();

  bool is_terminal() const { return kind_ == Kind::terminal; } // it was one at the start
  bool lost_terminal() const;                                  // it was one, and has hung up or fails

  // One line without its line feed; the last one may lack it. Nothing at the end of the input, after an
  // error, and when Ctrl/C is caught during the wait (g_zan_abort_requested is then set).
  std::optional<std::string> read_line();

  std::string_view unread() const { return std::string_view(bytes_).substr(used_); }
  void take(std::size_t count) { used_ += count; } // these unread bytes are done with
  void retype(char key) { bytes_ += key; }         // appends to the unread bytes
  bool ended() const { return ended_ && unread().empty(); }
  bool waits() const { return wait(nullptr, 0) > 0; } // a read would not block
  // Positive when a read would not block, 0 after `milliseconds` (negative: no limit), negative after a
  // signal. `mask`, unless it is null, is the signal mask during the wait.
  int wait(const sigset_t* mask, int milliseconds) const;
  // What is done while nothing can be read, a moment at a time: called when a wait without a limit begins,
  // and again after the milliseconds that it returns; negative: not again during this wait.
  void set_idle(std::function<int()> idle) { idle_ = std::move(idle); }
  // After a wait: reads one byte, or a block once bytes come as fast as those of a paste. False at the end.
  bool read_key_bytes();

  // Both do nothing unless it is a terminal. Before its mode is changed: reads what has been typed so far.
  void read_ahead();
  // After that: reads what was typed in the old mode and becomes readable only now.
  void read_across();

  void give_back(); // sets a file's offset back to the first unread byte, for the program that reads next

 private:
  enum class Kind { terminal, file, other };

  std::size_t read(std::size_t most); // bytes
  bool wait_for_line();

  Kind kind_;
  std::function<int()> idle_;
  std::string bytes_;
  std::size_t used_ = 0;
  std::size_t at_once_ = 0; // bytes read for keys since moment_
  std::chrono::steady_clock::time_point moment_;
  bool typed_as_keys_ = false; // Return is a carriage return in the unread bytes, not a line feed
  bool ended_ = false;         // the last read found the end
  bool failed_ = false;
};

StandardInput& standard_input();

} // namespace zan
