#include "app/editor.h"

#include <algorithm>
#include <array>
#include <climits>

#include "screen/terminal.h"
#include "text/bytes.h"

// The nokeypad language: counts and words without blanks between them, such as "5W3DWA2CHGC".
namespace {

constexpr char kEscape = 27;

// What is left of a command string, and the count before the word at hand.
struct Input {
  std::string_view rest;
  int count = 1;

  std::string_view take(std::size_t length) {
    const std::string_view taken = rest.substr(0, length);
    rest.remove_prefix(taken.size());
    return taken;
  }
  // What stands before the next `stop`, or all; a stop is passed over.
  std::string_view take_until(char stop) {
    const std::string_view taken = take(rest.find(stop));
    take(1);
    return taken;
  }
};

using Action = void (*)(Editor&, Input&);

struct Word {
  std::array<std::string_view, 3> forms; // the longest first
  Action run;                            // null: leaves the string
};

// Ctrl/C is a signal at the prompt and a key on the screen.
bool interrupted() { return g_zan_abort_requested != 0 || zan::repetition_interrupted(); }

// Repeats a movement. Once it stays in place it always will.
template <typename Move> void move_repeatedly(Editor& editor, const Input& input, Move move) {
  for (int i = 0; i < input.count && !interrupted(); ++i) {
    const zan::Position before{editor.cursor_row, editor.cursor_col};
    move(editor);
    if (before == zan::Position{editor.cursor_row, editor.cursor_col}) return;
  }
}

// Repeats a deletion until `done` says that another one would change nothing that can be seen.
template <typename Done>
void delete_repeatedly(Editor& editor, const Input& input, void (Editor::*remove)(), Done done) {
  editor.begin_undo_unit();
  for (int i = 0; i < input.count && !interrupted(); ++i) {
    const std::uint64_t before = editor.current.lines().byte_count();
    (editor.*remove)();
    if (done(editor, before)) return;
  }
}

void change_case(Editor& editor, Input& input) {
  editor.begin_undo_unit();
  // At the line's end nothing moves any more, but each repetition still leaves a snapshot, of which the
  // history keeps a hundred.
  int idle = 0;
  for (int i = 0; i < input.count && idle <= Editor::kMaxHistory && !interrupted(); ++i) {
    const std::uint64_t col = editor.cursor_col;
    const bool selected = editor.select_active();
    editor.change_case_char();
    idle = selected || col != editor.cursor_col ? 0 : idle + 1;
  }
}

void delete_words(Editor& editor, Input& input) {
  delete_repeatedly(editor, input, &Editor::delete_word,
                    [](const Editor& e, std::uint64_t) { return e.deleted_word.empty(); });
}

void delete_chars(Editor& editor, Input& input) {
  delete_repeatedly(editor, input, &Editor::delete_char_at_cursor, [](const Editor& e, std::uint64_t before) {
    return e.current.lines().byte_count() == before;
  });
}

void delete_lines(Editor& editor, Input& input) {
  delete_repeatedly(editor, input, &Editor::delete_line,
                    [](const Editor&, std::uint64_t before) { return before == 0; });
}

void find(Editor& editor, Input& input) {
  std::string_view target;
  if (!input.rest.empty() && zan::is_punct(input.rest.front())) {
    target = input.take_until(input.take(1).front());
  } else {
    const auto blank = std::ranges::find_if(input.rest, zan::is_space);
    target = input.take(static_cast<std::size_t>(blank - input.rest.begin()));
  }
  if (!target.empty()) editor.search_string = target;
  editor.find_next(editor.direction);
}

void insert(Editor& editor, Input& input) {
  const std::string_view text = input.take_until(kEscape);
  editor.begin_undo_unit();
  editor.paste_text(Editor::Text::from_text(text));
}

void turn_page(Editor& e) { e.direction == Editor::Direction::Backup ? e.page_up() : e.page_down(); }

template <auto Member> void once(Editor& editor, Input&) { (editor.*Member)(); }

template <auto Member> void move_by(Editor& editor, Input& input) {
  move_repeatedly(editor, input, [](Editor& e) { (e.*Member)(e.direction); });
}

template <Editor::Direction direction> void turn(Editor& editor, Input&) { editor.direction = direction; }

// The order is meaning: the first word that the string begins with is the command, whatever follows.
constexpr auto kWords = std::to_array<Word>({
    {{"EXIT", "EXT", "EX"}, nullptr},
    {{"CHNGCASE", "CHGC"}, change_case},
    {{"RESET", "CLSS"}, once<&Editor::reset_state>},
    {{"ADVANCE", "ADV"}, turn<Editor::Direction::Advance>},
    {{"BACKUP", "BACK"}, turn<Editor::Direction::Backup>},
    {{"APPEND"}, once<&Editor::append_select>},
    {{"PASTE"}, once<&Editor::paste>},
    {{"SELECT", "SEL"}, once<&Editor::start_select>},
    {{"BOTTOM"}, once<&Editor::go_bottom>},
    {{"TOP"}, once<&Editor::go_top>},
    {{"CUT"}, once<&Editor::cut_select>},
    {{"PAGE", "V"}, [](Editor& e, Input& input) { move_repeatedly(e, input, turn_page); }},
    {{"EOL"}, [](Editor& e, Input&) { e.cursor_col = e.current.line_length(e.cursor_row); }},
    {{"BOL", "BL"}, [](Editor& e, Input&) { e.cursor_col = 0; }},
    {{"DWORD", "DW"}, delete_words},
    {{"DCHAR", "DC"}, delete_chars},
    {{"DLINE", "DL"}, delete_lines},
    {{"WORD", "W"}, move_by<&Editor::move_word>},
    {{"LINE", "L"}, move_by<&Editor::line_move>},
    {{"CHAR", "C"}, move_by<&Editor::move_char>},
    {{"A"}, turn<Editor::Direction::Advance>},
    {{"B"}, turn<Editor::Direction::Backup>},
    {{"FIND", "F"}, find},
    {{"INSERT", "I"}, insert},
});

// The count before a word, which is taken: at least 1, and no more than an int holds.
int take_count(Input& input) {
  std::int64_t count = 0;
  while (!input.rest.empty() && zan::is_digit(input.rest.front()))
    count = std::min<std::int64_t>(count * 10 + (input.take(1).front() - '0'), INT_MAX);
  return static_cast<int>(std::max<std::int64_t>(count, 1));
}

bool stopped(Editor& editor, bool verbose) {
  if (!zan::repetition_interrupted()) return editor.check_abort(verbose);
  editor.status_message = "Abort";
  return true;
}

// The word that the string begins with, which is taken.
const Word* take_word(Input& input) {
  for (const Word& word : kWords) {
    for (const std::string_view form : word.forms) {
      if (form.empty() || !zan::starts_with_ci(input.rest, form)) continue;
      input.take(form.size());
      return &word;
    }
  }
  return nullptr;
}

} // namespace

bool Editor::execute_nokeypad_string(const std::string& commands, bool verbose) {
  const AbortGuard guard;
  zan::begin_repetition();
  for (Input input{commands}; !stopped(*this, verbose);) {
    while (!input.rest.empty() && zan::is_space(input.rest.front())) input.take(1);
    if (input.rest.empty()) return false;
    input.count = take_count(input);
    const Word* word = take_word(input);
    if (word == nullptr) {
      status_message = "Unknown nokeypad command";
      say(verbose, "?Unknown nokeypad cmd near: ", input.rest, "\n");
      return false;
    }
    if (word->run == nullptr) {
      status_message = "Command mode";
      return true;
    }
    word->run(*this, input);
  }
  return false;
}
