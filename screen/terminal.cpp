#include "screen/terminal.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
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
#include "screen/prompt_editor.h"
#include "screen/screen_signals.h"
#include "screen/terminal_description.h"

bool g_curses_active = false;

namespace zan {

namespace {

constexpr std::string_view kNumericKeypad = "\033>";
constexpr int kEscapeDelay = 25;    // milliseconds within which the next byte of an escape sequence comes
constexpr int kPasteSilence = 1000; // milliseconds
constexpr char kInterrupt = kCtrlC;
// A repetition that takes longer checks type-ahead for Ctrl/C at this interval.
constexpr std::chrono::milliseconds kLongRepetition{100};
constexpr std::chrono::milliseconds kBetweenChecks{20};

using Clock = std::chrono::steady_clock;

// The characters besides Ctrl/C that send signals when ISIG is set.
constexpr std::array kSignalCharacters{
    VQUIT,
    VSUSP,
#ifdef VDSUSP
    VDSUSP,
#endif
};

std::string_view capability(const char* name) {
  const char* text = tigetstr(const_cast<char*>(name)); // some libraries declare it without const
  // ncurses returns the address -1 for "no such capability".
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  return text == nullptr || text == reinterpret_cast<const char*>(-1) ? std::string_view() : text;
}

// The state of the terminal's one owner. ncurses is started once for each value of TERM, then suspended and
// resumed, because each start would cost memory that is never freed.
struct Screen {
  SCREEN* ncurses = nullptr;      // null before the first visit
  std::string terminal;           // the value of TERM for which it was started
  int visits = 0;                 // nested
  bool sends_numeric_mode = true; // by itself, because ncurses does not send ESC ">"
  ScreenSignals signals;
  KeyDecoder keys;
  std::optional<termios> modes_for_keys; // while Ctrl/C is a signal
  bool interrupted = false;              // Ctrl/C has been typed during the repetition
  Clock::time_point next_check;          // for that
  bool wants_exact_paste = false;
  bool marks_pastes = false; // the terminal does
  std::string pasted;
  std::uint64_t keys_asked_for = 0;
  std::uint64_t bells = 0;
};

Screen& screen() {
  static Screen the_screen;
  return the_screen;
}

void set_modes() {
  raw();
  noecho();
  keypad(stdscr, TRUE);
  nonl();
  use_legacy_coding(0); // the locale during the write decides what is printable
  typeahead(-1);        // never break off a refresh when keys wait: the key loop decides whether to draw
}

// ncurses writes its first screen row by row, but the first one after endwin() at once. So endwin() is called
// before anything is drawn, and what it sends goes to /dev/null.
void suspend_unseen() {
  const HeldSignals held; // their handler replaces the descriptor too
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

// As in ncurses, a size in the environment takes precedence.
int size_or_environment(int size, const char* variable) {
  const char* text = std::getenv(variable);
  const int wanted = text != nullptr ? std::atoi(text) : 0;
  return wanted > 0 ? wanted : size;
}

// 0 for a number that is not known.
ScreenSize terminal_size() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) size = {};
  return {size_or_environment(size.ws_row, "LINES"), size_or_environment(size.ws_col, "COLUMNS")};
}

// ncurses counts rows and columns in short integers and needs some hundred bytes for every cell.
ScreenSize within_limits(ScreenSize size) {
  constexpr int kLargest = 32767;
  constexpr int kMostCells = 4 << 20;
  size.columns = std::min(size.columns, kLargest);
  size.rows = std::min({size.rows, kLargest, kMostCells / std::max(size.columns, 1)});
  return size;
}

// Adopts a new size of the terminal; false when the size is the same.
bool adopt_size() {
  const auto [rows, columns] = within_limits(terminal_size());
  if (rows <= 0 || columns <= 0 || !is_term_resized(rows, columns)) return false;
  if (resize_term(rows, columns) == ERR) return false;
  screen_repaint();
  return true;
}

void prepare_crash_exit() {
  const Screen& state = screen();
  crash_exit().set_sequences({capability("sgr0"), capability("rmcup"), capability("rmkx"),
                              state.sends_numeric_mode ? kNumericKeypad : "",
                              state.marks_pastes ? capability("BD") : ""});
}

// ncurses knows the capabilities, but does not use them.
void mark_pastes(bool on) {
  screen().marks_pastes = on;
  write_fully(STDOUT_FILENO, capability(on ? "BE" : "BD"));
  ScreenSignals::set_stop_sequences(on ? capability("BD") : "", on ? capability("BE") : "");
  bind_paste(on);
}

// False when ncurses cannot drive the terminal that TERM names.
bool start_screen() {
  Screen& state = screen();
  const ScopedLocale locale(unicode_locale());
  // With a huge size newterm() would crash: it gets the default size, and a smaller one once it runs.
  if (const ScreenSize size = terminal_size(); size != within_limits(size)) use_env(FALSE);
  state.ncurses = newterm(nullptr, stdout, stdin);
  if (state.ncurses == nullptr) return false;
  state.signals.adopt_ncurses_stop(); // ncurses installs it only once, also for a terminal that will not do
  if (!capability("cup").empty()) return true;
  endwin();
  delscreen(std::exchange(state.ncurses, nullptr));
  return false;
}

// Starts ncurses for the terminal that TERM names. The screen for another terminal is deleted first, because
// delscreen() deletes the windows of all screens. It stays when no new one could be made.
bool start_ncurses() {
  Screen& state = screen();
  if (state.ncurses != nullptr) {
    if (!described_for_a_screen()) return false;
    delscreen(std::exchange(state.ncurses, nullptr));
  }
  state.signals.install();
  state.signals.install_ncurses_stop();
  if (!start_screen()) {
    state.signals.restore();
    return false;
  }
  state.terminal = terminal_name();
  suspend_unseen();
  set_modes();
  repair_key_sequences();
  state.sends_numeric_mode = capability("rmkx").find(kNumericKeypad) == std::string_view::npos;
  prepare_crash_exit();
  blank_window();
  adopt_size();
  return true;
}

void resume_ncurses() {
  screen().signals.install();
  screen().signals.install_ncurses_stop();
  def_shell_mode();
  blank_window();
  wrefresh(stdscr);
  keypad(stdscr, TRUE);
  adopt_size();
}

// A failure is reported on standard error.
bool enter_screen() {
  constexpr std::string_view kKeypadApplicationMode = "\033=";
  if (screen_was_started() && screen().terminal == terminal_name()) {
    write_fully(STDOUT_FILENO, kKeypadApplicationMode);
    resume_ncurses();
  } else {
    if (!start_ncurses()) {
      write_fully(STDERR_FILENO, "?Cannot start screen mode: " + terminal_name() + "\n");
      return false;
    }
    write_fully(STDOUT_FILENO, kKeypadApplicationMode);
  }
  g_curses_active = true;
  standard_input().read_across(); // lines typed ahead of the screen
  return true;
}

std::optional<int> take_key(bool complete) {
  StandardInput& input = standard_input();
  const auto key = screen().keys.first(input.unread(), complete);
  if (!key) return std::nullopt;
  input.take(key->length);
  return key->code;
}

// Waits for one event: input, a signal, or the end of the escape delay. False when no byte follows those that
// have been read, because the delay or the input has ended.
bool wait_for_bytes(const sigset_t& mask) {
  StandardInput& input = standard_input();
  const int ready = input.wait(&mask, input.unread().empty() ? -1 : kEscapeDelay);
  return ready > 0 ? input.read_key_bytes() : ready < 0;
}

// A key, KEY_RESIZE among them; nothing at the end of the input or when a signal asks the program to end.
std::optional<int> wait_for_key() {
  make_interrupt_a_key();
  if (g_zan_pending_signal == 0)
    if (const auto key = take_key(false)) return key;
  const HeldSignals held{SIGCONT, SIGWINCH}; // so that none arrives between these tests and the wait
  while (!screen_input_ended()) {
    if (screen().signals.take_continuation()) keypad(stdscr, TRUE); // ncurses does not turn it on again
    if (standard_input().unread().empty() && adopt_size()) return KEY_RESIZE;
    const bool more = wait_for_bytes(held.mask_before());
    if (const auto key = take_key(!more)) return key;
  }
  return std::nullopt;
}

// The text of a paste that has begun. One whose end does not come is over when nothing follows for a while,
// or at a Ctrl/C that nothing follows, which stays a key.
std::string read_paste() {
  StandardInput& input = standard_input();
  for (std::size_t searched = 0;;) {
    const std::string_view bytes = input.unread();
    const std::size_t end = bytes.find(kPasteEnd, searched);
    const bool interrupted = bytes.ends_with(kInterrupt);
    const bool goes_on = end == std::string_view::npos && !input.ended() &&
                         input.wait(nullptr, interrupted ? kEscapeDelay : kPasteSilence) != 0 &&
                         g_zan_pending_signal == 0;
    if (!goes_on) {
      std::string text(bytes.substr(0, end));
      if (end == std::string_view::npos && interrupted) text.pop_back();
      input.take(end != std::string_view::npos ? end + kPasteEnd.size() : text.size());
      return text;
    }
    searched = bytes.size() - std::min(bytes.size(), kPasteEnd.size() - 1);
    input.read_ahead();
  }
}

} // namespace

