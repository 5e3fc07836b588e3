// Keys in screen mode, decoded, drawn and carried out, on a screen whose output nobody sees. The input: a
// line of bytes, each of which chooses a key or a command at the prompt; the text.
#include "fuzz/editor_state.h"
#include "screen/keys.h"
#include "screen/terminal.h"
#include "tests/screen/typed_ahead.h"

namespace {

// Commands, asked for with GOLD and the keypad's 7.
constexpr std::string_view kCommands =
    "UNDO\nREDO\nSET WRAP\nSET NOWRAP\nSET SCREEN 9\nSET SCREEN\nSET LINES 4\nSET TAB 3\n"
    "SET TRUNCATE\nSET NUMBERS\nSET CURSOR 2 3\nSET CASE UPPER\nSET SEARCH GENERAL\n"
    "SET TEXT FORMFEED <new page>\nSET ENTITY WORD ab\nFIND =OTHER\nFIND =PASTE\nFIND =MAIN\n"
    "COPY WHOLE TO =OTHER\nMOVE 1 THRU 2 TO =OTHER\nCLEAR =OTHER\nDELETE WHOLE\nINSERT\n"
    "CHANGE ;5DWIab\033\nSUBSTITUTE/a/\f/G\nRESEQUENCE\nTAB ADJUST WHOLE\n"
    "DEFINE KEY GOLD A AS DEL L\nDEFINE MACRO M AS 'DEL L;M;2'\nM";

// As an xterm sends them. None that leads out of the program.
std::vector<std::string> all_keys() {
  std::vector<std::string> keys{"\033OQ ",          "\033[2~",      "\033[3~",         "\033[5~",
                                "\033[6~",          "\033[I",       "\033OP1",         "\033OP3",
                                "\033OP12",         "\033OPn",      "\033ORa\r",       "\033OP\033ORa*b\r",
                                "\033OP\033Os65\r", "\013AUND L\r", "\013\033OPBTOP\r"};
  for (const char c : std::string_view("PRSABCDHFpqrstuvwxymlnM")) keys.push_back(std::string("\033O") + c);
  for (const char c : std::string_view("\1\2\3\4\5\6\10\11\12\13\14\15\24\25\27\177\377abAB .3-("))
    keys.emplace_back(1, c);
  for (const std::string& command : zan::fuzz::split_lines(kCommands))
    keys.push_back("\033OP\033Ow" + command + "\r");
  return keys;
}

bool start_screen() {
  ::setenv("TERM", "screen", 1); // its keys are an xterm's; its flash needs no pause
  ::setenv("LINES", "12", 1);
  ::setenv("COLUMNS", "40", 1);
  zan::fuzz::close_standard_streams();
  return true;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool started = start_screen();
  static const std::vector<std::string> kKeys = all_keys();
  if (!started || size > 1000) return 0;
  zan::fuzz::Input input(data, size);
  const std::string choices = input.line();
  std::string keys;
  for (const char c : choices) keys += kKeys[static_cast<unsigned char>(c) % kKeys.size()];
  // Nothing waits beyond these: each ends a prompt or a repetition.
  keys.append(choices.size() + 8, static_cast<char>(zan::kCtrlC));
  const zan::test::TypedAhead typed(keys);
  zan::fuzz::TestEditor editor(input.rest());
  const zan::ScreenVisit visit(false);
  zan::fuzz::check(static_cast<bool>(visit));
  while (zan::key_waiting()) {
    editor.draw_screen();
    const auto key = zan::read_key([] {});
    zan::fuzz::check(key.has_value());
    const auto before = zan::fuzz::texts_of(editor);
    const std::size_t depth = editor.undo_stack.size();
    editor.handle_screen_key(*key);
    editor.clamp_cursor();
    editor.adjust_view();
    zan::fuzz::check_cursor(editor);
    zan::fuzz::check_undo(editor, depth, &before);
    // APPEND and REPLACE change the text without a snapshot, nothing else does.
    if (*key == zan::kKp9 || editor.undo_stack.size() != depth || depth >= 100) continue;
    const auto after = zan::fuzz::texts_of(editor);
    for (const auto& [name, text] : before) zan::fuzz::check(after.contains(name) && after.at(name) == text);
  }
  return 0;
}
