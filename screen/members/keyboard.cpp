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

// What a key does. One of the four is set, or none for a key without an action.
struct Action {
  const char* command_line = nullptr; // executed silently
  void (Editor::*plain)() = nullptr;
  void (Editor::*directed)(Direction) = nullptr; // gets the current direction
  void (*local)(Editor&) = nullptr;              // a function of this file

  constexpr explicit operator bool() const {
    return command_line != nullptr || plain != nullptr || directed != nullptr || local != nullptr;
  }
  void operator()(Editor& editor) const {
    if (command_line != nullptr) editor.execute_command(command_line, false);
    else if (plain != nullptr) (editor.*plain)();
    else if (directed != nullptr) (editor.*directed)(editor.direction);
    else if (local != nullptr) local(editor);
  }
};

constexpr Action command(const char* line) { return {line, nullptr, nullptr, nullptr}; }
constexpr Action member(void (Editor::*action)()) { return {nullptr, action, nullptr, nullptr}; }
constexpr Action in_direction(void (Editor::*move)(Direction)) { return {nullptr, nullptr, move, nullptr}; }
constexpr Action function(void (*action)(Editor&)) { return {nullptr, nullptr, nullptr, action}; }

// ---- actions that are neither a command nor a member

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

// For Ctrl/Z, on which handle_screen_key leaves screen mode.
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
    {1, nullptr, function(toggle_overstrike)},
    {2, nullptr, function(line_start)},
    {zan::kCtrlC, nullptr, function(abort_keys)},
    {4, nullptr, function(toggle_direction)},
    {5, nullptr, function(line_end)},
    {6, nullptr, command("FNDNXT")},
    {zan::kBackspaceByte, nullptr, function(delete_left)},
    {zan::kLinefeed, "RETURN", function(delete_word_left)},
    {11, nullptr, member(&Editor::interactive_define_key), "DEL EOL", command("DEL EOL")},
    {12, nullptr, function(repaint)},
    {zan::kReturn, "RETURN", function(split_line)},
    {18, nullptr, function(repaint)},
    {20, nullptr, member(&Editor::change_case_char)},
    {zan::kCtrlU, nullptr, function(delete_to_line_start)},
    {23, nullptr, function(repaint)},
    {zan::kCtrlZ, nullptr, function(to_line_mode)},
    {'N', nullptr, {}, "Line numbers", member(&Editor::toggle_line_numbers)},
    {'Q', nullptr, {}, "QUIT", function(quit)},
    {'n', nullptr, {}, "Line numbers", member(&Editor::toggle_line_numbers)},
    {'q', nullptr, {}, "QUIT", function(quit)},
    {zan::kDelete, nullptr, function(delete_left)},
    {zan::kDown, "DOWN", member(&Editor::move_down), "BOTTOM", command("BOTTOM")},
    {zan::kUp, "UP", member(&Editor::move_up), "TOP", command("TOP")},
    {zan::kLeft, "LEFT", member(&Editor::move_left), "Shift line left", member(&Editor::shift_left_line)},
    {zan::kRight, "RIGHT", member(&Editor::move_right), "Shift line right",
     member(&Editor::shift_right_line)},
    {zan::kHome, "HOME", function(line_start)},
    {zan::kBackspace, nullptr, function(delete_left)},
    {zan::kPf1, "PF1/F1", function(gold), "GOLD", function(gold)},
    {zan::kPf2, "PF2/F2", member(&Editor::show_help_screen), "BOTTOM", command("BOTTOM")},
    {zan::kPf3, "PF3/F3", command("FNDNXT"), "FIND", member(&Editor::prompt_find)},
    {zan::kPf4, "PF4/F4", command("DEL L"), "UND L", command("UND L")},
    {zan::kRemove, "DELETE", command("DEL C")},
    {zan::kInsert, "INSERT", command("PASTE")},
    {zan::kPageDown, "PGDN", member(&Editor::page_down)},
    {zan::kPageUp, "PGUP", member(&Editor::page_up)},
    {zan::kDo, nullptr, member(&Editor::command_prompt)},
    {zan::kEnd, "END", function(line_end)},
    {zan::kFind, nullptr, command("FNDNXT")},
    {zan::kSelect, nullptr, command("SELECT")},
});

