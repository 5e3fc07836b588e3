#include "app/editor.h"

#include <algorithm>
#include <array>
#include <climits>

#include "screen/terminal.h"
#include "text/bytes.h"

// The nokeypad language: counts and words without blanks between them, such as "5W3DWA2CHGC".
namespace {

constexpr char kEscape = 27;

// The rest of a command string, and the count before the current word.
struct Input {
  std::string_view rest;
  int count = 1;

  std::string_view cut(std::size_t length) {
    const std::string_view front = rest.substr(0, length);
    rest.remove_prefix(front.size());
    return front;
  }
  // Cuts off what is before the next `stop`, or all of it, and the stop itself.
  std::string_view cut_through(char stop) {
    const std::string_view before = cut(rest.find(stop));
    cut(1);
    return before;
  }
};

using WordAction = void (*)(Editor&, Input&);

struct Word {
  std::array<std::string_view, 3> forms; // the longest first
  WordAction action;                     // null: ends nokeypad mode
};

// Ctrl/C is a signal at the prompt and a key on the screen.
bool interrupted() { return g_zan_abort_requested != 0 || zan::repetition_interrupted(); }

// Repeats a movement until it has no effect.
template <typename Move> void move_repeatedly(Editor& editor, const Input& input, Move move) {
  for (int i = 0; i < input.count && !interrupted(); ++i) {
    const zan::Position before{editor.cursor_row, editor.cursor_col};
    move(editor);
    if (before == zan::Position{editor.cursor_row, editor.cursor_col}) return;
  }
}

// Repeats a deletion until `done` says that another one would have no visible effect.
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
  // At the end of the line nothing moves any more, but each repetition still takes an undo snapshot.
  int idle = 0;
  for (int i = 0; i < input.count && idle <= Editor::kHistoryLength && !interrupted(); ++i) {
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
    target = input.cut_through(input.cut(1).front());
  } else {
    const auto blank = std::ranges::find_if(input.rest, zan::is_space);
    target = input.cut(static_cast<std::size_t>(blank - input.rest.begin()));
  }
  if (!target.empty()) editor.search_string = target;
  editor.find_next(editor.direction);
}

void insert(Editor& editor, Input& input) {
  const std::string_view text = input.cut_through(kEscape);
  editor.begin_undo_unit();
  editor.paste_text(Editor::Text::from_text(text));
}

void turn_page(Editor& e) { e.direction == Editor::Direction::Backup ? e.page_up() : e.page_down(); }

template <auto Member> void do_once(Editor& editor, Input&) { (editor.*Member)(); }

template <auto Member> void move_by(Editor& editor, Input& input) {
  move_repeatedly(editor, input, [](Editor& e) { (e.*Member)(e.direction); });
}

template <Editor::Direction direction> void turn(Editor& editor, Input&) { editor.direction = direction; }

// The order matters: the first word that the string begins with is the command, whatever follows.
constexpr auto kWords = std::to_array<Word>({
    {{"EXIT", "EXT", "EX"}, nullptr},
    {{"CHNGCASE", "CHGC"}, change_case},
    {{"RESET", "CLSS"}, do_once<&Editor::reset_state>},
    {{"ADVANCE", "ADV"}, turn<Editor::Direction::Advance>},
    {{"BACKUP", "BACK"}, turn<Editor::Direction::Backup>},
    {{"APPEND"}, do_once<&Editor::append_select>},
    {{"PASTE"}, do_once<&Editor::paste>},
    {{"SELECT", "SEL"}, do_once<&Editor::start_select>},
    {{"BOTTOM"}, do_once<&Editor::go_bottom>},
    {{"TOP"}, do_once<&Editor::go_top>},
    {{"CUT"}, do_once<&Editor::cut_select>},
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

// Cuts off the count before a word: at least 1, and no more than an int holds.
int cut_count(Input& input) {
  std::int64_t count = 0;
  while (!input.rest.empty() && zan::is_digit(input.rest.front()))
    count = std::min<std::int64_t>(count * 10 + (input.cut(1).front() - '0'), INT_MAX);
  return static_cast<int>(std::max<std::int64_t>(count, 1));
}

bool stopped(Editor& editor, bool verbose) {
  if (!zan::repetition_interrupted()) return editor.check_abort(verbose);
  editor.status_message = "Abort";
  return true;
}

// Cuts off the word that the string begins with.
const Word* cut_word(Input& input) {
  for (const Word& word : kWords) {
    for (const std::string_view form : word.forms) {
      if (form.empty() || !zan::starts_with_ci(input.rest, form)) continue;
      input.cut(form.size());
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
    while (!input.rest.empty() && zan::is_space(input.rest.front())) input.cut(1);
    if (input.rest.empty()) return false;
    input.count = cut_count(input);
    const Word* word = cut_word(input);
    if (word == nullptr) {
      status_message = "Unknown nokeypad command";
      say(verbose, "?Unknown nokeypad cmd near: ", input.rest, "\n");
      return false;
    }
    if (word->action == nullptr) {
      status_message = "Command mode";
      return true;
    }
    word->action(*this, input);
  }
  return false;
}
