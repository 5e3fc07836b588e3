#include "app/editor.h"

#include <algorithm>
#include <array>
#include <climits>
#include <utility>

#include "screen/curses.h"
#include "screen/draw.h"
#include "screen/keys.h"
#include "screen/terminal.h"
#include "text/bytes.h"

static_assert(zan::kDown == KEY_DOWN && zan::kUp == KEY_UP && zan::kLeft == KEY_LEFT &&
              zan::kRight == KEY_RIGHT && zan::kHome == KEY_HOME && zan::kBackspace == KEY_BACKSPACE &&
              zan::kPf1 == KEY_F(1) && zan::kPf4 == KEY_F(4) && zan::kRemove == KEY_DC &&
              zan::kInsert == KEY_IC && zan::kPageDown == KEY_NPAGE && zan::kPageUp == KEY_PPAGE &&
              zan::kEnter == KEY_ENTER && zan::kA1 == KEY_A1 && zan::kA3 == KEY_A3 && zan::kB2 == KEY_B2 &&
              zan::kC1 == KEY_C1 && zan::kC3 == KEY_C3 && zan::kDo == KEY_COMMAND && zan::kEnd == KEY_END &&
              zan::kFind == KEY_FIND && zan::kSelect == KEY_SELECT && zan::kKp0 > KEY_MAX);

namespace {

using Direction = Editor::Direction;

// What a key does: a command line, run silently; a member; a member that goes in the current direction; or a
// function of this file.
struct Action {
  const char* command = nullptr;
  void (Editor::*member)() = nullptr;
  void (Editor::*directed)(Direction) = nullptr;
  void (*function)(Editor&) = nullptr;

