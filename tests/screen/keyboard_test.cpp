#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

#include "screen/keys.h"
#include "tests/screen/terminal_driver.h"
#include "tests/sessions/text_forms.h"

namespace {

struct KeyCase {
  std::string term; // that has the key; "": all have
  std::string name, keys;
  std::vector<std::string> text;
  std::string message;
  int row, column;
};

struct Keyboard {
  std::string term;
  std::vector<std::pair<std::string, std::string>> sends; // where an xterm sends something else
};

struct Tables {
  std::vector<KeyCase> keys;
  std::vector<Keyboard> keyboards;
};

KeyCase key_case(const std::string& term, const std::string& row) {
  const std::vector<std::string> fields = split_fields(row);
  KeyCase key{term, fields[0], unescape(fields[1]), {}, fields[3], 0, 0};
  std::istringstream lines(fields[2] == "=" ? "/one two/THREE/  last" : fields[2]);
  std::string line;
  for (std::getline(lines, line, '/'); std::getline(lines, line, '/');) key.text.push_back(line);
  std::istringstream(fields[4]) >> key.row >> key.column;
  return key;
}

Tables read_tables() {
  Tables tables;
  std::string term;
  for (const std::string& line : lines_of_file("screen/keyboards.table")) {
    const auto [first, rest] = split_word(line);
    if (first == "keys") {
      term = rest;
    } else if (first == "keyboard") {
      Keyboard& keyboard = tables.keyboards.emplace_back();
      std::istringstream words(rest);
      words >> keyboard.term;
      for (std::string usual, own; std::getline(words >> std::ws, usual, '=') >> own;)
        keyboard.sends.emplace_back(unescape(usual), unescape(own));
    } else {
      tables.keys.push_back(key_case(term, line));
    }
  }
  return tables;
}

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
  terminal.enter_screen("[EOB]");
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

TEST_P(Keyboards, KeysOfEveryTerminal) {
  for (const KeyCase& key : read_tables().keys)
    if (key.term.empty()) press_keys(GetParam().term, key, typed_on(GetParam(), key.keys));
}

INSTANTIATE_TEST_SUITE_P(All, Keyboards, testing::ValuesIn(read_tables().keyboards),
                         [](const auto& keyboard) {
                           std::string name = keyboard.param.term;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

TEST(Keyboard, KeysOfSomeTerminals) {
  for (const KeyCase& key : read_tables().keys)
    if (!key.term.empty()) press_keys(key.term, key, key.keys);
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
