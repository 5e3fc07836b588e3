#include "files/safe_save.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#if defined(__linux__)
#include <sys/xattr.h>
#endif

#include "files/output_file.h"
#include "tests/files/scratch_directory.h"

namespace {

using namespace zan::test;
using Names = std::set<std::string>;
using zan::SaveMode;
using zan::SaveResult;

const std::string kLong(600000, 'n'); // more than one block of the writer

zan::ByteSource source_of(const std::string& bytes) {
  return [bytes](zan::BlockWriter& out) { return out.put(bytes); };
}

SaveResult save(const std::string& path, const std::string& bytes, SaveMode mode = SaveMode::replace) {
  return zan::save_file(path, source_of(bytes), mode);
}

TEST(SafeSave, NewAndOldFile) {
  const ScratchDirectory dir;
  const mode_t old_mask = ::umask(027);
  EXPECT_EQ(save(dir / "f", kLong), SaveResult::saved);
  ::umask(old_mask);
  EXPECT_EQ(stat_of(dir / "f").st_mode & 07777, 0640U);
  EXPECT_EQ(read_file(dir / "f"), kLong);
  for (const std::string& text : {std::string("short\n"), std::string(), kLong + "x"}) {
    EXPECT_EQ(save(dir / "f", text), SaveResult::saved);
    EXPECT_EQ(read_file(dir / "f"), text);
  }
  const std::string longest_name(255, 'q');
  EXPECT_EQ(save(dir / longest_name, "x"), SaveResult::saved);
  EXPECT_EQ(dir.names(), (Names{"f", longest_name}));
}

TEST(SafeSave, LinksAreFollowedAndStay) {
  const ScratchDirectory dir;
  std::filesystem::create_directory(dir / "sub");
  write_file(dir / "sub/file", "old");
  const struct {
    const char* link;
    const char* to;
    const char* file; // what the text is found in; "": the save fails
  } rows[] = {
      {"one", "sub/file", "sub/file"},
      {"sub/two", "../one", "sub/file"},
      {"three", "sub/two", "sub/file"},
      {"dangling", "sub/new", "sub/new"},
      {"loop", "loop", ""},
      {"nowhere", "missing/file", ""},
      {"dir", "sub", ""},
  };
  for (const auto& row : rows) {
    std::filesystem::create_symlink(row.to, dir / row.link);
    const std::string text = std::string("by ") + row.link;
    EXPECT_EQ(save(dir / row.link, text), *row.file != 0 ? SaveResult::saved : SaveResult::failed)
        << row.link;
    if (*row.file != 0) {
      EXPECT_EQ(read_file(dir / row.file), text) << row.link;
    }
    EXPECT_EQ(std::filesystem::read_symlink(dir / row.link), row.to);
  }
  EXPECT_EQ(dir.names(), (Names{"sub", "one", "three", "dangling", "loop", "nowhere", "dir"}));
  const std::string absolute = dir / "absolute";
  std::filesystem::create_symlink(dir / "one", absolute);
  EXPECT_EQ(save(absolute, "abs"), SaveResult::saved);
  EXPECT_EQ(read_file(dir / "sub/file"), "abs");
}

TEST(SafeSave, HardLinksStayTogether) {
  const ScratchDirectory dir;
  write_file(dir / "a", "old text");
  std::filesystem::create_hard_link(dir / "a", dir / "b");
  ASSERT_EQ(::chmod((dir / "a").c_str(), 04755), 0);
  const auto inode = stat_of(dir / "a").st_ino;
  for (const std::string& text : {kLong, std::string("tiny"), std::string()}) {
    EXPECT_EQ(save(dir / "a", text), SaveResult::saved);
    EXPECT_EQ(read_file(dir / "b"), text);
  }
  EXPECT_EQ(stat_of(dir / "a").st_ino, inode);
  EXPECT_EQ(stat_of(dir / "a").st_mode & 07777, 04755U);
  EXPECT_EQ(dir.names(), (Names{"a", "b"}));
}

TEST(SafeSave, ModeOwnerAndAttributesStay) {
  const ScratchDirectory dir;
  const std::string path = dir / "f";
  write_file(path, "old");
  const bool root = ::geteuid() == 0;
  if (root) {
    ASSERT_EQ(::chown(path.c_str(), 1234, 4321), 0);
  }
#if defined(__linux__)
  const bool has_attribute = ::setxattr(path.c_str(), "user.note", "hello", 5, 0) == 0;
#endif
  for (const mode_t mode : {0600U, 0640U, 0666U, 02750U, 04755U}) {
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    EXPECT_EQ(save(path, "new"), SaveResult::saved);
    EXPECT_EQ(stat_of(path).st_mode & 07777, mode);
  }
  if (root) {
    EXPECT_EQ(stat_of(path).st_uid, 1234U);
    EXPECT_EQ(stat_of(path).st_gid, 4321U);
  }
#if defined(__linux__)
  char value[5] = {};
  if (has_attribute) {
    EXPECT_EQ(::getxattr(path.c_str(), "user.note", value, 5), 5);
    EXPECT_EQ(std::string(value, 5), "hello");
  }
#endif
  EXPECT_EQ(dir.names(), Names{"f"});
}

TEST(SafeSave, WhatCannotBeWritten) {
  const ScratchDirectory dir;
  std::filesystem::create_directory(dir / "sub");
  write_file(dir / "locked", "old");
  ASSERT_EQ(::chmod((dir / "locked").c_str(), 0444), 0);
  ASSERT_EQ(::chmod(dir.path().c_str(), 0777), 0);
  const Unprivileged guard;
  for (const std::string& path : {std::string(), dir / "sub", dir / "no/file", dir / "file/", dir / "locked",
                                  dir / std::string("x\0y", 3), dir / std::string(256, 'q')}) {
    EXPECT_EQ(save(path, "new"), SaveResult::failed) << path;
  }
  EXPECT_EQ(read_file(dir / "locked"), "old");
  EXPECT_EQ(dir.names(), (Names{"sub", "locked"}));
}

// What the stream writes next must land in the same file.
TEST(SafeSave, FileOfAStandardStreamIsNotReplaced) {
  const ScratchDirectory dir;
  write_file(dir / "f", "old");
  const auto inode = stat_of(dir / "f").st_ino;
  const int old_input = ::dup(STDIN_FILENO);
  const int file = ::open((dir / "f").c_str(), O_RDONLY);
  ASSERT_GE(::dup2(file, STDIN_FILENO), 0);
  EXPECT_EQ(save("/dev/stdin", "new"), SaveResult::saved);
  ::dup2(old_input, STDIN_FILENO);
  ::close(old_input);
  ::close(file);
  EXPECT_EQ(read_file(dir / "f"), "new");
  EXPECT_EQ(stat_of(dir / "f").st_ino, inode);
  EXPECT_EQ(dir.names(), Names{"f"});
}

TEST(SafeSave, DevicesAndPipesAreJustWritten) {
  const ScratchDirectory dir;
  EXPECT_EQ(save("/dev/null", kLong), SaveResult::saved);
  EXPECT_TRUE(S_ISCHR(stat_of("/dev/null").st_mode));
#if defined(__linux__)
  EXPECT_EQ(save("/dev/full", "x"), SaveResult::failed);
#endif
  ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
  const int reader = ::open((dir / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(save(dir / "pipe", "through the pipe"), SaveResult::saved);
  char bytes[100];
  EXPECT_EQ(::read(reader, bytes, sizeof bytes), 16);
  EXPECT_EQ(::close(reader), 0);
  EXPECT_EQ(dir.names(), Names{"pipe"});
}

TEST(SafeSave, InPlaceWhereNothingCanBeRenamed) {
  const ScratchDirectory dir;
  const ScratchDirectory spare;
  write_file(dir / "f", kLong);
  ASSERT_EQ(::chmod((dir / "f").c_str(), 0666), 0);
  const auto inode = stat_of(dir / "f").st_ino;
  ::setenv("TMPDIR", spare.path().c_str(), 1);
  ASSERT_EQ(::chmod(spare.path().c_str(), 0777), 0);
  for (const mode_t mode : {0555U, 01777U}) { // unwritable; sticky, where root's file may not be replaced
    ASSERT_EQ(::chmod(dir.path().c_str(), mode), 0);
    const Unprivileged guard;
    EXPECT_EQ(save(dir / "f", "new\n"), SaveResult::saved);
    if (mode == 0555) {
      EXPECT_EQ(save(dir / "g", "new\n"), SaveResult::failed);
    }
    EXPECT_EQ(read_file(dir / "f"), "new\n");
  }
  ::unsetenv("TMPDIR");
  if (::geteuid() == 0) {
    EXPECT_EQ(stat_of(dir / "f").st_ino, inode);
  }
  EXPECT_EQ(stat_of(dir / "f").st_uid, ::geteuid());
  EXPECT_EQ(dir.names(), Names{"f"});
  EXPECT_EQ(spare.names(), Names{});
}

TEST(SafeSave, TheCopyStaysWhenOverwritingFailsHalfway) {
  const ScratchDirectory dir;
  write_file(dir / "a", "old");
  std::filesystem::create_hard_link(dir / "a", dir / "b");
  for (const std::size_t reached : {std::size_t{10}, kLong.size() - 10}) {
    int walks = 0;
    const auto failing = [&](zan::BlockWriter& out) {
      return ++walks == 1 ? out.put(kLong) : out.put(kLong.substr(0, reached)) && false;
    };
    EXPECT_EQ(zan::save_file(dir / "a", failing, SaveMode::replace), SaveResult::failed);
    if (reached == 10) {
      EXPECT_EQ(read_file(dir / "b"), "old"); // no byte had been written yet
      EXPECT_EQ(dir.names(), (Names{"a", "b"}));
    }
  }
  ASSERT_EQ(dir.names().size(), 3U);
  const std::string copy = *dir.names().begin();
  EXPECT_EQ(copy.substr(0, 7), ".a.zan-");
  EXPECT_EQ(read_file(dir / copy), kLong);
  EXPECT_EQ(stat_of(dir / copy).st_mode & 07777, 0600U);
}

// Saves onto a new file, an old one and one with two links, none of which has room for the text.
void expect_nothing_is_lost(const std::string& dir) {
  EXPECT_EQ(save(dir + "/new", kLong), SaveResult::failed);
  EXPECT_EQ(save(dir + "/new;1", kLong, SaveMode::create_exclusively), SaveResult::failed);
  for (const char* name : {"/old", "/a"}) {
    EXPECT_EQ(save(dir + name, kLong), SaveResult::failed) << name;
    EXPECT_EQ(read_file(dir + name), "old") << name;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 3);
}

void make_old_files(const std::string& dir) {
  write_file(dir + "/old", "old");
  write_file(dir + "/a", "old");
  std::filesystem::create_hard_link(dir + "/a", dir + "/b");
}

TEST(SafeSave, FileSizeLimit) {
  const ScratchDirectory dir;
  make_old_files(dir.path());
  const auto old_action = std::signal(SIGXFSZ, SIG_IGN);
  struct rlimit old_limit {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old_limit), 0);
  const struct rlimit limit { 300000, old_limit.rlim_max };
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  expect_nothing_is_lost(dir.path());
  EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &old_limit), 0);
  std::signal(SIGXFSZ, old_action);
}