  constexpr explicit operator bool() const {
    return command != nullptr || member != nullptr || directed != nullptr || function != nullptr;
  }
  void operator()(Editor& editor) const {
    if (command != nullptr) editor.execute_command(command, false);
    else if (member != nullptr) (editor.*member)();
    else if (directed != nullptr) (editor.*directed)(editor.direction);
    else if (function != nullptr) function(editor);
  }
};

constexpr Action run(const char* command) { return {command, nullptr, nullptr, nullptr}; }
constexpr Action call(void (Editor::*member)()) { return {nullptr, member, nullptr, nullptr}; }
constexpr Action go(void (Editor::*member)(Direction)) { return {nullptr, nullptr, member, nullptr}; }
constexpr Action perform(void (*function)(Editor&)) { return {nullptr, nullptr, nullptr, function}; }

// ---- actions that are no command and no member

void line_start(Editor& editor) { editor.cursor_col = 0; }
void line_end(Editor& editor) { editor.cursor_col = editor.current.line_length(editor.cursor_row); }

void toggle_overstrike(Editor& editor) {
  editor.overstrike = !editor.overstrike;
  editor.status_message = editor.overstrike ? "Overstrike" : "Insert";
}

void toggle_direction(Editor& editor) {
  const bool back = editor.direction == Direction::Advance;
  editor.direction = back ? Direction::Backup : Direction::Advance;
  editor.status_message = back ? "Direction: BACKUP" : "Direction: ADVANCE";
}

void abort_keys(Editor& editor) {
  editor.count_pending = false;
  editor.repeat_count = 0;
  if (editor.current.has_mark()) editor.clear_select();
  editor.status_message = "Abort";
  zan::screen_flash();
}

void delete_left(Editor& editor) {
  editor.begin_undo_unit();
  editor.delete_char_left();
}

void delete_word_left(Editor& editor) {
  editor.begin_undo_unit();
  editor.delete_word_left();
}

void delete_to_line_start(Editor& editor) {
  editor.begin_undo_unit();
  editor.set_paste_text(editor.current.delete_to_bol(editor.cursor_row, editor.cursor_col));
}

void split_line(Editor& editor) {
  editor.begin_undo_unit();
  editor.current.split_line(editor.cursor_row, editor.cursor_col);
  ++editor.cursor_row;
  editor.cursor_col = 0;
}

void tabulate(Editor& editor) {
  editor.begin_undo_unit();
  editor.insert_tab_stop();
}

void gold(Editor& editor) {
  editor.count_pending = true;
  editor.repeat_count = 0;
  editor.status_message = "GOLD";
}

void repaint(Editor&) { zan::screen_repaint(); }
void fill(Editor& editor) { editor.fill_command("", false); }
void quit(Editor& editor) { editor.handle_command_result(editor.execute_command("QUIT", false), true); }

// The one key that ends screen mode.
void to_line_mode(Editor& editor) { editor.status_message = "Command mode"; }

// ---- the keyboard

struct Key {
  int code;
  const char* debug_name; // null: derived from the code
  Action plain;
  const char* gold_name = ""; // shown before the GOLD action runs
  Action gold{};
};

constexpr auto kMainKeys = std::to_array<Key>({
    {1, nullptr, perform(toggle_overstrike)},
    {2, nullptr, perform(line_start)},
    {zan::kCtrlC, nullptr, perform(abort_keys)},
    {4, nullptr, perform(toggle_direction)},
    {5, nullptr, perform(line_end)},
    {6, nullptr, run("FNDNXT")},
    {zan::kBackspaceByte, nullptr, perform(delete_left)},
    {zan::kLinefeed, "RETURN", perform(delete_word_left)},
    {11, nullptr, call(&Editor::interactive_define_key), "DEL EOL", run("DEL EOL")},
    {12, nullptr, perform(repaint)},
    {zan::kReturn, "RETURN", perform(split_line)},
    {18, nullptr, perform(repaint)},
    {20, nullptr, call(&Editor::change_case_char)},
    {zan::kCtrlU, nullptr, perform(delete_to_line_start)},
    {23, nullptr, perform(repaint)},
    {zan::kCtrlZ, nullptr, perform(to_line_mode)},
    {'N', nullptr, {}, "Line numbers", call(&Editor::toggle_line_numbers)},
    {'Q', nullptr, {}, "QUIT", perform(quit)},
    {'n', nullptr, {}, "Line numbers", call(&Editor::toggle_line_numbers)},
    {'q', nullptr, {}, "QUIT", perform(quit)},
    {zan::kDelete, nullptr, perform(delete_left)},
    {zan::kDown, "DOWN", call(&Editor::move_down), "BOTTOM", run("BOTTOM")},
    {zan::kUp, "UP", call(&Editor::move_up), "TOP", run("TOP")},
    {zan::kLeft, "LEFT", call(&Editor::move_left), "Shift line left", call(&Editor::shift_left_line)},
    {zan::kRight, "RIGHT", call(&Editor::move_right), "Shift line right", call(&Editor::shift_right_line)},
    {zan::kHome, "HOME", perform(line_start)},
    {zan::kBackspace, nullptr, perform(delete_left)},
    {zan::kPf1, "PF1/F1", perform(gold), "GOLD", perform(gold)},
    {zan::kPf2, "PF2/F2", call(&Editor::show_help_screen), "BOTTOM", run("BOTTOM")},
    {zan::kPf3, "PF3/F3", run("FNDNXT"), "FIND", call(&Editor::prompt_find)},
    {zan::kPf4, "PF4/F4", run("DEL L"), "UND L", run("UND L")},
    {zan::kRemove, "DELETE", run("DEL C")},
    {zan::kInsert, "INSERT", run("PASTE")},
    {zan::kPageDown, "PGDN", call(&Editor::page_down)},
    {zan::kPageUp, "PGUP", call(&Editor::page_up)},
    {zan::kDo, nullptr, call(&Editor::command_prompt)},
    {zan::kEnd, "END", perform(line_end)},
    {zan::kFind, nullptr, run("FNDNXT")},
    {zan::kSelect, nullptr, run("SELECT")},
});

constexpr auto kKeypadKeys = std::to_array<Key>({
    {zan::kTab, "TAB", perform(tabulate)},
    {zan::kEnter, nullptr, {}, "SUBSTITUTE", run("SUBSTITUTE")},
    {zan::kA1, nullptr, call(&Editor::page_down), "COMMAND", call(&Editor::command_prompt)},
    {zan::kA3, nullptr, call(&Editor::append_select), "REPLACE", call(&Editor::replace_select_with_paste)},
    {zan::kB2, nullptr, run("BACKUP"), "TOP", run("TOP")},
    {zan::kC1, nullptr, go(&Editor::move_word), "CHNGCASE", call(&Editor::change_case_char)},
    {zan::kC3, nullptr, go(&Editor::move_char), "SPECINS", call(&Editor::prompt_insert_literal)},
    {zan::kKp0, "KP0", go(&Editor::line_move), "OPEN LINE", call(&Editor::open_line)},
    {zan::kKp1, "KP1", go(&Editor::move_word), "CHNGCASE", call(&Editor::change_case_char)},
    {zan::kKp2, "KP2", perform(line_end), "DEL EOL", run("DEL EOL")},
    {zan::kKp3, "KP3", go(&Editor::move_char), "SPECINS", call(&Editor::prompt_insert_literal)},
    {zan::kKp4, "KP4", run("ADVANCE"), "BOTTOM", run("BOTTOM")},
    {zan::kKp5, "KP5", run("BACKUP"), "TOP", run("TOP")},
    {zan::kKp6, "KP6", run("CUT"), "PASTE", run("PASTE")},
    {zan::kKp7, "KP7", call(&Editor::page_down), "COMMAND", call(&Editor::command_prompt)},
    {zan::kKp8, "KP8", go(&Editor::section_move), "FILL", perform(fill)},
    {zan::kKp9, "KP9", call(&Editor::append_select), "REPLACE", call(&Editor::replace_select_with_paste)},
    {zan::kKpMinus, "KP-", run("DEL W"), "UND W", run("UND W")},
    {zan::kKpComma, "KP,", run("DEL C"), "UND C", run("UND C")},
    {zan::kKpPeriod, "KP.", run("SELECT"), "RESET", run("RESET")},
    {zan::kKpEnter, "KPenter", perform(split_line), "SUBSTITUTE", run("SUBSTITUTE")},
});

// Both in the order of their codes, for the lookup.
static_assert(std::ranges::is_sorted(kMainKeys, {}, &Key::code));
static_assert(std::ranges::is_sorted(kKeypadKeys, {}, &Key::code));

template <typename Table> const Key* find_in(const Table& table, int code) {
  const auto found = std::ranges::lower_bound(table, code, {}, &Key::code);
  return found != table.end() && found->code == code ? &*found : nullptr;
}

const Key* find_key(int code) {
  const Key* key = find_in(kMainKeys, code);
  return key != nullptr ? key : find_in(kKeypadKeys, code);
}

// ---- typed text

void type_text(Editor& editor, char c) {
  editor.begin_undo_unit();
  if (editor.case_mode == "LOWER") c = zan::to_lower(c);
  else if (editor.case_mode == "UPPER") c = zan::to_upper(c);
  const bool replaces =
      editor.overstrike && editor.cursor_col < editor.current.line_length(editor.cursor_row);
  if (replaces) editor.current.replace_in_line(editor.cursor_row, editor.cursor_col, 1, {&c, 1});
  else editor.current.insert_char(editor.cursor_row, editor.cursor_col, c);
  ++editor.cursor_col;
  editor.maybe_wrap_line();
}

// ---- repeat counts

bool counts(const Editor& editor, int key) {
  return editor.autorepeat && editor.repeat && key >= '0' && key <= '9';
}

void add_count_digit(Editor& editor, int digit) {
  int& count = editor.repeat_count;
  count = count > (INT_MAX - digit) / 10 ? INT_MAX : std::max(1, count * 10 + digit);
  editor.status_message = "GOLD " + std::to_string(count);
}

// What a GOLD function can change, as far as it is needed to see that it does nothing any more: every
// function that edits moves the cursor or changes the size of the text until it settles.
struct Trace {
  zan::Position cursor;
  std::uint64_t bytes = 0;
  std::uint64_t paste_bytes = 0;
  bool line_numbers = false;
  bool count_pending = false;
  std::uint64_t keys_asked_for = 0;
  bool operator==(const Trace&) const = default;
};

Trace trace_of(Editor& editor) {
  return {{editor.cursor_row, editor.cursor_col},
          editor.current.lines().byte_count(),
          editor.paste_text_content().byte_count(),
          editor.line_numbers,
          editor.count_pending,
          zan::keys_asked_for()};
}

// Nobody can tell how often something was done that has settled, or goes to and fro between two states, for
// longer than the undo history remembers.
class Settling {
 public:
  bool settled(const Trace& now) {
    alike_ = now == before_last_ ? alike_ + 1 : 0;
    before_last_ = std::exchange(last_, now);
    return alike_ > kMemory;
  }

