#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The bytes that a text with the escapes \n \r \t \0 \e \x1b \" \\ stands for. A quote that is not escaped
// ends it; `used`, when given, becomes the place of that quote, or the length of the text.
std::string unescape(std::string_view text, std::size_t* used = nullptr);

// The words between spaces; a word may be quoted, and then holds escapes.
std::vector<std::string> split_arguments(std::string_view text);

// The first word and what follows the space behind it.
std::pair<std::string, std::string> split_word(const std::string& text);

// The lines of a file in tests, such as "hostile/places.txt", but for empty ones and those that begin with "#
// ".
std::vector<std::string> lines_of_file(const std::string& name);

// What stands between the bars of a row of a table, without the blanks around it.
std::vector<std::string> split_fields(const std::string& row);

// The bytes that the fields stand for, by their escapes. A field in double quotes keeps the blanks at its
// ends, and may be empty.
using Fields = std::vector<std::string>;
Fields bytes_of_row(const std::string& row);

// Holds the rows of a table in tests, such as "command/fill": the last field is what `answer` makes of the
// others.
void expect_rows(const std::string& table, const std::function<std::string(const Fields&)>& answer);

// A test that is written as text: after a line "== " and its name, lines up to the next one.
struct Transcript {
  struct Line {
    std::string place; // file:line
    std::string text;
  };
  std::string name; // of letters, digits and underscores, as GoogleTest wants it
  std::vector<Line> lines;

  // Takes the lines from `next` on that begin with "|", without that.
  std::string block(std::size_t& next) const;
};
void PrintTo(const Transcript& transcript, std::ostream* out);

// Those of all files with the extension in a folder of tests.
std::vector<Transcript> read_transcripts(const std::string& folder, const std::string& extension);
