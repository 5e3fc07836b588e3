#include "files/records.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

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
  const struct {
    const char* text; // lines joined by line feeds
    zan::RowStretch rows;
    std::uint64_t length; // 0: variable
    const char* file;
  } rows[] = {
      {"a\nb", kAll, 0, "a\nb\n"},
      {"", kAll, 0, ""},
      {"\n", kAll, 0, "\n\n"},
      {"a\nb\nc", {1, 1}, 0, "b\n"},
      {"a\nb\nc", {1, 9}, 0, "b\nc\n"},
      {"a\nb\nc", {3, 1}, 0, "\n"},
      {"a\t\f\r\xff", kAll, 0, "a\t\f\r\xff\n"},
      {"abcdefghijklmno", kAll, 10, "abcdefghij\nklmno     \n"},
      {"", kAll, 10, "          \n"},
      {"ab\n\nabcd\nabcde", kAll, 2, "ab\n  \nab\ncd\nab\ncd\ne \n"},
      {"a\nb", {2, 1}, 10, "\n"},
      {"a\nb", {1, 1}, 3, "b  \n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(file_of(zan::LineStore::from_text(row.text), row.rows, row.length), row.file)
        << row.text << ", " << row.rows.first << "+" << row.rows.count << ", length " << row.length;
  }
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