 private:
  static constexpr int kMemory = 204; // undo snapshots, two for every step and some to spare
  Trace last_;
  Trace before_last_;
  int alike_ = 0;
};

// A function that rings has failed, and would again: once is enough. What rings at a prompt does not count.
class Ringing {
 public:
  bool rang() const { return zan::bells_rung() != bells_ && zan::keys_asked_for() == keys_; }

 private:
  std::uint64_t bells_ = zan::bells_rung();
  std::uint64_t keys_ = zan::keys_asked_for();
};

bool repeat_gold(Editor& editor, int key, int count) {
  Settling settling;
  zan::begin_repetition();
  for (int left = count; left > 0; --left) {
    const Ringing ringing;
    if (editor.handle_gold_key(key)) return true;
    if (left == 1 || ringing.rang() || zan::repetition_interrupted()) break;
    if (settling.settled(trace_of(editor))) left = 1 + (left - 1) % 2;
  }
  return false;
}

} // namespace

bool Editor::handle_screen_key(int key) {
  if (count_pending) {
    if (counts(*this, key)) {
      add_count_digit(*this, key - '0');
      return false;
    }
    const int count = std::max(1, repeat_count);
    repeat_count = 0;
    count_pending = false;
    if (try_defined_key(key, true)) return false;
    return repeat_gold(*this, key, count);
  }
  if (try_defined_key(key, false)) return false;
  const Key* row = find_in(kMainKeys, key);
  if (row == nullptr || !row->plain) return handle_keypad_or_text(key);
  row->plain(*this);
  return key == zan::kCtrlZ;
}

