#include "screen/terminal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

#include "host/console.h"
#include "host/held_signals.h"
#include "host/signals.h"
#include "host/unique_fd.h"
#include "screen/curses.h"
#include "screen/draw.h"
#include "screen/key_decoder.h"
#include "screen/key_sequences.h"
#include "screen/keys.h"
#include "screen/output_locale.h"
#include "screen/terminal_description.h"

bool g_curses_active = false;

namespace zan {

namespace {

constexpr int kEscapeDelay = 25; // milliseconds in which a sequence that has begun goes on

void wake_up(int) {}         // the wait for a key ends and looks at the terminal's size
void note_continuation(int); // defined below

void handle(int signal, void (*handler)(int), int flags = 0) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

std::string_view capability(const char* name) {
  const char* text = tigetstr(const_cast<char*>(name)); // some libraries declare it without const
  // The library's "no such capability" is the address -1.
  return text == nullptr || text == reinterpret_cast<const char*>(-1) ? std::string_view() : text;
}

// How the terminal is given back when the program crashes on the screen. All of it is made ready before:
// then nothing can be asked of the library any more.
class CrashExit {
 public:
  constexpr CrashExit() = default;

  void remember_modes() {
    has_modes_ = tcgetattr(STDOUT_FILENO, &modes_) == 0;
    // A recursion without end leaves no room on the ordinary stack.
    stack_t stack{};
    if (sigaltstack(nullptr, &stack) != 0 || (stack.ss_flags & SS_DISABLE) == 0) return;
    stack.ss_sp = stack_.data();
    stack.ss_size = stack_.size();
    stack.ss_flags = 0;
    sigaltstack(&stack, nullptr);
  }

  void forget_sequences() { size_ = 0; }
  // To be sent as it is, without the waits that the library makes.
  void add(std::string_view sequence) {
    for (std::size_t wait = 0; (wait = sequence.find("$<")) != std::string_view::npos;) {
      add(sequence.substr(0, wait));
      sequence.remove_prefix(std::min(sequence.size(), sequence.find('>', wait)));
      if (!sequence.empty()) sequence.remove_prefix(1);
    }
    const std::string_view fitting = sequence.substr(0, sequences_.size() - size_);
    std::ranges::copy(fitting, sequences_.data() + size_);
    size_ += fitting.size();
  }

  // These may be called in a signal handler, and wait for nobody to read the terminal.
  void give_back_modes() const {
    if (has_modes_) tcsetattr(STDOUT_FILENO, TCSANOW, &modes_);
  }
  void give_back() const {
    give_back_modes();
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) <= 0) return;
    [[maybe_unused]] const ssize_t count = ::write(STDOUT_FILENO, sequences_.data(), size_);
  }

 private:
  bool has_modes_ = false;
  termios modes_{}; // before the screen
  std::size_t size_ = 0;
  std::array<char, 256> sequences_{}; // that end the screen
  std::array<char, 64 * 1024> stack_{};
};

CrashExit& crash_exit() {
  static constinit CrashExit the_exit;
  return the_exit;
}

void give_back_and_crash(int signal) {
  crash_exit().give_back();
  std::raise(signal); // has its default action again, which follows when this function returns
}

// Signals whose action is the screen's while it runs. The library takes the first when it is first started
// and never gives it back, so both sides' actions are kept and exchanged; it would take SIGWINCH as well, but
// leaves it alone when it has a handler. Crashes end the program where it stands; where somebody else looks
// after them, as sanitizers do, they are left to him.
class ScreenSignals {
 public:
  void set_aside() {
    crash_exit().remember_modes();
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], nullptr, &outside_[i]);
    handle(SIGWINCH, wake_up);
    handle(SIGCONT, note_continuation);
    for (std::size_t i = kFirstCrash; i < kSignals.size(); ++i) {
      if (outside_[i].sa_handler != SIG_DFL) continue;
      handle(kSignals[i], give_back_and_crash, SA_ONSTACK | static_cast<int>(SA_RESETHAND));
    }
  }
  void resume_library() const {
    if (library_) sigaction(SIGTSTP, &*library_, nullptr);
  }
  void give_back() {
    sigaction(SIGTSTP, nullptr, &library_.emplace());
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &outside_[i], nullptr);
  }

 private:
  static constexpr std::array kSignals{SIGTSTP, SIGWINCH, SIGCONT, SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGILL};
  static constexpr std::size_t kFirstCrash = 3;
  std::array<struct sigaction, kSignals.size()> outside_{};
  std::optional<struct sigaction> library_; // nothing before its first start
};

