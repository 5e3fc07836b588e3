#include "files/journal_file.h"

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

TEST(JournalFile, IsCreatedForItsOwnerOnly) {
  const ScratchDirectory dir;
  const mode_t old_mask = ::umask(0);
  zan::append_journal_line({dir / "j", false, {}}, "x");
  ::umask(old_mask);
  EXPECT_EQ(stat_of(dir / "j").st_mode & 07777, 0600U);
  zan::append_journal_line({dir / "no/j", false, {}}, "x"); // silently
  zan::append_journal_line({"", true, {}}, "x");
  EXPECT_EQ(dir.names(), std::set<std::string>{"j"});
}

TEST(JournalFile, WhatMayStandInItsPlace) {
  const ScratchDirectory dir;
  write_file(dir / "file", "");
  write_file(dir / "target", "");
  std::filesystem::create_symlink("target", dir / "link");
  std::filesystem::create_symlink("made", dir / "dangling");
  std::filesystem::create_directory(dir / "dir");
  ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
  const struct {
    const char* name;
    bool named_by_user;
    const char* written_to; // nullptr: not written, replayed or deleted
  } rows[] = {
      {"file", false, "file"},  {"link", false, nullptr},   {"dangling", false, nullptr},
      {"dir", false, nullptr},  {"pipe", false, nullptr},   {"file", true, "file"},
      {"link", true, "target"}, {"dangling", true, "made"}, {"dir", true, nullptr},
      {"pipe", true, nullptr},
  };
  for (const auto& row : rows) {
    const JournalFile journal{dir / row.name, row.named_by_user, {}};
    const auto names = dir.names();
    zan::append_journal_line(journal, "x");
    EXPECT_EQ(zan::journal_may_be_replayed(journal), row.written_to != nullptr) << row.name;
    if (row.written_to != nullptr) {
      EXPECT_EQ(read_file(dir / row.written_to), "x\n") << row.name;
      write_file(dir / row.written_to, "");
    } else {
      zan::delete_journal(journal);
      EXPECT_EQ(dir.names(), names) << row.name;
      EXPECT_EQ(read_file(dir / "target"), "");
    }
  }
  zan::delete_journal({dir / "file", false, {}});
  EXPECT_FALSE(dir.names().contains("file"));
  EXPECT_FALSE(zan::journal_may_be_replayed({dir / "file", false, {}}));
}

TEST(JournalFile, OfAnotherOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  const ScratchDirectory dir;
  write_file(dir / "j", "DELETE WHOLE\n");
  ASSERT_EQ(::chown((dir / "j").c_str(), 1234, 4321), 0);
  const JournalFile made_up{dir / "j", false, {}};
  zan::append_journal_line(made_up, "x");
  zan::delete_journal(made_up);
  EXPECT_FALSE(zan::journal_may_be_replayed(made_up));
  EXPECT_EQ(read_file(dir / "j"), "DELETE WHOLE\n");
  const JournalFile named{dir / "j", true, {}};
  zan::append_journal_line(named, "x");
  EXPECT_TRUE(zan::journal_may_be_replayed(named));
  EXPECT_EQ(read_file(dir / "j"), "DELETE WHOLE\nx\n");
}

TEST(JournalFile, IsNoFileOfTheEditor) {
  const ScratchDirectory dir;
  write_file(dir / "text", "text\n");
  std::filesystem::create_hard_link(dir / "text", dir / "other-name");
  const JournalFile journal{dir / "other-name", true, {"", dir / "missing", dir / "text"}};
  zan::append_journal_line(journal, "x");
  zan::delete_journal(journal);
  EXPECT_EQ(read_file(dir / "other-name"), "text\n");
  const JournalFile output{dir / "./out", false, {dir / "out"}}; // does not exist yet
  zan::append_journal_line(output, "x");
  EXPECT_EQ(dir.names(), (std::set<std::string>{"text", "other-name"}));
}

TEST(Stat, OnlyRegularFilesExist) {
  const ScratchDirectory dir;
  write_file(dir / "f", "");
  std::filesystem::create_symlink("f", dir / "link");
  std::filesystem::create_symlink("g", dir / "dangling");
  const std::pair<std::string, bool> rows[] = {
      {dir / "f", true},
      {dir / "link", true},
      {dir / "dangling", false},
      {dir / "", false},
      {dir / "missing", false},
      {"", false},
      {(dir / "f") + std::string(1, '\0'), false},
      {"/dev/null", false},
  };
  for (const auto& [path, exists] : rows) EXPECT_EQ(zan::file_exists(path), exists) << path;
}

} // namespace
