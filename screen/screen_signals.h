#pragma once

#include <array>
#include <csignal>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <termios.h>

// What signals do to the screen: ends by a crash, stops, new sizes.
namespace zan {

// Restores the terminal when the program crashes on the screen. All data is prepared in advance, because a
// signal handler must not call ncurses.
class CrashExit {
 public:
  constexpr CrashExit() = default;

  void remember_modes(); // those of the terminal before the screen starts
  void set_sequences(std::initializer_list<std::string_view> sequences); // that leave the screen

  // Async-signal-safe; neither blocks when nobody reads the terminal.
  void restore_modes() const;
  void restore_terminal() const;

 private:
  void add(std::string_view sequence);

  bool has_modes_ = false;
  termios modes_{};
  std::size_t size_ = 0;
  std::array<char, 256> sequences_{};
  std::array<char, 64 * 1024> stack_{};
};

CrashExit& crash_exit();

// Swaps signal dispositions when the screen is entered and left. ncurses installs a handler for SIGTSTP once
// and never removes it, so both dispositions are kept. It leaves SIGWINCH alone because a handler is there
// first. A crash handler that somebody else has installed, as sanitizers do, stays.
class ScreenSignals {
 public:
  void install();
  void adopt_ncurses_stop(); // whenever ncurses has been started
  void install_ncurses_stop() const;
  void restore();
  // What is sent, besides what ncurses sends, before the program stops and when it goes on; short.
  static void set_stop_sequences(std::string_view before, std::string_view after);
  bool take_continuation(); // SIGCONT has come since the last call

 private:
  static constexpr std::array kSignals{SIGTSTP, SIGWINCH, SIGCONT, SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGILL};
  static constexpr std::size_t kFirstCrash = 3;
  std::array<struct sigaction, kSignals.size()> outside_{};
  std::optional<struct sigaction> ncurses_stop_; // for SIGTSTP; nothing before ncurses has been started
};

} // namespace zan
