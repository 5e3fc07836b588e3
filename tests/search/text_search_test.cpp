#include "search/text_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>

using zan::LineStore;
using zan::Pattern;
using zan::Position;
using zan::SearchConstraints;

namespace {

constexpr std::sig_atomic_t kRunning = 0;

SearchConstraints words() {
  SearchConstraints wanted{false, false, true, {}};
  wanted.delimiters[' '] = wanted.delimiters['.'] = true;
  return wanted;
}

std::optional<Position> forward(const LineStore& text, const Pattern& pattern, Position start,
                                const SearchConstraints& wanted) {
  return zan::search_forward(text, pattern, start, wanted, kRunning);
}

// The same, line by line and one attempt after the other.
std::optional<Position> slow_forward(const LineStore& text, const Pattern& pattern, Position at,
                                     const SearchConstraints& wanted) {
  for (; at.row < text.line_count(); at = {at.row + 1, 0}) {
    const std::string line(text.line(at.row).get());
    while (const auto col = pattern.find_forward(line, at.col)) {
      const std::size_t length = pattern.match_length(line, *col);
      if (zan::constraints_ok(line, *col, length, wanted)) return Position{at.row, *col};
      at.col = *col + std::max<std::size_t>(length, 1);
    }
  }
  return std::nullopt;
}

std::optional<Position> slow_backward(const LineStore& text, const Pattern& pattern, Position at,
                                      const SearchConstraints& wanted) {
  at.row = std::min(at.row, text.line_count() - 1);
  for (;; at = {at.row - 1, text.line_length(at.row - 1)}) {
    const std::string line(text.line(at.row).get());
    std::optional<std::size_t> limit = std::min<std::size_t>(at.col, line.size());
    while (limit) {
      const auto col = pattern.find_backward(line, *limit);
      if (!col) break;
      if (zan::constraints_ok(line, *col, pattern.match_length(line, *col), wanted))
        return Position{at.row, *col};
      limit = *col == 0 ? std::nullopt : std::optional(pattern.is_wildcard() ? *col - 1 : *col);
    }
    if (at.row == 0) return std::nullopt;
  }
}

// A text of many pieces, with line feeds inside some lines.
LineStore in_pieces(std::mt19937& random) {
  const std::string_view bytes = "aab. \n";
  LineStore text;
  for (int i = 0; i < 40; ++i) {
    std::string part(random() % 150, ' ');
    for (char& c : part) c = bytes[random() % bytes.size()];
    const std::uint64_t at = random() % (text.byte_count() + 1);
    if (random() % 4 == 0) text.insert_bytes(at, part.substr(0, 9));
    else text.insert_text(at, part);
  }
  return text;
}

} // namespace

TEST(TextSearch, ConstraintsAndEdges) {
  struct Row {
    const char* text;
    const char* pattern;
    SearchConstraints wanted;
    Position start;
    std::optional<Position> found;
  };
  const SearchConstraints begin{true, false, false, {}}, end{false, true, false, {}};
  const Row rows[] = {
      {"concatenate\na cat.", "cat", words(), {0, 0}, Position{1, 2}},
      {"cat cat", "cat", begin, {0, 1}, std::nullopt},
      {"cat cat", "cat", end, {0, 0}, Position{0, 4}},
      {"baa", "a*", end, {0, 0}, Position{0, 2}},
      {"abc\nab", "*", words(), {0, 0}, std::nullopt},
      {"ab\ncd", "$", {}, {0, 3}, Position{1, 2}},
      {"ab\nab", "^", {}, {0, 1}, Position{1, 0}},
      {"ab\nab", "ab", {}, {0, 9}, Position{1, 0}},
      {"ab", "", {}, {0, 0}, std::nullopt},
      {"ab", "a", {}, {5, 0}, std::nullopt},
  };
  for (const Row& row : rows)
    EXPECT_EQ(forward(LineStore::from_text(row.text), Pattern(row.pattern, true), row.start, row.wanted),
              row.found)
        << row.pattern << " in " << row.text;
  const LineStore text = LineStore::from_text("xab");
  EXPECT_FALSE(zan::search_backward(text, Pattern("a%", true), {0, 3}, words(), kRunning));
  const LineStore broken = LineStore::from_line("a\nb");
  EXPECT_EQ(forward(broken, Pattern("a\nb", true), {0, 0}, {}), (Position{0, 0}));
  EXPECT_EQ(forward(broken, Pattern("a%b", true), {0, 0}, {}), (Position{0, 0}));
  EXPECT_FALSE(forward(LineStore::from_text("a\nb"), Pattern("a\nb", true), {0, 0}, {}));
  const std::string filler(5000, '-');
  const LineStore one_line = LineStore::from_line(filler + "\ncat\n" + filler);
  EXPECT_FALSE(forward(one_line, Pattern("cat", true), {0, 0}, begin));
  EXPECT_FALSE(forward(one_line, Pattern("cat", true), {0, 0}, end));
  EXPECT_FALSE(forward(one_line, Pattern("c%t$", true), {0, 0}, {}));
}