constexpr auto kKeypadKeys = std::to_array<Key>({
    {zan::kTab, "TAB", function(tabulate)},
    {zan::kEnter, nullptr, {}, "SUBSTITUTE", command("SUBSTITUTE")},
    {zan::kA1, nullptr, member(&Editor::page_down), "COMMAND", member(&Editor::command_prompt)},
    {zan::kA3, nullptr, member(&Editor::append_select), "REPLACE",
     member(&Editor::replace_select_with_paste)},
    {zan::kB2, nullptr, command("BACKUP"), "TOP", command("TOP")},
    {zan::kC1, nullptr, in_direction(&Editor::move_word), "CHNGCASE", member(&Editor::change_case_char)},
    {zan::kC3, nullptr, in_direction(&Editor::move_char), "SPECINS", member(&Editor::prompt_insert_literal)},
    {zan::kKp0, "KP0", in_direction(&Editor::line_move), "OPEN LINE", member(&Editor::open_line)},
    {zan::kKp1, "KP1", in_direction(&Editor::move_word), "CHNGCASE", member(&Editor::change_case_char)},
    {zan::kKp2, "KP2", function(line_end), "DEL EOL", command("DEL EOL")},
    {zan::kKp3, "KP3", in_direction(&Editor::move_char), "SPECINS", member(&Editor::prompt_insert_literal)},
    {zan::kKp4, "KP4", command("ADVANCE"), "BOTTOM", command("BOTTOM")},
    {zan::kKp5, "KP5", command("BACKUP"), "TOP", command("TOP")},
    {zan::kKp6, "KP6", command("CUT"), "PASTE", command("PASTE")},
    {zan::kKp7, "KP7", member(&Editor::page_down), "COMMAND", member(&Editor::command_prompt)},
    {zan::kKp8, "KP8", in_direction(&Editor::section_move), "FILL", function(fill)},
    {zan::kKp9, "KP9", member(&Editor::append_select), "REPLACE", member(&Editor::replace_select_with_paste)},
    {zan::kKpMinus, "KP-", command("DEL W"), "UND W", command("UND W")},
    {zan::kKpComma, "KP,", command("DEL C"), "UND C", command("UND C")},
    {zan::kKpPeriod, "KP.", command("SELECT"), "RESET", command("RESET")},
    {zan::kKpEnter, "KPenter", function(split_line), "SUBSTITUTE", command("SUBSTITUTE")},
});

// Sorted for the binary search.
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

// State whose equality proves that a repetition changed nothing: a GOLD function that edits moves the cursor
// or changes the size of a text as long as it has an effect.
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

// Notices a repetition that has stopped changing anything, or alternates between two states. After more steps
// than the undo history remembers, nobody can tell how many there were, only whether the number is even.
class Alternation {
 public:
  bool lasts(const Trace& after_step) {
    steps_ = after_step == before_last_ ? steps_ + 1 : 0;
    before_last_ = std::exchange(last_, after_step);
    return steps_ > kUndoable;
  }

 private:
  // A step may take two undo snapshots; a few steps to spare.
  static constexpr int kUndoable = 2 * Editor::kHistoryLength + 4;
  Trace last_;
  Trace before_last_;
  int steps_ = 0;
};

// A function that rings the bell has failed and would fail again. A bell at a prompt does not count.
class FailureBell {
 public:
  bool rang() const { return zan::bells_rung() != bells_ && zan::keys_asked_for() == keys_; }

 private:
  std::uint64_t bells_ = zan::bells_rung();
  std::uint64_t keys_ = zan::keys_asked_for();
};

bool repeat_gold(Editor& editor, int key, int count) {
  Alternation alternation;
  zan::begin_repetition();
  for (int left = count; left > 0;) {
    const FailureBell bell;
    if (editor.handle_gold_key(key)) return true;
    if (--left == 0 || bell.rang() || zan::repetition_interrupted()) break;
    if (alternation.lasts(trace_of(editor))) left %= 2;
  }
  return false;
}

} // namespace

bool Editor::handle_screen_key(int key) {
  if (key == zan::kPasted) {
    insert_exactly(zan::take_pasted());
    return false;
  }
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
  // keyname() would make up a name for the codes above.
  const char* name = key < zan::kIgnored ? keyname(key) : nullptr;
  return zan::key_description(name != nullptr ? name : "?", key);
}

const char* Editor::gold_function_name(int key) const {
  const Key* row = find_key(key);
  return row != nullptr ? row->gold_name : "";
}
