#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "recovery/restore.h"
#include "recovery/session_log.h"
#include "tests/files/scratch_directory.h"
#include "tests/text/store_play.h"
#include "text/load_file.h"

namespace zan {
namespace {

using test::read_file;
using test::ScratchDirectory;
using test::write_file;
using Texts = std::vector<NamedText>;

void record(SessionLog& log, Texts texts) {
  log.record(std::move(texts));
  while (!log.is_complete()) ASSERT_TRUE(log.go_on());
}

std::string session_file(const ScratchDirectory& dir, const std::string& of = "f") {
  for (const std::string& name : dir.names())
    if (name.starts_with("." + of + ".zan-recovery-")) return dir / name;
  return "";
}

Texts texts_in(std::string_view bytes) {
  const auto session = read_session(bytes);
  return session ? session->texts : Texts();
}

bool same(const Texts& a, const Texts& b) {
  return std::ranges::equal(a, b, [](const NamedText& x, const NamedText& y) {
    return x.name == y.name && x.text.to_string() == y.text.to_string() && x.text == y.text;
  });
}

// Edits of four texts that take pieces from each other, some of which are recorded, in new files now and
// then.
TEST(SessionLog, GivesBackEveryState) {
  for (const std::uint32_t seed : {1U, 2U, 3U}) {
    const ScratchDirectory dir;
    std::mt19937 random(seed);
    test::Play play([&random]() -> std::uint64_t { return random(); });
    SessionLog log;
    log.set_path(dir / "f");
    for (int state = 0; state < 40; ++state) {
      for (auto steps = random() % 30; steps > 0; --steps) play.step();
      Texts texts;
      for (const char* name : {"A", "B", "C", "D"})
        if (random() % 3 > 0) texts.push_back({name, play.store(static_cast<std::size_t>(*name - 'A'))});
      if (random() % 10 == 0) log.begin_anew();
      record(log, texts);
      ASSERT_EQ(dir.names().size(), 1U);
      ASSERT_TRUE(same(texts_in(read_file(session_file(dir))), texts))
          << "seed " << seed << " state " << state;
    }
  }
}

// A save comes while a long state is being written.
TEST(SessionLog, ANewFileHasAllOfAStateThatIsHalfWritten) {
  const ScratchDirectory dir;
  const Texts texts{{"A", LineStore::from_text("short")},
                    {"B", LineStore::from_text(std::string(2'000'000, 'b'))}};
  SessionLog log;
  log.set_path(dir / "f");
  log.record(texts);
  for (int step = 0; step < 3; ++step) ASSERT_TRUE(log.go_on());
  log.begin_anew();
  while (!log.is_complete()) ASSERT_TRUE(log.go_on());
  EXPECT_TRUE(same(texts_in(read_file(session_file(dir))), texts));
}

TEST(SessionLog, ATornOrDamagedFileGivesAnEarlierState) {
  const ScratchDirectory dir;
  std::mt19937 random(4);
  test::Play play([&random]() -> std::uint64_t { return random(); });
  std::vector<Texts> states(1);
  SessionLog log;
  log.set_path(dir / "f");
  for (int state = 0; state < 5; ++state) {
    for (int step = 0; step < 20; ++step) play.step();
    states.push_back({{"A", play.store(0)}, {"B", play.store(1)}});
    record(log, states.back());
  }
  const std::string whole = read_file(session_file(dir));
  std::size_t last = 0;
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    const Texts texts = texts_in(std::string_view(whole).substr(0, size));
    while (last + 1 < states.size() && !same(texts, states[last])) ++last;
    ASSERT_TRUE(same(texts, states[last])) << size;
  }
  EXPECT_EQ(last, states.size() - 1);
  for (std::size_t at = 0; at < whole.size(); at += 7) {
    std::string damaged = whole;
    damaged[at] ^= static_cast<char>(1 << at % 8);
    const Texts texts = texts_in(damaged);
    ASSERT_TRUE(std::ranges::any_of(states, [&](const Texts& state) { return same(texts, state); })) << at;
  }
}

// A text of 2 MB: not recorded itself, but referred to in its file.
class LongFile : public testing::Test {
 protected:
  LongFile() {
    std::string text;
    for (int i = 0; text.size() < 2'000'000; ++i) text += "line " + std::to_string(i) + "\r\n";
    write_file(dir / "f", text);
    log.set_path(dir / "f");
    load();
  }
  void load() {
    FileState state;
    lines = load_file(dir / "f", &state)->lines;
    log.add_base({dir / "f", state, lines});
  }
  std::size_t recorded_bytes() { return read_file(session_file(dir)).size(); }

