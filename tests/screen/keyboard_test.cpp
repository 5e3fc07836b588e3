#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>

#include "screen/keys.h"
#include "screen/terminal.h"
#include "tests/screen/key_names.h"
#include "tests/screen/terminal_driver.h"
#include "tests/screen/typed_ahead.h"
#include "tests/sessions/text_forms.h"

namespace {

struct KeyCase {
  std::string term, name, keys;
  std::vector<std::string> text;
  std::string message;
  int row, column;
};

// By the names of keys, what a terminal sends where an xterm sends something else.
using Differences = std::map<std::string, std::string>;

struct Tables {
  std::vector<KeyCase> keys;
  std::vector<std::pair<std::string, Differences>> keyboards;
};

KeyCase key_case(const std::string& term, const std::string& row) {
  const std::vector<std::string> fields = split_fields(row);
  KeyCase key{term, fields[0], unescape(fields[1]), {}, fields[3], 0, 0};
  std::istringstream lines(fields[2] == "=" ? "/one two/THREE/  last" : fields[2]);
  std::string line;
  for (std::getline(lines, line, '/'); std::getline(lines, line, '/');) key.text.push_back(line);
  std::istringstream(fields[4]) >> key.row >> key.column;
  if (fields[2] == "=" && key.message.empty() && key.row == 0 && key.column == 0) {
    // Nothing is to be seen of such keys: what is typed behind them shows that they have been read.
    key.keys += "~";
    key.text.front().insert(0, "~");
    key.column = 1;
  }
  return key;
}

Tables read_tables() {
  Tables tables;
  std::string term;
  for (const std::string& line : lines_of_file("screen/keyboards.table")) {
    const auto [first, rest] = split_word(line);
    if (line.find(" | ") != std::string::npos) {
      tables.keys.push_back(key_case(term, line));
    } else if (first == "keys") {
      term = rest;
    } else if (first == "keyboard") {
      std::istringstream words(rest);
      words >> tables.keyboards.emplace_back().first;
      for (std::string key, own; std::getline(words >> std::ws, key, '=') >> own;)
        tables.keyboards.back().second[key] = unescape(own);
    }
  }
  return tables;
}

void press_keys(const KeyCase& key) {
  SCOPED_TRACE(key.term + " " + key.name);
  if (!terminal_is_described(key.term)) return;
  TerminalOptions options;
  options.text = "one two\nTHREE\n  last\n";
  options.term = key.term;
  TerminalDriver terminal(options);
  terminal.enter_screen("[EOB]");
  terminal.type(key.keys);
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

TEST(Keyboard, WhatKeysDo) {
  for (const KeyCase& key : read_tables().keys) press_keys(key);
}

TEST(Keyboard, KeysOfEveryTerminal) {
  for (const auto& [term, differences] : read_tables().keyboards) {
    if (!terminal_is_described(term)) continue;
    SCOPED_TRACE(term);
    setenv("TERM", term.c_str(), 1);
    std::string typed;
    for (const auto& [name, bytes, code] : named_keys()) {
      const auto other = differences.find("{" + std::string(name) + "}");
      typed += other != differences.end() ? other->second : bytes;
    }
    std::vector<int> codes;
    {
      const zan::test::TypedAhead ahead(typed + "\177");
      const zan::ScreenVisit visit(false);
      while (visit && codes.size() <= named_keys().size()) codes.push_back(zan::read_key([] {}).value_or(0));
    }
    ASSERT_FALSE(codes.empty());
    for (std::size_t i = 0; i < named_keys().size(); ++i)
      EXPECT_EQ(codes[i], named_keys()[i].code) << named_keys()[i].name;
    EXPECT_TRUE(codes.back() == zan::kDelete || codes.back() == zan::kBackspace);
  }
}
