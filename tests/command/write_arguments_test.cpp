#include "command/write_arguments.h"

#include <gtest/gtest.h>

TEST(WriteArguments, FileRangeAndBuffer) {
  struct Row {
    std::string_view arg;
    zan::WriteArguments expected; // file, buffer, range
  };
  const Row rows[] = {
      {"", {"", "", ""}},
      {"\"\" 1:2", {"", "", "1:2"}},
      {" copy ", {"copy", "", ""}},
      {"\"copy\" 1 THRU 2", {"copy", "", "1 THRU 2"}},
      {"\"two words\"", {"\"two", "", "words\""}},
      {"copy buffer Notes", {"copy", "Notes", ""}},
      {"copy 1:2 BUFFER notes", {"copy", "notes", "1:2"}},
      {"copy BUFFER  notes\t1:2 ", {"copy", "notes", "1:2"}},
      {"copy 1  BUFFER notes  THRU 2", {"copy", "notes", "1 THRU 2"}},
      {"copy 1BUFFER notes", {"copy", "notes", "1"}},
      {"copy BUFFER a BUFFER b", {"copy", "a", "BUFFER b"}},
      {"copy BUFFER", {"copy", "", "BUFFER"}},
      {"BUFFER notes", {"BUFFER", "", "notes"}},
  };
  for (const Row& row : rows) {
    const zan::WriteArguments wanted = zan::parse_write_arguments(row.arg);
    EXPECT_TRUE(wanted == row.expected)
        << row.arg << ": " << wanted.file << "|" << wanted.buffer << "|" << wanted.range;
  }
}