// The one owner of the terminal. The library is started once for a kind of terminal and afterwards suspended
// and resumed, so that any number of visits costs no memory.
struct Room {
  SCREEN* screen = nullptr;     // null before the first visit
  std::string terminal;         // the name for which it was started
  int visits = 0;               // one inside the other
  bool own_numeric_mode = true; // the library does not send ESC ">" itself
  ScreenSignals signals;
  KeyDecoder keys;             // what has been read and not been asked for
  bool reads_terminal = false; // not a pipe or a file
  bool more_waits = false;     // the terminal had more than was read of it
  bool ended = false;
  bool interrupted = false;
  volatile std::sig_atomic_t continued = 0; // after a stop
  std::uint64_t events = 0;
};

Room& room() {
  static Room the_room;
  return the_room;
}

void note_continuation(int) { room().continued = 1; }

void set_modes() {
  raw();
  noecho();
  keypad(stdscr, TRUE);
  nonl();
  use_legacy_coding(0); // the locale at the time of writing decides what is printable
  typeahead(-1);        // a drawing is whole: who waits for it decides whether it is made
}

// Until it has been suspended once, the library sends every row by itself; suspended and resumed by the first
// drawing, it sends a whole screen at once. What it would send for that goes nowhere: nothing has been drawn.
void suspend_unseen() {
  const HeldSignals held; // whose answer exchanges the descriptor too
  const UniqueFd terminal(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  const UniqueFd nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  if (!terminal || !nowhere) return;
  dup2(nowhere.get(), STDOUT_FILENO);
  endwin();
  dup2(terminal.get(), STDOUT_FILENO);
}

std::string terminal_name() {
  const char* name = std::getenv("TERM");
  return name != nullptr ? name : "";
}

// The library's own rule: a size in the environment holds.
int size_or_environment(int size, const char* variable) {
  const char* text = std::getenv(variable);
  const int wanted = text != nullptr ? std::atoi(text) : 0;
  return wanted > 0 ? wanted : size;
}

// 0 for what is not known.
ScreenSize terminal_size() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) size = {};
  return {size_or_environment(size.ws_row, "LINES"), size_or_environment(size.ws_col, "COLUMNS")};
}

// The library counts rows and columns in short integers, and keeps some hundred bytes for every cell.
ScreenSize within_limits(ScreenSize size) {
  constexpr int kLargest = 32767;
  constexpr int kMostCells = 4 << 20;
  size.columns = std::min(size.columns, kLargest);
  size.rows = std::min({size.rows, kLargest, kMostCells / std::max(size.columns, 1)});
  return size;
}

// Takes over the terminal's size; false when it is still the same.
bool adopt_size() {
  const auto [rows, columns] = within_limits(terminal_size());
  if (rows <= 0 || columns <= 0 || !is_term_resized(rows, columns)) return false;
  if (resize_term(rows, columns) == ERR) return false;
  screen_repaint();
  return true;
}

// False when there is no screen of the library for such a terminal.
bool start_screen() {
  Room& the = room();
  const ScopedLocale locale(unicode_locale());
  // The library would ask for the size itself and crash. It gets another one when it has started.
  if (const ScreenSize size = terminal_size(); size != within_limits(size)) use_env(FALSE);
  the.screen = newterm(nullptr, stdout, stdin);
  if (the.screen == nullptr) return false;
  if (!capability("cup").empty()) return true;
  endwin();
  delscreen(std::exchange(the.screen, nullptr));
  return false;
}