TEST(TextSearch, AgreesWithTheSearchOfEachLine) {
  std::mt19937 random(5);
  const char* patterns[] = {"a",   "ab",    "aab",    "abab.a", "A", "bAa ", "a*b",
                            "a%.", "[ab] ", "b*[A.]", "$",      "*", "^a",   "a\nb"};
  for (int round = 0; round < 4; ++round) {
    const LineStore text = in_pieces(random);
    for (const char* source : patterns) {
      const Pattern pattern(source, random() % 2 == 0);
      SearchConstraints wanted = random() % 2 == 0 ? SearchConstraints{} : words();
      wanted.begin = random() % 5 == 0;
      wanted.end = !wanted.begin && random() % 5 == 0;
      for (int i = 0; i < 8; ++i) {
        const Position start{random() % (text.line_count() + 1), random() % 30};
        ASSERT_EQ(forward(text, pattern, start, wanted), slow_forward(text, pattern, start, wanted))
            << source;
        ASSERT_EQ(zan::search_backward(text, pattern, start, wanted, kRunning),
                  slow_backward(text, pattern, start, wanted))
            << source;
      }
    }
  }
}

// Large pieces are searched where they lie; a match may lie across their borders, with small pieces between.
TEST(TextSearch, FindsMatchesAcrossPiecesOfAllSizes) {
  const std::string filler = [] {
    std::string made;
    for (int i = 0; i < 3000; ++i) made += i % 20 == 19 ? '\n' : '-';
    return made;
  }();
  const auto piece = [](std::string_view text) { return LineStore::from_text(text); };
  for (const std::size_t size : {std::size_t{1}, std::size_t{10}, std::size_t{4000}, std::size_t{9000}}) {
    const std::string before = (filler + filler + filler).substr(0, size);
    const std::string after(before.rbegin(), before.rend());
    for (const char* cut : {"needle", "need/le", "n/eedle", "n/e/e/d/l/e", " n/ee/dl/e ", "/needle/"}) {
      LineStore text;
      std::string part = before + "\n" + before;
      for (const char c : cut + after + "/") {
        part += c == '/' ? "" : std::string(1, c);
        if (c == '/') text.insert(text.byte_count(), piece(std::exchange(part, "")));
      }
      const std::uint64_t offset = text.to_string().find("needle");
      const Position end = text.position_of(text.byte_count());
      const SearchConstraints wanted = words();
      for (const char* source :
           {"needle", "NEEDLE", "n%%dle", "need*e", "[n]eedl[e]", "[n][e][e][d][l][e]"}) {
        const Pattern pattern(source, source[0] != 'N');
        SCOPED_TRACE(std::string(source) + " as " + cut + " after " + std::to_string(size));
        EXPECT_EQ(forward(text, pattern, {0, 0}, {}), text.position_of(offset));
        EXPECT_EQ(zan::search_backward(text, pattern, end, {}, kRunning), text.position_of(offset));
        EXPECT_FALSE(forward(text, pattern, text.position_of(offset + 1), {}));
        const auto bounded = slow_forward(text, pattern, {0, 0}, wanted);
        EXPECT_EQ(forward(text, pattern, {0, 0}, wanted), bounded);
        EXPECT_EQ(zan::search_backward(text, pattern, end, wanted, kRunning), bounded);
      }
    }
  }
}
