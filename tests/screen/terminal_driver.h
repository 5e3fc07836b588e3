#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <termios.h>
#include <vector>
#include <vterm.h>

#include "tests/files/scratch_directory.h"

// What a terminal shows: rows without trailing blanks, reverse video between braces, and the cursor.
struct Shown {
  std::vector<std::string> rows;
  int cursor_row = 0;
  int cursor_column = 0;
  std::string to_string() const;
  std::string row(int number) const { return rows.at(static_cast<std::size_t>(number)); }
};

struct TerminalOptions {
  std::string text = "one\ntwo\nthree\n"; // of the file that is edited
  std::optional<std::string> term = "xterm-256color";
  int rows = 8;
  int columns = 64;
  std::string startup = {};                // commands of the startup file
  std::string spooler = {};                // the script "lpr"
  std::vector<std::string> arguments = {}; // behind the file's name
  int ignores = 0;                         // a signal that is ignored, as SIGHUP is under nohup
  bool job = false;                        // under a shell, which it can be stopped for
  bool nonblocking = false;                // somebody has set the terminal not to wait
  std::shared_ptr<zan::test::ScratchDirectory> home = nullptr; // with its files; none: a new one
};

// The program on a pseudo-terminal, whose other end is a terminal emulator. All waits end at a deadline,
// which is far off: tests run on loaded machines and under sanitizers.
class TerminalDriver {
 public:
  explicit TerminalDriver(const TerminalOptions& options);
  ~TerminalDriver();
  TerminalDriver(const TerminalDriver&) = delete;
  TerminalDriver& operator=(const TerminalDriver&) = delete;

  void type(std::string_view keys);                         // such as "a{KP7}"; see key_names.h
  void type_unread(std::string_view bytes);                 // and from now on read nothing of what is shown
  void enter_screen(std::string_view shown = "EDIT[MAIN]"); // and waits for that
  void resize(int rows, int columns);
  void hang_up(); // the terminal goes away
  bool is_gone() const { return master_ < 0; }
  pid_t program() const;
  bool stops(); // a job does, soon
  void go_on(); // after a stop
  std::string file() const { return zan::test::read_file(home() / "notes.txt"); }
  const zan::test::ScratchDirectory& home() const { return *home_; }
  std::shared_ptr<zan::test::ScratchDirectory> shared_home() const { return home_; }
  const std::string& output() const { return output_; } // all bytes that have reached the terminal
  std::size_t times_sent(std::string_view bytes) const; // to the terminal
  bool has_its_modes() const;                           // those that the terminal had before the start

  // Waits until the picture is as wanted; false, after a report of both pictures, when it never is.
  bool wait_until(const std::function<bool(const Shown&)>& wanted, const std::string& description);
  bool shows_text(std::string_view text); // in some row
  void pause(int milliseconds);           // of somebody who does not type faster
  int exit_status();                      // waits for the end: the exit status, or 128 and the signal
  int exit_status_unread();
  double processor_seconds() const { return processor_seconds_; } // that the ended program used

 private:
  bool read_output(int milliseconds); // false at the end of the output
  Shown shown() const;

  std::shared_ptr<zan::test::ScratchDirectory> home_;
  pid_t child_ = -1;
  int master_ = -1;
  termios modes_{};
  double processor_seconds_ = 0;
  VTerm* terminal_ = nullptr;
  std::string output_;
};

bool terminal_is_described(const std::string& term);
