#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "tests/text/store_play.h"

namespace zan {
namespace {

TEST(LineStore, IsOneEmptyLineAtFirstAndClampsPlaces) {
  LineStore store;
  EXPECT_EQ(store.line_count(), 1u);
  EXPECT_TRUE(store.empty());
  EXPECT_EQ(store.line(0), "");
  EXPECT_EQ(test::walked_lines(store), std::vector<std::string>{""});
  EXPECT_TRUE(test::walked_lines(store, 1).empty());
  EXPECT_EQ(store, LineStore::from_text(""));

  store.insert_text(99, "ab\ncd\n");
  EXPECT_EQ(test::walked_lines(store, 1), (std::vector<std::string>{"cd", ""}));
  EXPECT_EQ(store.line(3), "");
  EXPECT_EQ(store.line_start(3), 6u);
  EXPECT_EQ(store.line_end(99), 6u);
  EXPECT_EQ(store.position_of(99), (Position{2, 0}));
  EXPECT_EQ(store.slice(4, 99), "d\n");
  store.erase(5, 99);
  EXPECT_EQ(store.to_string(), "ab\ncd");
  EXPECT_NE(LineStore::from_text("a\nb"), LineStore::from_line("a\nb"));
}

TEST(LineStore, TypingIsOnePieceAndCopiesKeepTheirText) {
  LineStore store = LineStore::from_text("head tail");
  for (std::uint64_t i = 0; i < 500; ++i) store.insert_bytes(5 + i, "x");
  EXPECT_EQ(store.piece_count(), 3u);
  LineStore other = store;
  store.insert_bytes(505, "mine");
  other.insert_bytes(505, "theirs");
  EXPECT_EQ(store.slice(500, 513), "xxxxxminetail");
  EXPECT_EQ(other.slice(500, 515), "xxxxxtheirstail");
}

TEST(LineStore, NoTextBecomesTooLongToCount) {
  LineStore store = LineStore::from_text(std::string(1024, 'x'));
  const auto double_it = [&] { store.insert(0, LineStore(store)); };
  while (store.byte_count() < kMostTextBytes) double_it();
  EXPECT_THROW(double_it(), std::length_error);
  EXPECT_EQ(store.byte_count(), kMostTextBytes);
}

TEST(LineStore, ScatteredEditsLeaveNoDust) {
  std::mt19937 random(7);
  LineStore store = LineStore::from_text(std::string(50000, 'a'));
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t at = random() % store.byte_count();
    store.insert_bytes(at, "b");
    if (i % 2 == 0) store.erase(random() % store.byte_count(), random() % store.byte_count() % 8);
  }
  EXPECT_LT(store.piece_count(), store.byte_count() / 100);
  store.erase(0, store.byte_count());
  EXPECT_EQ(store.piece_count(), 0u);
}

TEST(LineStoreBuilder, SharesLongStretchesAndGathersShortOnes) {
  LineStore source = LineStore::from_text(std::string(100000, 's'));
  LineStoreBuilder builder;
  builder.append(source, 0, 40000);
  builder.append(source, 40000, 50000); // goes on where the last one ended
  for (int i = 0; i < 300; ++i) {
    builder.append(source, 0, 20);
    builder.append_bytes("z");
  }
  const LineStore built = builder.finish();
  EXPECT_EQ(built.byte_count(), 50000u + 300 * 21);
  EXPECT_LE(built.piece_count(), 6u);
  const TextView shared = built.slice(0, 50000);
  const TextView original = source.slice(0, 1);
  EXPECT_EQ(shared.get().data(), original.get().data());
}

// Rows and columns of a text with far more line feeds than one stretch of the block's index counts.
TEST(LineStore, FindsRowsInLargeBlocks) {
  std::string text(3000000, '\n');
  for (std::size_t i = 0; i < text.size(); i += 7) text[i] = 'x';
  LineStore store;
  store.insert_text(0, text);
  for (std::uint64_t row = 0; row < store.line_count(); row += 99991) {
    const std::uint64_t start = store.line_start(row);
    ASSERT_EQ(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(start), '\n'), row);
    ASSERT_TRUE(start == 0 || text[start - 1] == '\n');
    ASSERT_EQ(store.position_of(start), (Position{row, 0}));
  }
}

} // namespace
} // namespace zan
