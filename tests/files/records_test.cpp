#include "files/records.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "tests/sessions/text_forms.h"

namespace {

std::string file_of(const zan::LineStore& text, zan::RowStretch rows, std::uint64_t length) {
  std::string bytes;
  const bool done = zan::each_file_piece(text, rows, length, [&](std::string_view piece) {
    bytes += piece;
    return true;
  });
  EXPECT_TRUE(done);
  return bytes;
}

constexpr zan::RowStretch kAll{0, std::numeric_limits<std::uint64_t>::max()};

TEST(Records, BytesOfTheFile) {
  expect_rows("files/records", [](const Fields& row) {
    const auto& [text, rows, length] = std::tie(row[0], row[1], row[2]);
    const zan::RowStretch stretch =
        rows == "all" ? kAll : zan::RowStretch{std::stoull(rows), std::stoull(rows.substr(2))};
    return file_of(zan::LineStore::from_text(text), stretch, std::stoull(length));
  });
}

TEST(Records, LineInSeveralPiecesAndWithALineFeedInside) {
  zan::LineStore text = zan::LineStore::from_text("abef\nxy");
  text.insert_bytes(2, std::string_view("c\n\0d", 4));
  EXPECT_EQ(file_of(text, kAll, 0), std::string("abc\n\0def\nxy\n", 12));
  EXPECT_EQ(file_of(text, kAll, 3), std::string("abc\n\n\0d\nef \nxy \n", 16));
}

TEST(Records, LongRecordIsPaddedInSmallPieces) {
  std::uint64_t size = 0;
  std::size_t longest = 0;
  const auto sink = [&](std::string_view piece) {
    longest = std::max(longest, piece.size());
    return (size += piece.size()) < 100000;
  };
  EXPECT_FALSE(zan::each_file_piece(zan::LineStore::from_text("x\ny"), kAll, 2147483647, sink));
  EXPECT_LT(size, 101000U); // stops when the sink does
  EXPECT_LE(longest, 4096U);
}

TEST(Records, PaddingOfEveryLength) {
  for (std::size_t length = 1; length < 300; ++length) {
    std::string record = "x\n";
    record.insert(1, length - 1, ' ');
    EXPECT_EQ(file_of(zan::LineStore::from_text("x"), kAll, length), record);
  }
}

TEST(Records, LengthFromTheSettings) {
  EXPECT_EQ(zan::effective_record_length(true, 2147483647), 2147483647U);
  EXPECT_EQ(zan::effective_record_length(true, -5), 0U);
  EXPECT_EQ(zan::effective_record_length(false, 80), 0U);
}

} // namespace
