#include "files/journal_file.h"

#include <fstream>
#include <gtest/gtest.h>

#include "files/stat.h"
#include "tests/files/scratch_directory.h"

namespace {

using namespace zan::test;
using zan::JournalFile;

TEST(JournalFile, LinesAreAppendedAndNeverJoined) {
  const struct {
    const char* before;
    const char* line;
    const char* after;
  } rows[] = {
      {"(none)", "TYPE 1", "TYPE 1\n"},
      {"", "TYPE 1", "TYPE 1\n"},
      {"FIND x\n", "  TYPE 1\r", "FIND x\n  TYPE 1\r\n"},
      {"FIND", "TYPE 1", "FIND\nTYPE 1\n"},
  };
  for (const auto& row : rows) {
    const ScratchDirectory dir;
    if (row.before != std::string("(none)")) write_file(dir / "j", row.before);
    zan::append_journal_line({dir / "j", false, {}}, row.line);
    EXPECT_EQ(read_file(dir / "j"), row.after) << row.before;
  }
}

TEST(JournalFile, WhatMayStandInItsPlace) {
  const ScratchDirectory dir;
  write_file(dir / "file", "");
  write_file(dir / "target", "");
  std::filesystem::create_symlink("target", dir / "link");
  std::filesystem::create_directory(dir / "dir");
  ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
  const struct {
    const char* name;
    bool named_by_user;
    const char* written_to; // nullptr: not written, replayed or deleted
  } rows[] = {
      {"link", false, nullptr}, {"dir", false, nullptr}, {"pipe", false, nullptr}, {"no/j", false, nullptr},
      {"link", true, "target"}, {"dir", true, nullptr},  {"pipe", true, nullptr},  {"file", true, "file"},
  };
  for (const auto& row : rows) {
    const JournalFile journal{dir / row.name, row.named_by_user, {}};
    const auto names = dir.names();
    zan::append_journal_line(journal, "x");
    EXPECT_EQ(zan::journal_may_be_replayed(journal), row.written_to != nullptr) << row.name;
    if (row.written_to != nullptr) {
      EXPECT_EQ(read_file(dir / row.written_to), "x\n") << row.name;
      continue;
    }
    zan::delete_journal(journal);
    EXPECT_EQ(dir.names(), names) << row.name;
  }
  zan::delete_journal({dir / "file", false, {}});
  EXPECT_FALSE(dir.names().contains("file"));
  EXPECT_FALSE(zan::journal_may_be_replayed({dir / "file", false, {}}));
}

TEST(JournalFile, IsEmptiedFirstWhereItHasNoOtherName) {
  const ScratchDirectory dir;
  for (const char* name : {"alone", "linked"}) {
    write_file(dir / name, "TYPE 1\n");
    if (name == std::string("linked")) std::filesystem::create_hard_link(dir / name, dir / "other");
    std::ifstream held(dir / name);
    zan::delete_journal({dir / name, true, {}});
    EXPECT_EQ(held.get(), name == std::string("alone") ? EOF : 'T') << name;
  }
  EXPECT_EQ(dir.names().contains("linked"), ::geteuid() == 0); // who does not use it at all
}

TEST(JournalFile, OnlyWhatIsTheSameFileIsProtected) {
  const ScratchDirectory dir;
  std::filesystem::create_symlink("loop", dir / "loop");
  for (const std::string& path : {dir / "loop", dir / std::string(300, 'n'), dir / "no/f"})
    EXPECT_TRUE(zan::append_journal_line({dir / "j", false, {path}}, "x")) << path;
  EXPECT_FALSE(zan::append_journal_line(
      {dir / "j", false, {dir / "../" + dir.path().substr(dir.path().rfind('/') + 1) + "/j"}}, "x"));
}

TEST(JournalFile, OfAnotherOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  const ScratchDirectory dir;
  write_file(dir / "j", "DELETE WHOLE\n");
  ASSERT_EQ(::chown((dir / "j").c_str(), 1234, 4321), 0);
  for (const bool named : {false, true}) {
    const JournalFile journal{dir / "j", named, {}};
    zan::append_journal_line(journal, "x");
    EXPECT_EQ(zan::journal_may_be_replayed(journal), named);
    EXPECT_EQ(read_file(dir / "j"), named ? "DELETE WHOLE\nx\n" : "DELETE WHOLE\n");
    zan::delete_journal(journal);
    EXPECT_NE(dir.names().contains("j"), named);
  }
}

TEST(Stat, OnlyRegularFilesExist) {
  const ScratchDirectory dir;
  write_file(dir / "f", "");
  std::filesystem::create_symlink("f", dir / "link");
  std::filesystem::create_symlink("g", dir / "dangling");
  for (const std::string& path : {dir / "f", dir / "link"}) EXPECT_TRUE(zan::file_exists(path)) << path;
  for (const std::string& path : {dir / "dangling", dir / "", dir / "missing", std::string(),
                                  (dir / "f") + std::string(1, '\0'), std::string("/dev/null")})
    EXPECT_FALSE(zan::file_exists(path)) << path;
}

} // namespace
