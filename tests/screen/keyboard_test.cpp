#include <algorithm>
#include <gtest/gtest.h>

#include "screen/keys.h"
#include "tests/screen/terminal_driver.h"

namespace {

// Keys typed into "one two", "THREE" and "  last" in a fresh program, and what they leave: the rows of text,
// the message and the cursor's place.
struct KeyCase {
  const char* name;
  std::string keys;
  std::vector<std::string> text;
  std::string message;
  int row, column;
};

const std::vector<std::string> kText{"one two", "THREE", "  last"};

// The sequences of an xterm; the keypad's are those of every terminal.
const std::vector<KeyCase> kPlainKeys{
    {"Ctrl/A", "\001x", {"xne two", "THREE", "  last"}, "Overstrike", 0, 1},
    {"Ctrl/B", "\005\002", kText, "", 0, 0},
    {"Ctrl/C", "\033On\033[C\003", kText, "Abort", 0, 1},
    {"Ctrl/D", "\004", kText, "Direction: BACKUP", 0, 0},
    {"Ctrl/E", "\005", kText, "", 0, 7},
    {"Ctrl/F", "\006", kText, "No search string", 0, 0},
    {"Ctrl/H", "\005\010", {"one tw", "THREE", "  last"}, "", 0, 6},
    {"Linefeed", "\005\012", {"one", "THREE", "  last"}, "Deleted word", 0, 4},
    {"Ctrl/K", "\013\003", kText, "Define key cancelled", 0, 0},
    {"Ctrl/L, Ctrl/R, Ctrl/W", "x\014\022\027", {"xone two", "THREE", "  last"}, "", 0, 1},
    {"Return", "\033OC\015", {"o", "ne two", "THREE", "  last"}, "", 1, 0},
    {"Ctrl/T", "\024", {"One two", "THREE", "  last"}, "", 0, 1},
    {"Ctrl/U", "\005\025", {"", "THREE", "  last"}, "", 0, 0},
    {"DELETE", "\005\177", {"one tw", "THREE", "  last"}, "", 0, 6},
    {"Down", "\033OB", kText, "", 1, 0},
    {"Up", "\033OB\033OA", kText, "", 0, 0},
    {"Right", "\033OC", kText, "", 0, 1},
    {"Left", "\005\033OD", kText, "", 0, 6},
    {"Home", "\005\033OH", kText, "", 0, 0},
    {"End", "\033OF", kText, "", 0, 7},
    {"PF1", "\033OP", kText, "GOLD", 0, 0},
    {"PF3", "\033OR", kText, "No search string", 0, 0},
    {"PF4", "\033OS", {"THREE", "  last"}, "", 0, 0},
    {"Remove", "\033[3~", {"ne two", "THREE", "  last"}, "", 0, 0},
    {"Insert", "x\025\033[2~\033[2~", {"xxone two", "THREE", "  last"}, "", 0, 2},
    {"Page Down", "\033[6~", kText, "", 2, 0},
    {"Page Up", "\033[6~\033[5~", kText, "", 0, 0},
    {"Tab", "ab\011", {"ab      one two", "THREE", "  last"}, "", 0, 8},
    {"KP0", "\033Op", kText, "LINE", 1, 0},
    {"KP1", "\033Oq", kText, "", 0, 4},
    {"KP2", "\033Or", kText, "", 0, 7},
    {"KP3", "\033Os", kText, "", 0, 1},
    {"KP4", "\033Ou\033Ot", kText, "Direction: ADVANCE", 0, 0},
    {"KP5", "\033Ou", kText, "Direction: BACKUP", 0, 0},
    {"KP6", "\033On\033Oq\033Ov", {"two", "THREE", "  last"}, "SELECT", 0, 0},
    {"KP7", "\033Ow", kText, "", 2, 0},
    {"KP8", "\033Ox", kText, "", 2, 0},
    {"KP9", "\033On\033Oq\033Oy", {"two", "THREE", "  last"}, "SELECT", 0, 0},
    {"KP-", "\033Om", {" two", "THREE", "  last"}, "", 0, 0},
    {"KP,", "\033Ol", {"ne two", "THREE", "  last"}, "", 0, 0},
    {"KP.", "\033On\033Oq", {"{one }two", "THREE", "  last"}, "SELECT", 0, 4},
    {"KPenter", "\033OM", {"", "one two", "THREE", "  last"}, "", 1, 0},
    {"letters", "A~ z", {"A~ zone two", "THREE", "  last"}, "", 0, 4},
    {"bytes without a meaning", "\007\021\023\030\377", kText, "", 0, 0},
    {"Shift/F3, Alt/Delete, focus, paste", "\033[1;2R\033[3;3~\033[I\033[200~", kText, "", 0, 0},
    {"keypad * and +", "\033Oj\033Ok", kText, "", 0, 0},
};

const std::vector<KeyCase> kGoldKeys{
    {"Ctrl/K", "\013", {"", "THREE", "  last"}, "DEL EOL", 0, 0},
    {"Down", "\033OB", kText, "BOTTOM", 2, 6},
    {"Up", "\033OA", kText, "TOP", 0, 0},
    {"Left", "\033OC\033OP\033OD", kText, "Shift line left", 0, 1},
    {"Right", "\033OC", {" one two", "THREE", "  last"}, "Shift line right", 0, 1},
    {"N", "N", {"1 one two", "2 THREE", "3   last"}, "Line numbers ON", 0, 2},
    {"n", "n", {"1 one two", "2 THREE", "3   last"}, "Line numbers ON", 0, 2},
    {"PF1 PF4", "\033OP\033OS", kText, "No deleted line", 0, 0},
    {"PF2", "\033OQ", kText, "BOTTOM", 2, 6},
    {"PF3", "\033ORlast\r", kText, "Found: last", 2, 2},
    {"PF4", "\003\033OS\033OP\033OS", kText, "UND L", 1, 0},
    {"KP0", "\033Op", {"", "one two", "THREE", "  last"}, "OPEN LINE", 1, 0},
    {"KP1", "\033Oq", {"One two", "THREE", "  last"}, "CHNGCASE", 0, 1},
    {"KP2", "\033Or", {"", "THREE", "  last"}, "DEL EOL", 0, 0},
    {"KP3", "\033Os65\r", {"Aone two", "THREE", "  last"}, "SPECINS", 0, 1},
    {"KP4", "\033Ot", kText, "BOTTOM", 2, 6},
    {"KP5", "\033Ou", kText, "TOP", 0, 0},
    {"KP6", "\033Or\033OP3\033Ov", {"one twoone twoone two", "THREE", "  last"}, "PASTE", 0, 21},
    {"KP7", "\033OwFIND THREE\r", kText, "Found: THREE", 1, 0},
    {"KP8", "\033Ox", kText, "No select range active", 0, 0},
    {"KP9", "\033Or\033On\033OB\033OP\033Oy", {"one twoTHREE", "  last"}, "REPLACE", 0, 7},
    {"KP-", "\003\033Om\033OP\033Om", kText, "UND W", 0, 3},
    {"KP,", "\003\033Ol\033OP\033Ol", kText, "UND C", 0, 1},
    {"KP.", "\033Ou\033OP\033On", kText, "RESET", 0, 0},
    {"KPenter", "\033Or\033OP\033ORTHREE\r\033OP\033OM", {"", "one two", "  last"}, "Substituted", 1, 7},
    {"count", "12\033Oq", {"ONE TWO", "THREE", "  last"}, "CHNGCASE", 0, 7},
    {"count 0 5", "05\033Oq", {"ONE TWO", "THREE", "  last"}, "CHNGCASE", 0, 7},
    {"count shown", "12", kText, "GOLD 12", 0, 0},
    {"endless count", "99999999999n", {"1 one two", "2 THREE", "3   last"}, "Line numbers ON", 0, 2},
    {"letter", "x", kText, "Undefined GOLD key", 0, 0},
    {"Ctrl/C", "\003", kText, "Undefined GOLD key", 0, 0},
    {"Remove", "\033[3~", kText, "Undefined GOLD key", 0, 0},
};

// Keys that only some terminals have, by the names that the descriptions give them.
const std::vector<std::pair<const char*, KeyCase>> kRareKeys{
    {"arm100", {"A1", "\033[q", kText, "", 2, 0}},
    {"arm100", {"A3", "\033On\033Oq\033[s", {"two", "THREE", "  last"}, "SELECT", 0, 0}},
    {"arm100", {"B2", "\033[r", kText, "Direction: BACKUP", 0, 0}},
    {"arm100", {"C1", "\033[p", kText, "", 0, 4}},
    {"arm100", {"C3", "\033[n", kText, "", 0, 1}},
    {"arm100", {"Enter", "\033[M", kText, "", 0, 0}},
    {"arm100", {"GOLD A1", "\033OP\033[qFIND THREE\r", kText, "Found: THREE", 1, 0}},
    {"arm100", {"GOLD A3", "\033OP\033[s", kText, "No select range active", 0, 0}},
    {"arm100", {"GOLD B2", "\033OP\033[r", kText, "TOP", 0, 0}},
    {"arm100", {"GOLD C1", "\033OP\033[p", {"One two", "THREE", "  last"}, "CHNGCASE", 0, 1}},
    {"arm100", {"GOLD C3", "\033OP\033[n65\r", {"Aone two", "THREE", "  last"}, "SPECINS", 0, 1}},
    {"arm100", {"GOLD Enter", "\033OP\033[M", kText, "SUBSTITUTE", 0, 0}},
    {"emu-220", {"Do", "\033[29~FIND THREE\r", kText, "Found: THREE", 1, 0}},
    {"emu-220", {"Find", "\033[1~", kText, "No search string", 0, 0}},
    {"vt220", {"Find", "\033[1~", kText, "No search string", 0, 0}},
    {"vt220", {"Select", "\033[4~", kText, "SELECT", 0, 0}},
    {"linux", {"B2", "\033[G", kText, "Direction: BACKUP", 0, 0}},
    // Its description gives Alt/Delete a code of the keypad.
    {"ms-terminal", {"Alt/Delete", "\033[3;3~", kText, "", 0, 0}},
};

// What a terminal's keyboard sends where it differs from an xterm's.
struct Keyboard {
  const char* term;
  std::vector<std::pair<std::string, std::string>> sends;
};

const std::vector<Keyboard> kKeyboards{
    {"xterm-256color", {}},
    {"vt100", {}},
    {"vt220", {{"\033OA", "\033[A"}, {"\033OB", "\033[B"}, {"\033OC", "\033[C"}, {"\033OD", "\033[D"}}},
    {"screen-256color", {{"\033OH", "\033[1~"}, {"\033OF", "\033[4~"}}},
    {"tmux-256color", {{"\033OH", "\033[1~"}, {"\033OF", "\033[4~"}}},
    {"linux",
     {{"\033OA", "\033[A"},
      {"\033OB", "\033[B"},
      {"\033OC", "\033[C"},
      {"\033OD", "\033[D"},
      {"\033OH", "\033[1~"},
      {"\033OF", "\033[4~"},
      {"\033OP", "\033[[A"},
      {"\033OQ", "\033[[B"},
      {"\033OR", "\033[[C"},
      {"\033OS", "\033[[D"}}},
    {"putty",
     {{"\033OH", "\033[1~"},
      {"\033OF", "\033[4~"},
      {"\033OP", "\033[11~"},
      {"\033OQ", "\033[12~"},
      {"\033OR", "\033[13~"},
      {"\033OS", "\033[14~"}}},
};

std::string typed_on(const Keyboard& keyboard, std::string keys) {
  for (const auto& [usual, own] : keyboard.sends)
    for (std::size_t at = 0; (at = keys.find(usual, at)) != std::string::npos; at += own.size())
      keys.replace(at, usual.size(), own);
  return keys;
}

void press_keys(const std::string& term, const KeyCase& key, const std::string& keys) {
  SCOPED_TRACE(term + " " + key.name);
  if (!terminal_is_described(term)) return;
  TerminalOptions options;
  options.text = "one two\nTHREE\n  last\n";
  options.term = term;
  TerminalDriver terminal(options);
  terminal.type("CHANGE\n");
  if (!terminal.shows_text("[EOB]")) return;
  terminal.type(keys);
  Shown wanted{key.text, key.row, key.column};
  wanted.rows.insert(wanted.rows.end(), {"[EOB]", "...", key.message});
  const auto fits = [&](const Shown& now) {
    const std::size_t lines = key.text.size();
    return std::equal(key.text.begin(), key.text.end(), now.rows.begin()) && now.rows[lines] == "[EOB]" &&
           now.rows.back() == key.message && now.cursor_row == key.row && now.cursor_column == key.column;
  };
  terminal.wait_until(fits, wanted.to_string());
}

} // namespace

