#pragma once

#include <optional>
#include <string>
#include <string_view>

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

  // One line from standard input without its line feed; the last one may lack it. Nothing at the end of
  // input, on an error, and when Ctrl/C is caught while waiting (g_zan_abort_requested is then set). Takes no
  // byte beyond the line from a terminal or a pipe, so that another reader finds what was typed ahead.
  std::optional<std::string> read_line();
  // Gives bytes read ahead from a file back, before another reader or a child uses standard input.
  void release_input();
  std::string take_input();                             // gives back, and hands out what cannot be given back
  void put_back(std::string_view bytes);                // to be read first
  bool reads_terminal() const { return was_terminal_; } // it did at the start: since then it may have gone
  // No line can be read yet, nor within a moment.
  bool waits_for_input() const;

 private:
  static bool is_terminal(); // standard input
  bool fill();

  std::string output_;
  std::string input_;
  std::size_t input_used_ = 0;
  std::size_t chunk_ = 0; // bytes to ask for at once: 0 until the kind of the input is known
  bool was_terminal_ = is_terminal();
};

// Writes all of `text` to a descriptor, going on after interrupts and short writes. False on an error, and
// when it would have to wait although a signal asks the program to end.
bool write_fully(int descriptor, std::string_view text);

} // namespace zan
