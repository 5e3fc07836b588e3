#include "screen/terminal.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

#include "host/console.h"
#include "host/held_signals.h"
#include "host/signals.h"
#include "host/standard_input.h"
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
// A repetition that takes longer looks for Ctrl/C, now and then.
constexpr std::chrono::milliseconds kLongRepetition{100};
constexpr std::chrono::milliseconds kBetweenLooks{20};

using Clock = std::chrono::steady_clock;

// What ISIG makes signals of besides Ctrl/C.
constexpr std::array kSignalCharacters{
    VQUIT,
    VSUSP,
#ifdef VDSUSP
    VDSUSP,
#endif
};

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
  KeyDecoder keys;
  std::optional<termios> modes_for_keys; // while Ctrl/C is a signal
  bool interrupted = false;              // the repetition
  Clock::time_point next_look;
  volatile std::sig_atomic_t continued = 0; // after a stop
  std::uint64_t keys_asked_for = 0;
  std::uint64_t bells = 0;
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

std::optional<int> take_key(bool complete) {
  StandardInput& input = standard_input();
  const auto key = room().keys.first(input.unread(), complete);
  if (!key) return std::nullopt;
  input.take(key->length);
  return key->code;
}

// A key, KEY_RESIZE among them; nothing at the end of the input. A pending signal ends it.
std::optional<int> wait_for_key() {
  StandardInput& input = standard_input();
  make_interrupt_a_key();
  if (g_zan_pending_signal == 0)
    if (const auto key = take_key(false)) return key;
  const SignalPause pause;
  while (!screen_input_ended()) {
    if (std::exchange(room().continued, 0) != 0) keypad(stdscr, TRUE); // the library leaves it off
    const bool begun = !input.unread().empty();
    if (!begun && adopt_size()) return KEY_RESIZE;
    const int ready = input.wait(pause.before(), begun ? kEscapeDelay : -1);
    const bool goes_on = ready > 0 ? input.read_key_bytes() : ready < 0;
    if (const auto key = take_key(!goes_on)) return key;
  }
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
  ++room().bells;
  beep();
}

void screen_flash() {
  if (!screen_was_started()) return;
  ++room().bells;
  flash();
}

ScreenVisit::ScreenVisit(bool pc_keypad) {
  if (room().visits == 0) {
    if (!enter()) {
      report_failure();
      return;
    }
    standard_input().read_across(); // lines typed ahead of the screen
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
  standard_input().read_ahead();
  zan_safe_endwin();
  standard_input().read_across();
}

std::optional<int> read_key(const std::function<void()>& redraw) {
  ++room().keys_asked_for;
  for (;;) {
    const auto key = wait_for_key();
    if (key != KEY_RESIZE) return key;
    redraw();
  }
}

bool key_waiting() {
  StandardInput& input = standard_input();
  return !input.unread().empty() || g_zan_pending_signal != 0 || input.waits();
}

bool screen_input_ended() { return g_zan_pending_signal != 0 || standard_input().ended(); }

bool screen_reads_terminal() { return standard_input().is_terminal(); }

void pass_over_return() {
  StandardInput& input = standard_input();
  if (input.unread().empty() && input.waits()) input.read_key_bytes();
  if (input.unread().starts_with(static_cast<char>(kReturn))) input.take(1);
}

void make_interrupt_a_signal() {
  termios modes{};
  if (!g_curses_active || !screen_reads_terminal() || tcgetattr(STDIN_FILENO, &modes) != 0) return;
  room().modes_for_keys = modes;
  modes.c_lflag |= ISIG | NOFLSH;
  for (const int other : kSignalCharacters) modes.c_cc[other] = _POSIX_VDISABLE;
  modes.c_cc[VINTR] = kCtrlC;
  tcsetattr(STDIN_FILENO, TCSANOW, &modes);
}

void make_interrupt_a_key() {
  const auto modes = std::exchange(room().modes_for_keys, std::nullopt);
  if (modes && g_curses_active) tcsetattr(STDIN_FILENO, TCSANOW, &*modes);
}

void retype_interrupt() {
  if (!g_curses_active || !screen_reads_terminal()) return;
  standard_input().read_ahead();
  standard_input().retype(kCtrlC);
}

void begin_repetition() {
  room().interrupted = false;
  room().next_look = Clock::now() + kLongRepetition;
}

void note_interrupt() { room().interrupted = true; }

bool repetition_interrupted() {
  Room& the = room();
  if (the.interrupted || g_zan_pending_signal != 0) return true;
  const auto now = Clock::now();
  StandardInput& input = standard_input();
  if (!g_curses_active || !input.is_terminal() || now < the.next_look) return false;
  the.next_look = now + kBetweenLooks;
  input.read_ahead();
  constexpr char kInterrupt = kCtrlC;
  return the.interrupted = input.lost_terminal() || input.unread().find(kInterrupt) != std::string_view::npos;
}

std::uint64_t keys_asked_for() { return room().keys_asked_for; }
std::uint64_t bells_rung() { return room().bells; }

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