class Keyboards : public testing::TestWithParam<Keyboard> {};

TEST_P(Keyboards, PlainKeys) {
  for (const KeyCase& key : kPlainKeys) press_keys(GetParam().term, key, typed_on(GetParam(), key.keys));
}

TEST_P(Keyboards, GoldKeys) {
  for (const KeyCase& key : kGoldKeys)
    press_keys(GetParam().term, key, typed_on(GetParam(), "\033OP" + key.keys));
}

INSTANTIATE_TEST_SUITE_P(All, Keyboards, testing::ValuesIn(kKeyboards), [](const auto& keyboard) {
  std::string name = keyboard.param.term;
  std::ranges::replace(name, '-', '_');
  return name;
});

TEST(Keyboard, RareKeys) {
  for (const auto& [term, key] : kRareKeys) press_keys(term, key, key.keys);
}

TEST(Keyboard, GoldQQuits) {
  for (const std::string q : {"q", "Q"}) {
    TerminalDriver terminal({});
    terminal.type("CHANGE\n");
    terminal.shows_text("[EOB]");
    terminal.type("x\033OP" + q);
    EXPECT_EQ(terminal.exit_status(), 0);
    EXPECT_TRUE(terminal.output().ends_with("Changes discarded\r\n")) << terminal.output();
  }
}

TEST(Keyboard, NamesOfKeys) {
  struct Case {
    int key;
    bool gold;
    const char* name;
  };
  const Case cases[] = {{265, false, "PF1"},      {268, true, "GOLD+PF4"},  {127, false, "DELETE"},
                        {8, true, "GOLD+DELETE"}, {9, true, "GOLD+CTRL+I"}, {26, false, "CTRL+Z"},
                        {'a', false, "A"},        {' ', true, "GOLD+ "},    {258, true, ""},
                        {0, false, ""},           {27, true, ""},           {512, false, ""}};
  for (const auto& [key, gold, name] : cases) EXPECT_EQ(zan::key_identifier(key, gold), name) << key;
  EXPECT_EQ(zan::key_description("PF1/F1", 265), "PF1/F1  (code 265 / 0x109)");
  EXPECT_EQ(zan::key_description(std::string(80, 'x'), 1).size(), 63U);
}
