#include "files/safe_save.h"

#include <fcntl.h>
#include <gtest/gtest.h>

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
  return zan::save_file(path, source_of(bytes), mode).result;
}

TEST(SafeSave, NoFileHasSuchAName) {
  for (const std::string& path : {std::string(), std::string("x\0y", 3)})
    EXPECT_EQ(save(path, "new"), SaveResult::failed);
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
    EXPECT_EQ(zan::save_file(dir / "a", failing, SaveMode::replace).result, SaveResult::failed);
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

#if defined(F_OFD_SETLK) // which a lock of this same process keeps off
TEST(SafeSave, WhatSomebodyHasLockedIsNotOverwritten) {
  const ScratchDirectory dir;
  write_file(dir / "a", "old");
  std::filesystem::create_hard_link(dir / "a", dir / "b");
  const int file = ::open((dir / "b").c_str(), O_WRONLY);
  struct flock whole {};
  whole.l_type = F_WRLCK;
  ASSERT_EQ(::fcntl(file, F_SETLK, &whole), 0);
  EXPECT_EQ(save(dir / "a", "new"), SaveResult::failed);
  EXPECT_EQ(read_file(dir / "a"), "old");
  ::close(file);
  EXPECT_EQ(save(dir / "a", "new"), SaveResult::saved);
  EXPECT_EQ(dir.names(), (Names{"a", "b"}));
}
#endif

// The copy that is to keep the other text can be made nowhere.
TEST(SafeSave, WhatCannotBeKeptIsNotOverwritten) {
  const ScratchDirectory dir;
  write_file(dir / "a", "theirs");
  write_file(dir / "linked", "theirs");
  std::filesystem::create_hard_link(dir / "linked", dir / "other");
  zan::Guard guard{[](const zan::FileState&) { return false; }, "copy", {dir / "none"}};
  for (const std::string name : {"a", "linked"}) {
    EXPECT_FALSE(zan::save_file(dir / name, source_of("new"), SaveMode::replace, guard));
    EXPECT_EQ(read_file(dir / name), "theirs");
    EXPECT_EQ(dir.names(), (Names{"a", "linked", "other"}));
  }
  guard.directories.push_back(dir.path());
  EXPECT_EQ(zan::save_file(dir / "a", source_of("new"), SaveMode::replace, guard).kept, dir / "copy");
  EXPECT_EQ(zan::save_file(dir / "linked", source_of("new"), SaveMode::replace, guard).kept, dir / "copy.1");
  EXPECT_EQ(read_file(dir / "a") + read_file(dir / "other"), "newnew");
  EXPECT_EQ(read_file(dir / "copy") + read_file(dir / "copy.1"), "theirstheirs");
  EXPECT_EQ(stat_of(dir / "copy").st_mode & 0777, 0600U); // not a link, which has the file's mode
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
  EXPECT_EQ(zan::save_file(dir / "f;2", racing("f;2"), SaveMode::create_exclusively).result,
            SaveResult::exists);
  EXPECT_EQ(zan::save_file(dir / "g", racing("g"), SaveMode::replace).result, SaveResult::saved);
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
  std::filesystem::create_directory(dir / "f;2");
  std::string path = dir / "f;1";
  EXPECT_TRUE(zan::save_output(path, source_of("through")));
  EXPECT_EQ(path + read_file(dir / "target"), (dir / "f;1") + "through");
  path = dir / "f;2";
  EXPECT_FALSE(zan::save_output(path, source_of("x")));
  EXPECT_EQ(dir.names(), (Names{"f;1", "f;2", "target"}));
}

} // namespace