bool screen_was_started() { return screen().ncurses != nullptr; }

ScreenSize screen_size() {
  if (!screen_was_started()) return {};
  return {getmaxy(stdscr), getmaxx(stdscr)};
}

void screen_beep() {
  if (!screen_was_started()) return;
  ++screen().bells;
  beep();
}

void screen_flash() {
  if (!screen_was_started()) return;
  ++screen().bells;
  flash();
}

ScreenVisit::ScreenVisit(bool pc_keypad) {
  started_ = screen().visits > 0 || enter_screen();
  if (!started_) return;
  ++screen().visits;
  // Nokeypad mode needs them too: Enter ends its prompt, and no escape sequence may get into the answer.
  register_key_sequences(pc_keypad);
  screen().keys.learn(key_meaning);
}

ScreenVisit::~ScreenVisit() {
  if (!started_ || screen().visits == 0 || --screen().visits > 0) return;
  // Type-ahead belongs to line mode now, but its Return is a carriage return, which ends no line.
  standard_input().read_ahead();
  zan_safe_endwin();
  standard_input().read_across();
}

std::optional<int> read_key(const std::function<void()>& redraw) {
  ++screen().keys_asked_for;
  for (;;) {
    const auto key = wait_for_key();
    if (key == kPasted) screen().pasted = read_paste();
    if (key != KEY_RESIZE) return key;
    redraw();
  }
}