TEST(SafeSave, NewVersionOverwritesNothing) {
  const ScratchDirectory dir;
  EXPECT_EQ(save(dir / "f;1", "one", SaveMode::create_exclusively), SaveResult::saved);
  EXPECT_EQ(save(dir / "f;1", "two", SaveMode::create_exclusively), SaveResult::exists);
  const auto racing = [&](const std::string& name) { // somebody else saves while this text is being written
    return [&dir, name](zan::BlockWriter& out) {
      if (read_file(dir / name) == "(none)") write_file(dir / name, "theirs");
      return out.put("ours");
    };
  };
  EXPECT_EQ(zan::save_file(dir / "f;2", racing("f;2"), SaveMode::create_exclusively), SaveResult::exists);
  EXPECT_EQ(zan::save_file(dir / "g", racing("g"), SaveMode::replace), SaveResult::saved);
  EXPECT_EQ(read_file(dir / "g"), "ours");
  std::string path = dir / "f;3";
  EXPECT_TRUE(zan::save_output(path, racing("f;3")));
  EXPECT_EQ(path, dir / "f;4");
  EXPECT_EQ(read_file(dir / "f;1") + read_file(dir / "f;2") + read_file(dir / "f;3"), "onetheirstheirs");
  EXPECT_EQ(read_file(dir / "f;4"), "ours");
}

TEST(SafeSave, VersionNamesThatAreNoFreeNames) {
  const ScratchDirectory dir;
  std::filesystem::create_symlink("target", dir / "f;1");
  std::string path = dir / "f;1";
  EXPECT_TRUE(zan::save_output(path, source_of("through")));
  EXPECT_EQ(path + read_file(dir / "target"), (dir / "f;1") + "through");
  std::filesystem::create_directory(dir / "f;2");
  path = dir / "f;2";
  EXPECT_FALSE(zan::save_output(path, source_of("x")));
  EXPECT_EQ(dir.names(), (Names{"f;1", "f;2", "target"}));
}

} // namespace
