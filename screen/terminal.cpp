#include "screen/terminal.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <unistd.h>

#include "app/console.h"
#include "app/signals.h"
#include "screen/curses.h"
#include "screen/key_sequences.h"
#include "screen/keys.h"
#include "screen/output_locale.h"

bool g_curses_active = false;

namespace zan {

namespace {

void note_signal(int signal) { g_zan_pending_signal = signal; }

// Signals whose action is the screen's while it runs. The library takes the first two when it is first
// started and never gives them back, so both sides' actions are kept and exchanged. An interrupt from outside
// ends the program; the library would do so without a trace of the signal, but only takes it while it has no
// handler.
class ScreenSignals {
 public:
  void set_aside() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], nullptr, &outside_[i]);
    if (outside_[kInterrupt].sa_handler != SIG_DFL) return;
    struct sigaction action {};
    action.sa_handler = note_signal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
  }
  void resume_library() const {
    for (std::size_t i = 0; i < kInterrupt; ++i) sigaction(kSignals[i], &library_[i], nullptr);
  }
  void give_back() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &outside_[i], &library_[i]);
  }

 private:
  static constexpr std::array<int, 3> kSignals{SIGTSTP, SIGWINCH, SIGINT};
  static constexpr std::size_t kInterrupt = 2;
  std::array<struct sigaction, 3> outside_{};
  std::array<struct sigaction, 3> library_{};
};

// The one owner of the terminal. The library is started once and afterwards suspended and resumed, so that
// any number of visits costs no memory.
struct Room {
  bool started = false;
  int visits = 0;               // one inside the other
  bool own_numeric_mode = true; // the library does not send ESC ">" itself
  ScreenSignals signals;
  std::deque<int> ahead; // keys that were read before they were asked for
  bool ready = false;    // the input has announced something that has not been read
  bool ended = false;
  bool interrupted = false;
  std::uint64_t events = 0;
};

Room& room() {
  static Room the_room;
  return the_room;
}

std::string_view capability(const char* name) {
  const char* text = tigetstr(name);
  // The library's "no such capability" is the address -1.
  return text == nullptr || text == reinterpret_cast<const char*>(-1) ? std::string_view() : text;
}

void set_modes() {
  raw();
  noecho();
  keypad(stdscr, TRUE);
  nonl();
  set_escdelay(25);     // milliseconds
  use_legacy_coding(0); // the locale at the time of writing decides what is printable
  typeahead(-1);        // a drawing is whole: who waits for it decides whether it is made
  wtimeout(stdscr, 0);
}

bool start_library() {
  room().signals.set_aside();
  const ScopedLocale locale(unicode_locale());
  SCREEN* screen = newterm(nullptr, stdout, stdin);
  if (screen == nullptr || capability("cup").empty()) {
    if (screen != nullptr) {
      endwin();
      delscreen(screen);
    }
    room().signals.give_back();
    return false;
  }
  set_modes();
  repair_key_sequences();
  room().own_numeric_mode = capability("rmkx").find("\033>") == std::string_view::npos;
  room().started = true;
  return true;
}

int next_key(); // defined below

void resume_library() {
  room().signals.set_aside();
  room().signals.resume_library();
  def_shell_mode();
  werase(stdscr);
  wrefresh(stdscr);
  // The library looks at the terminal's size when it is told to.
  std::raise(SIGWINCH);
  if (const int key = next_key(); key != ERR) room().ahead.push_back(key);
}

bool enter() {
  if (room().started) {
    write_fully(STDOUT_FILENO, "\033=");
    resume_library();
  } else {
    if (!start_library()) return false;
    write_fully(STDOUT_FILENO, "\033=");
  }
  g_curses_active = true;
  return true;
}

void report_failure() {
  const char* name = std::getenv("TERM");
  write_fully(STDERR_FILENO,
              std::string("?Cannot start screen mode: ") + (name != nullptr ? name : "") + "\n");
}