// For the terminal that TERM names. A screen for another one goes before, since the library deletes the
// windows of all its screens with one of them; but it stays where a new one could not be.
bool start_library() {
  Room& the = room();
  if (the.screen != nullptr) {
    if (!described_for_a_screen()) return false;
    delscreen(std::exchange(the.screen, nullptr));
  }
  the.signals.set_aside();
  the.signals.resume_library();
  if (!start_screen()) {
    the.signals.give_back();
    return false;
  }
  the.terminal = terminal_name();
  suspend_unseen();
  set_modes();
  repair_key_sequences();
  the.own_numeric_mode = capability("rmkx").find("\033>") == std::string_view::npos;
  crash_exit().forget_sequences();
  for (const char* name : {"sgr0", "rmcup", "rmkx"}) crash_exit().add(capability(name));
  if (the.own_numeric_mode) crash_exit().add("\033>");
  blank_window();
  adopt_size();
  return true;
}

void resume_library() {
  room().signals.set_aside();
  room().signals.resume_library();
  def_shell_mode();
  blank_window();
  wrefresh(stdscr);
  keypad(stdscr, TRUE);
  adopt_size();
}

// The keypad's application mode is for a terminal that the library could be started on.
bool enter() {
  if (room().screen != nullptr && room().terminal == terminal_name()) {
    write_fully(STDOUT_FILENO, "\033=");
    resume_library();
  } else {
    if (!start_library()) return false;
    write_fully(STDOUT_FILENO, "\033=");
  }
  g_curses_active = true;
  return true;
}

void report_failure() { write_fully(STDERR_FILENO, "?Cannot start screen mode: " + terminal_name() + "\n"); }

// Held back while a key is looked for, so that none can arrive between the look and the wait for input.
class SignalPause {
 public:
  SignalPause() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGCONT, SIGWINCH})
      sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, &before_);
  }
  ~SignalPause() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalPause(const SignalPause&) = delete;
  SignalPause& operator=(const SignalPause&) = delete;
  const sigset_t* before() const { return &before_; }

 private:
  sigset_t before_{};
};

// Waits for input: positive when there is some, 0 after `milliseconds` (negative: never), negative after a
// signal.
int wait_for_input(const sigset_t* mask, int milliseconds) {
  fd_set input;
  FD_ZERO(&input);
  FD_SET(STDIN_FILENO, &input);
  const timespec limit{0, milliseconds * 1'000'000L};
  return pselect(STDIN_FILENO + 1, &input, nullptr, nullptr, milliseconds < 0 ? nullptr : &limit, mask);
}

// Reads input that is there. Key by key, so that what is typed ahead of the end of the program is left to
// whoever reads next; only what comes faster than anybody types is taken in blocks. A pipe is never read
// beyond the key.
void read_input() {
  constexpr int kPasted = 256;
  std::array<char, 4096> bytes;
  int unread = 0;
  const bool pasted =
      room().reads_terminal && ioctl(STDIN_FILENO, FIONREAD, &unread) == 0 && unread >= kPasted;
  const ssize_t count = ::read(STDIN_FILENO, bytes.data(), pasted ? bytes.size() : 1);
  room().more_waits = unread > count;
  if (count > 0) room().keys.feed({bytes.data(), static_cast<std::size_t>(count)});
  else if (count == 0 || (errno != EINTR && errno != EAGAIN)) room().ended = true;
}

void read_waiting_input() {
  while (!room().ended && wait_for_input(nullptr, 0) > 0) read_input();
}