bool Editor::handle_keypad_or_text(int key) {
  if (const Key* row = find_in(kKeypadKeys, key)) row->plain(*this);
  else if (zan::is_printable(key)) type_text(*this, static_cast<char>(key));
  return false;
}

bool Editor::handle_gold_key(int key) {
  if (const char* name = gold_function_name(key); *name != '\0') status_message = name;
  const Key* row = find_in(kMainKeys, key);
  if (row == nullptr || !row->gold) return handle_gold_keypad(key);
  row->gold(*this);
  return false;
}

bool Editor::handle_gold_keypad(int key) {
  const Key* row = find_in(kKeypadKeys, key);
  if (row != nullptr && row->gold) row->gold(*this);
  else status_message = "Undefined GOLD key";
  return false;
}

std::string Editor::key_id_from_input(int key, bool with_gold) const {
  return zan::key_identifier(key, with_gold);
}

std::string Editor::key_debug_name(int key) const {
  const Key* row = find_key(key);
  if (row != nullptr && row->debug_name != nullptr) return zan::key_description(row->debug_name, key);
  if (key >= 1 && key <= 26) return zan::key_description(std::string("^") + static_cast<char>(key + 64), key);
  if (zan::is_printable(key))
    return zan::key_description(std::string("'") + static_cast<char>(key) + "'", key);
  // The library takes the name of any key with the code of those without a meaning.
  const char* name = key != zan::kIgnored ? keyname(key) : nullptr;
  return zan::key_description(name != nullptr ? name : "?", key);
}

const char* Editor::gold_function_name(int key) const {
  const Key* row = find_key(key);
  return row != nullptr ? row->gold_name : "";
}
