#include "text/load_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace zan {
namespace {

namespace fs = std::filesystem;

class LoadFile : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "load_file_XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    directory_ = name;
  }
  void TearDown() override { fs::remove_all(directory_); }

  std::string path(const std::string& name = "text") const { return (directory_ / name).string(); }
  static void write(const std::string& to, const std::string& bytes) {
    std::ofstream(to, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

  fs::path directory_;
};

std::string without_line_ends(const std::string& bytes) {
  std::string result;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool ends = i + 1 == bytes.size() || bytes[i + 1] == '\n';
    if (bytes[i] != '\r' || !ends) result += bytes[i];
  }
  if (bytes.ends_with('\n')) result.pop_back();
  return result;
}

TEST_F(LoadFile, SplitsIntoLines) {
  const struct {
    std::string bytes, text;
    bool final_newline;
  } kCases[] = {
      {"", "", true},
      {"\n", "", true},
      {"\n\n", "\n", true},
      {"a\nb\n", "a\nb", true},
      {"a\nb", "a\nb", false},
      {"a\r\nb\r\n", "a\nb", true},
      {"a\r\nb\r", "a\nb", false},
      {"x\r\r\n", "x\r", true},
      {"x\r\r", "x\r", false},
      {"\r", "", false},
      {"\r\n", "", true},
      {"\r\r\n\r", "\r\n", false},
      {"a\rb\n\rc", "a\rb\n\rc", false},
      {std::string("\0\xff\n\0", 4), std::string("\0\xff\n\0", 4), false},
  };
  for (const auto& row : kCases) {
    write(path(), row.bytes);
    const auto loaded = load_file(path());
    ASSERT_TRUE(loaded) << testing::PrintToString(row.bytes);
    EXPECT_EQ(loaded->lines.to_string(), row.text) << testing::PrintToString(row.bytes);
    EXPECT_EQ(loaded->final_newline, row.final_newline) << testing::PrintToString(row.bytes);
    EXPECT_EQ(loaded->lines.may_hold_returns(), row.text.find('\r') != std::string::npos);
    EXPECT_EQ(read_whole_file(path()), row.bytes);
  }
}

// Line ends across the borders of reads (256 KiB), for every alignment of CR CR LF to them.
TEST_F(LoadFile, TakesReturnsAtTheBorderOfReads) {
  for (std::size_t shift = 0; shift < 4; ++shift) {
    std::string bytes(256 * 1024 - shift, 'x');
    bytes += "\r\r\n";
    bytes += std::string(256 * 1024 - 4, 'y') + "\r\n\r";
    write(path(), bytes);
    const auto loaded = load_file(path());
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(loaded->lines.to_string() == without_line_ends(bytes)) << shift;
    EXPECT_EQ(loaded->lines.line_count(), 3u);
    EXPECT_EQ(loaded->lines.line_start(2), loaded->lines.byte_count());
  }
}

// A pipe tells no size: its text lies in several blocks, and may end or have a line end just between two.
TEST_F(LoadFile, ReadsPipes) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  for (const std::size_t size : {1u, 65535u, 65536u, 65537u, 131072u, 700000u}) {
    for (const std::string end : {"\n", "\r\nb", "\r\r\n\n", "\r"}) {
      std::string bytes;
      while (bytes.size() < size) bytes += "line\r\n";
      bytes.resize(size, 'z');
      bytes += end;
      std::thread writer([&] { write(path("pipe"), bytes); });
      const auto loaded = load_file(path("pipe"));
      writer.join();
      ASSERT_TRUE(loaded);
      ASSERT_TRUE(loaded->lines.to_string() == without_line_ends(bytes)) << size << end;
      ASSERT_EQ(loaded->final_newline, end.ends_with('\n'));
    }
  }
}

TEST_F(LoadFile, FailsWithoutAFileToRead) {
  write(path("locked"), "secret\n");
  fs::permissions(path("locked"), fs::perms::none);
  for (const std::string& name :
       {path("missing"), path("missing/text"), directory_.string(), std::string()}) {
    EXPECT_FALSE(load_file(name)) << name;
    EXPECT_FALSE(read_whole_file(name)) << name;
  }
  const bool root = geteuid() == 0; // may read anything
  EXPECT_EQ(load_file(path("locked")).has_value(), root);
}

} // namespace
} // namespace zan
