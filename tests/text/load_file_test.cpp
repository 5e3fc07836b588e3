#include "text/load_file.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/files/scratch_directory.h"
#include "tests/sessions/text_forms.h"

namespace zan {
namespace {

using namespace test;

std::string without_line_ends(const std::string& bytes) {
  std::string result;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool ends = i + 1 == bytes.size() || bytes[i + 1] == '\n';
    if (bytes[i] != '\r' || !ends) result += bytes[i];
  }
  if (bytes.ends_with('\n')) result.pop_back();
  return result;
}

TEST(LoadFile, SplitsIntoLines) {
  const ScratchDirectory dir;
  expect_rows("text/load_file", [&](const Fields& row) {
    write_file(dir / "text", row[0]);
    EXPECT_EQ(read_whole_file(dir / "text"), row[0]);
    const auto loaded = load_file(dir / "text").value_or(LoadedText());
    const std::string text = loaded.lines.to_string();
    EXPECT_EQ(loaded.lines.may_hold_returns(), text.find('\r') != std::string::npos) << row[0];
    return text + (loaded.final_newline ? ", ended" : ", not ended");
  });
}

// Line ends across the borders of reads, 256 KiB of a file and 64 KiB of a pipe, for every place in CR CR LF.
// A pipe tells no size: its text lies in several blocks, and may end or have a line end just between two.
TEST(LoadFile, TakesReturnsAtTheBordersOfReads) {
  const ScratchDirectory dir;
  ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
  for (const std::size_t size : {1u, 65535u, 65536u, 65537u, 131072u, 262141u, 262142u, 262143u, 262144u}) {
    for (const std::string end : {"\n", "\r\nb", "\r\r\n\n", "\r"}) {
      std::string bytes;
      while (bytes.size() < size) bytes += "line\r\n";
      bytes.resize(size, 'z');
      bytes += end;
      for (const std::string& path : {dir / "text", dir / "pipe"}) {
        std::thread writer([&] { write_file(path, bytes); });
        if (path == dir / "text") writer.join();
        const auto loaded = load_file(path);
        if (writer.joinable()) writer.join();
        ASSERT_TRUE(loaded);
        ASSERT_TRUE(loaded->lines.to_string() == without_line_ends(bytes)) << size << end;
        ASSERT_EQ(loaded->final_newline, end.ends_with('\n'));
        EXPECT_EQ(loaded->lines.line_start(loaded->lines.line_count()), loaded->lines.byte_count());
      }
    }
  }
}

TEST(LoadFile, FailsWithoutAFileToRead) {
  const ScratchDirectory dir;
  write_file(dir / "locked", "secret\n");
  ASSERT_EQ(chmod((dir / "locked").c_str(), 0), 0);
  for (const std::string& name : {dir / "missing", dir / "missing/text", dir.path(), std::string()}) {
    EXPECT_FALSE(load_file(name)) << name;
    EXPECT_FALSE(read_whole_file(name)) << name;
  }
  EXPECT_EQ(load_file(dir / "locked").has_value(), geteuid() == 0); // who may read anything
}

} // namespace
} // namespace zan