// Held back while a key is looked for, so that none can arrive between the look and the wait for input.
class SignalPause {
 public:
  SignalPause() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH}) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, &before_);
  }
  ~SignalPause() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalPause(const SignalPause&) = delete;
  SignalPause& operator=(const SignalPause&) = delete;
  const sigset_t* before() const { return &before_; }

 private:
  sigset_t before_{};
};

// A key that is there already, ERR when there is none.
int next_key() {
  const int key = wgetch(stdscr);
  if (key != ERR) room().ready = false;
  return key;
}

// Waits until next_key may have something or a signal has come. False at the end of the input: it is
// announced as ready, and nothing can be read.
bool wait_for_input(const sigset_t* mask) {
  Room& the = room();
  int unread = 0;
  if (the.ready && (ioctl(STDIN_FILENO, FIONREAD, &unread) < 0 || unread == 0)) {
    the.ended = true;
    return false;
  }
  fd_set input;
  FD_ZERO(&input);
  FD_SET(STDIN_FILENO, &input);
  the.ready = pselect(STDIN_FILENO + 1, &input, nullptr, nullptr, nullptr, mask) > 0;
  return true;
}

// Nothing, or a key, KEY_RESIZE among them.
std::optional<int> wait_for_key() {
  const SignalPause pause;
  while (g_zan_pending_signal == 0) {
    if (const int key = next_key(); key != ERR) return key;
    if (!wait_for_input(pause.before())) break;
  }
  return std::nullopt;
}

} // namespace

bool screen_was_started() { return room().started; }

ScreenSize screen_size() {
  if (!room().started) return {};
  return {getmaxy(stdscr), getmaxx(stdscr)};
}

void screen_beep() {
  if (!room().started) return;
  ++room().events;
  beep();
}

void screen_flash() {
  if (!room().started) return;
  ++room().events;
  flash();
}

void screen_repaint() {
  if (room().started) wclear(stdscr);
}

ScreenVisit::ScreenVisit(bool pc_keypad) {
  if (room().visits == 0 && !enter()) {
    report_failure();
    return;
  }
  started_ = true;
  ++room().visits;
  register_key_sequences(pc_keypad);
}

ScreenVisit::~ScreenVisit() {
  if (started_ && room().visits > 0 && --room().visits == 0) zan_safe_endwin();
}

std::optional<int> read_key(const std::function<void()>& redraw) {
  Room& the = room();
  ++the.events;
  for (;;) {
    std::optional<int> key;
    if (the.ahead.empty()) {
      key = wait_for_key();
    } else {
      key = the.ahead.front();
      the.ahead.pop_front();
    }
    end_by_pending_signal();
    if (key != KEY_RESIZE) return key;
    redraw();
  }
}

bool key_waiting() {
  if (!room().ahead.empty()) return true;
  fd_set input;
  FD_ZERO(&input);
  FD_SET(STDIN_FILENO, &input);
  timeval at_once{};
  return select(STDIN_FILENO + 1, &input, nullptr, nullptr, &at_once) > 0;
}

bool screen_input_ended() { return room().ended; }

void forget_interrupt() { room().interrupted = false; }
void note_interrupt() { room().interrupted = true; }

bool take_interrupt() {
  Room& the = room();
  if (the.interrupted || the.ended || g_zan_pending_signal != 0) return true;
  if (!g_curses_active) return false;
  for (int key = next_key(); key != ERR; key = next_key()) {
    if (key == kCtrlC) return the.interrupted = true;
    the.ahead.push_back(key);
  }
  return false;
}

std::uint64_t screen_events() { return room().events; }

} // namespace zan

void zan_safe_endwin() {
  if (!g_curses_active) return;
  g_curses_active = false;
  zan::room().visits = 0;
  endwin();
  if (zan::room().own_numeric_mode) zan::write_fully(STDOUT_FILENO, "\033>");
  zan::room().signals.give_back();
}