void set_exact_paste(bool exact) {
  Screen& state = screen();
  if (exact == state.wants_exact_paste || !g_curses_active) return;
  state.wants_exact_paste = exact;
  const bool possible = screen_reads_terminal() && !capability("BE").empty() && !capability("BD").empty();
  if ((exact && possible) == state.marks_pastes) return;
  mark_pastes(exact);
  prepare_crash_exit();
}

std::string take_pasted() { return std::exchange(screen().pasted, ""); }

bool key_waiting() {
  StandardInput& input = standard_input();
  return !input.unread().empty() || g_zan_pending_signal != 0 || input.waits();
}

bool screen_input_ended() { return g_zan_pending_signal != 0 || standard_input().ended(); }

bool screen_reads_terminal() { return standard_input().is_terminal(); }

void discard_end_of_answer() {
  StandardInput& input = standard_input();
  const auto typed = [&] { return screen().keys.first(input.unread(), false); };
  while (!typed() && input.waits() && input.read_key_bytes()) continue;
  if (const auto key = typed(); key && ends_answer(key->code)) input.take(key->length);
}

void make_interrupt_a_signal() {
  termios modes{};
  if (!g_curses_active || !screen_reads_terminal() || tcgetattr(STDIN_FILENO, &modes) != 0) return;
  screen().modes_for_keys = modes;
  modes.c_lflag |= ISIG | NOFLSH;
  for (const int other : kSignalCharacters) modes.c_cc[other] = _POSIX_VDISABLE;
  modes.c_cc[VINTR] = kCtrlC;
  tcsetattr(STDIN_FILENO, TCSANOW, &modes);
}

void make_interrupt_a_key() {
  const auto modes = std::exchange(screen().modes_for_keys, std::nullopt);
  if (modes && g_curses_active) tcsetattr(STDIN_FILENO, TCSANOW, &*modes);
}

void retype_interrupt() {
  if (!g_curses_active || !screen_reads_terminal()) return;
  standard_input().read_ahead();
  standard_input().retype(kCtrlC);
}

void begin_repetition() {
  screen().interrupted = false;
  screen().next_check = Clock::now() + kLongRepetition;
}

void note_interrupt() { screen().interrupted = true; }

bool repetition_interrupted() {
  Screen& state = screen();
  if (state.interrupted || g_zan_pending_signal != 0) return true;
  const auto now = Clock::now();
  StandardInput& input = standard_input();
  if (!g_curses_active || !input.is_terminal() || now < state.next_check) return false;
  state.next_check = now + kBetweenChecks;
  input.read_ahead();
  return state.interrupted =
             input.lost_terminal() || input.unread().find(kInterrupt) != std::string_view::npos;
}

std::uint64_t keys_asked_for() { return screen().keys_asked_for; }
std::uint64_t bells_rung() { return screen().bells; }

} // namespace zan

void zan_safe_endwin() {
  if (!g_curses_active) return;
  g_curses_active = false;
  zan::screen().visits = 0;
  // endwin() would wait until all output has been read.
  if (g_zan_pending_signal != 0) zan::crash_exit().restore_modes();
  // Without an alternate screen, line mode goes on in the lowest row.
  if (zan::capability("rmcup").empty()) zan::show_bottom_row({}, 0);
  endwin();
  if (zan::screen().marks_pastes) zan::mark_pastes(false);
  if (zan::screen().sends_numeric_mode) zan::write_fully(STDOUT_FILENO, zan::kNumericKeypad);
  if (zan::output_is_cut_off()) { // some or all of that went to /dev/null
    zan::reconnect_output();
    zan::crash_exit().restore_terminal();
  }
  if (std::exchange(zan::screen().wants_exact_paste, false)) zan::prepare_crash_exit();
  zan::screen().signals.restore();
}