  ScratchDirectory dir;
  SessionLog log;
  LineStore lines;
};

TEST_F(LongFile, AKeyTakesFewBytes) {
  const LineStore as_read = lines;
  lines.insert_bytes(1'000'000, "a");
  record(log, {{"MAIN", lines}});
  EXPECT_LT(recorded_bytes(), 1024U);
  for (int key = 0; key < 100; ++key) {
    lines.insert_bytes(500'000 + static_cast<std::uint64_t>(key), "b");
    if (key % 10 == 9) record(log, {{"MAIN", lines}});
  }
  EXPECT_LT(recorded_bytes(), 2048U);
  record(log, {{"MAIN", as_read}, {"PASTE", lines.substore(100'000, 1'200'000)}});
  EXPECT_LT(recorded_bytes(), 3072U);
  EXPECT_TRUE(same(texts_in(read_file(session_file(dir))),
                   {{"MAIN", as_read}, {"PASTE", lines.substore(100'000, 1'200'000)}}));
}

TEST_F(LongFile, WhatIsNoLongerOnTheDiskIsWrittenWhole) {
  const LineStore as_read = lines;
  lines.erase(10, 1'000'010);
  lines.insert_text(20, "new\n");
  write_file(dir / "f", lines.to_string() + "\n");
  const LineStore saved = lines;
  log.begin_anew();
  load();
  record(log, {{"MAIN", saved}, {"OTHER", as_read}});
  EXPECT_GT(recorded_bytes(), 1'000'000U);
  EXPECT_LT(recorded_bytes(), 2'100'000U);
  EXPECT_TRUE(same(texts_in(read_file(session_file(dir))), {{"MAIN", saved}, {"OTHER", as_read}}));
}

TEST_F(LongFile, AFileThatHasChangedIsSaidToBeMissing) {
  const NamedText loaded{absolute_path(dir / "f"), lines};
  lines.insert_text(10, "typed\n");
  record(log, {{"MAIN", lines}, {"PASTE", LineStore::from_text("all of it")}});
  const std::string recorded = read_file(session_file(dir));
  EXPECT_TRUE(same(read_session(recorded, loaded)->texts, texts_in(recorded)));
  std::string changed = read_file(dir / "f");
  changed[1'000'000] = '!';
  write_file(dir / "f", changed);
  const auto session = read_session(recorded);
  ASSERT_TRUE(session && session->texts.size() == 2);
  EXPECT_EQ(session->texts[0].text.to_string(), "typed\n");
  EXPECT_EQ(session->texts[1].text.to_string(), "all of it");
  EXPECT_EQ(session->lost_files, std::vector<std::string>{dir / "f"});
  // The session that goes on has all of it.
  record(log, {{"MAIN", lines}});
  EXPECT_TRUE(same(texts_in(read_file(session_file(dir))), {{"MAIN", lines}}));
}

// ---- dead and living sessions

struct Copies {
  std::vector<std::string> texts;
  std::optional<std::string> operator()(std::string_view buffer, const LineStore& text) {
    texts.push_back(std::string(buffer) + ":" + text.to_string());
    return "copy" + std::to_string(texts.size());
  }
};

TEST(Sessions, ADeadOneIsRestoredOnce) {
  const ScratchDirectory dir;
  const LineStore disk = LineStore::from_text("on disk");
  Copies copies;
  const auto restore = [&] { return restore_sessions(dir / "f", disk, std::ref(copies)); };
  {
    SessionLog living;
    living.set_path(dir / "f");
    record(living, {{"MAIN", LineStore::from_text("typed")}, {"PASTE", LineStore::from_text("cut")}});
    EXPECT_TRUE(restore().empty()); // this process need not be told of its own
    EXPECT_TRUE(copies.texts.empty());
  }
  auto reports = restore();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(copies.texts, (std::vector<std::string>{"MAIN:typed", "PASTE:cut"}));
  EXPECT_EQ(reports[0].copies, (std::vector<std::string>{"copy1", "copy2"}));
  EXPECT_TRUE(dir.names().empty());
  EXPECT_TRUE(restore().empty());
  {
    SessionLog saved;
    saved.set_path(dir / "f");
    record(saved, {{"MAIN", disk}});
  }
  EXPECT_TRUE(restore().empty());
  EXPECT_TRUE(dir.names().empty());
}

TEST(Sessions, OtherFilesAreLeftAlone) {
  const ScratchDirectory dir;
  {
    SessionLog other;
    other.set_path(dir / "f2");
    record(other, {{"MAIN", LineStore::from_text("typed")}});
  }
  const std::string name = dir / ".f.zan-recovery-";
  ASSERT_EQ(::link(session_file(dir, "f2").c_str(), (name + "1").c_str()), 0);
  ASSERT_EQ(::symlink(session_file(dir, "f2").c_str(), (name + "2").c_str()), 0);
  ASSERT_EQ(::mkdir((name + "3").c_str(), 0700), 0);
  ASSERT_EQ(::mkfifo((name + "4").c_str(), 0600), 0);
  write_file(name + "5x", "mine");
  const auto before = dir.names();
  Copies copies;
  EXPECT_TRUE(restore_sessions(dir / "f", {}, std::ref(copies)).empty());
  EXPECT_EQ(dir.names(), before);
  write_file(name + "6", "ZAN recovery 1\nnothing");
  EXPECT_TRUE(restore_sessions(dir / "f", {}, std::ref(copies)).empty());
  EXPECT_EQ(dir.names(), before);
}

} // namespace
} // namespace zan