// A key, KEY_RESIZE among them; nothing at the end of the input. A pending signal ends it.
std::optional<int> wait_for_key() {
  Room& the = room();
  if (g_zan_pending_signal == 0)
    if (const auto key = the.keys.next(the.ended)) return key;
  const SignalPause pause;
  while (g_zan_pending_signal == 0 && !the.ended) {
    if (std::exchange(the.continued, 0) != 0) keypad(stdscr, TRUE); // the library leaves it off
    if (adopt_size()) return KEY_RESIZE;
    const bool begun = !the.keys.empty();
    const int ready = wait_for_input(pause.before(), begun ? kEscapeDelay : -1);
    if (ready > 0) read_input();
    if (const auto key = the.keys.next(ready == 0 || the.ended)) return key;
  }
  the.ended = true;
  return std::nullopt;
}

} // namespace

bool screen_was_started() { return room().screen != nullptr; }

ScreenSize screen_size() {
  if (!screen_was_started()) return {};
  return {getmaxy(stdscr), getmaxx(stdscr)};
}

void screen_beep() {
  if (!screen_was_started()) return;
  ++room().events;
  beep();
}

void screen_flash() {
  if (!screen_was_started()) return;
  ++room().events;
  flash();
}

ScreenVisit::ScreenVisit(bool pc_keypad) {
  if (room().visits == 0) {
    room().reads_terminal = isatty(STDIN_FILENO) != 0;
    // Lines typed ahead of the screen, while Return still is a line's end.
    if (room().reads_terminal) read_waiting_input();
    give_input(room().keys.take_rest());
  }
  if (room().visits == 0 && !enter()) {
    report_failure();
    return;
  }
  started_ = true;
  ++room().visits;
  // In nokeypad mode too: the keypad's Enter ends the prompt, and no key leaves its sequence in the answer.
  register_key_sequences(pc_keypad);
  room().keys.learn(key_meaning);
}

ScreenVisit::~ScreenVisit() {
  if (!started_ || room().visits == 0 || --room().visits > 0) return;
  // What is typed ahead is line mode's, but the terminal has taken it for keys: its Return is no line's end.
  if (room().reads_terminal) read_waiting_input();
  zan_safe_endwin();
}

std::optional<int> read_key(const std::function<void()>& redraw) {
  ++room().events;
  for (;;) {
    const auto key = wait_for_key();
    if (key != KEY_RESIZE) return key;
    redraw();
  }
}

bool key_waiting() {
  const Room& the = room();
  if (!the.keys.empty() || the.ended) return true;
  return the.reads_terminal ? the.more_waits : wait_for_input(nullptr, 0) > 0;
}

bool screen_input_ended() { return room().ended; }

void forget_interrupt() { room().interrupted = false; }
void note_interrupt() { room().interrupted = true; }

bool take_interrupt() {
  Room& the = room();
  if (the.interrupted || (the.ended && the.reads_terminal) || g_zan_pending_signal != 0) return true;
  if (!g_curses_active) return false;
  read_waiting_input();
  return the.interrupted = the.keys.remove(kCtrlC);
}

void give_input(std::string bytes) {
  if (room().reads_terminal) std::ranges::replace(bytes, '\n', '\r');
  room().keys.feed(bytes);
}

std::string take_input() {
  std::string bytes = room().keys.take_rest();
  // As the terminal does for line mode.
  if (room().reads_terminal) std::ranges::replace(bytes, '\r', '\n');
  return bytes;
}

std::uint64_t screen_events() { return room().events; }

} // namespace zan

void zan_safe_endwin() {
  if (!g_curses_active) return;
  g_curses_active = false;
  zan::room().visits = 0;
  // The library gives the modes back only when all its output has been read.
  if (g_zan_pending_signal != 0) zan::crash_exit().give_back_modes();
  // Where the library cannot bring back what stood there before, line mode goes on in the lowest row.
  if (zan::capability("rmcup").empty()) zan::show_bottom_row({}, 0);
  endwin();
  if (zan::room().own_numeric_mode) zan::write_fully(STDOUT_FILENO, "\033>");
  if (zan::output_is_cut_off()) { // then all that, or the end of it, went nowhere
    zan::reconnect_output();
    zan::crash_exit().give_back();
  }
  zan::room().signals.give_back();
}
