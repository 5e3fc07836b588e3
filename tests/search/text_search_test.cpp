#include "search/text_search.h"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "tests/sessions/text_forms.h"

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

} // namespace

TEST(TextSearch, ConstraintsAndEdges) {
  const SearchConstraints begin{true, false, false, {}}, end{false, true, false, {}};
  expect_rows("search/text_search", [&](const Fields& row) -> std::string {
    const SearchConstraints wanted =
        row[2] == "word" ? words() : SearchConstraints{row[2] == "begin", row[2] == "end", false, {}};
    Position start;
    std::istringstream(row[3]) >> start.row >> start.col;
    const auto found = forward(LineStore::from_text(row[0]), Pattern(row[1], true), start, wanted);
    return found ? std::to_string(found->row) + " " + std::to_string(found->col) : "none";
  });
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
      for (const char* source :
           {"needle", "NEEDLE", "n%%dle", "need*e", "[n]eedl[e]", "[n][e][e][d][l][e]"}) {
        const Pattern pattern(source, source[0] != 'N');
        SCOPED_TRACE(std::string(source) + " as " + cut + " after " + std::to_string(size));
        EXPECT_EQ(forward(text, pattern, {0, 0}, {}), text.position_of(offset));
        EXPECT_EQ(zan::search_backward(text, pattern, end, {}, kRunning), text.position_of(offset));
        EXPECT_FALSE(forward(text, pattern, text.position_of(offset + 1), {}));
        const bool is_word = cut[0] == ' ' || before.ends_with('\n');
        const auto bounded = is_word ? std::optional(text.position_of(offset)) : std::nullopt;
        EXPECT_EQ(forward(text, pattern, {0, 0}, words()), bounded);
        EXPECT_EQ(zan::search_backward(text, pattern, end, words(), kRunning), bounded);
      }
    }
  }
}
