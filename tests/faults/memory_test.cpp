// Every allocation of typical sessions fails, alone or with all that follow it.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"
#include "tests/sessions/text_forms.h"

namespace {

using namespace zan::test;

constexpr long kAllocationStride = 13;
constexpr long kAfterStart = 3; // before it, the run-time library takes its reserve for reporting the failure

void set_up(const Stage& stage) {
  write_file(stage / "f", "one\ntwo\nthree\n");
  write_file(stage / "g", "gee\n");
  write_file(stage / "commands", "DELETE 1\nTYPE WHOLE\n");
}

struct Outcome {
  RunResult run;
  Files files;
};

// One session, with every allocation in turn.
class Session {
 public:
  explicit Session(const std::string& typed) : typed_(typed) {
    const Stage stage;
    set_up(stage);
    before_ = stage.contents();
    whole_ = {stage.run(start()), stage.contents()};
  }

  // False when the session does not come to the allocation.
  bool run(const std::string& which, Promise& promise) const {
    const Stage stage;
    set_up(stage);
    Start failing = start();
    failing.environment["ZAN_FAULT_MEMORY"] = which;
    const Outcome outcome{stage.run(failing, 0, {}), stage.contents()};
    const std::vector<std::string> calls = stage.calls();
    if (std::ranges::find(calls, "memory " + which) == calls.end()) return false;
    promise.ran("allocation " + which + " of " + typed_, wrong(outcome));
    return true;
  }

 private:
  Start start() const { return {{"f", "g"}, typed_}; }

  std::string wrong(const Outcome& outcome) const {
    const RunResult& run = outcome.run;
    const bool fatal = run.errors.starts_with("fatal: ") && run.errors.ends_with("\n");
    const bool unsaved = run.status == 2 && contains(run.errors, "?Unable to write ");
    const Files& after = outcome.files;
    // Without a file that found no room, the session makes other texts; the file itself stays.
    const bool starts_empty = contains(run.output, "Input file does not exist\n");
    const bool unread = starts_empty || contains(run.output + run.errors, "?Unable to open ");
    const auto is_saved = [&](const std::string& path) {
      if (unread) return before_.contains(path) ? path == "work/f" && !starts_empty : !is_temporary(path);
      return after.contains(path) && whole_.files.contains(path) && after.at(path) == whole_.files.at(path);
    };
    std::string wrong;
    if (fatal ? run.status != 1 : run.status != whole_.run.status && !unsaved) {
      wrong += " status " + std::to_string(run.status) + run.errors;
    }
    if (!fatal && run.output != whole_.run.output && !starts_empty &&
        !contains(run.output + run.errors, "?")) {
      wrong += " without a message: " + run.output;
    }
    wrong += changes(
        before_, after,
        [&](const std::string& path) {
          if (path.ends_with(".jou")) return is_noted(after.at(path));
          return is_saved(path) || ((fatal || unsaved) && is_rescue_copy(path));
        },
        is_saved);
    return wrong;
  }

  // Whole lines, each as typed and in the order; some are noted beside another file.
  bool is_noted(std::string_view journal) const {
    std::string_view typed = typed_;
    while (!journal.empty()) {
      const std::string_view line = journal.substr(0, journal.find('\n') + 1);
      if (line.empty()) return false; // no line feed
      while (!typed.empty() && !typed.starts_with(line)) typed.remove_prefix(typed.find('\n') + 1);
      if (typed.empty()) return false;
      journal.remove_prefix(line.size());
      typed.remove_prefix(line.size());
    }
    return true;
  }

  std::string typed_;
  Files before_;
  Outcome whole_;
};

const std::vector<std::string> kSessions = lines_of_file("faults/sessions.txt");

class MemoryOf : public testing::TestWithParam<std::size_t> {};

TEST_P(MemoryOf, EveryAllocationFails) {
  Promise promise(Promised::memory);
  const Session session(unescape(kSessions[GetParam()]));
  // A sanitizer has an allocator of its own.
  if (!session.run(std::to_string(kAfterStart), promise))
    GTEST_SKIP() << "allocations cannot be made to fail";
  const long stride = one_in(kAllocationStride);
  auto turn = static_cast<long>(2 * GetParam()); // so that the sessions do not all fail at the same places
  for (const char* all : {"", "+"}) {
    for (long i = kAfterStart + 1 + turn++ % stride; session.run(std::to_string(i) + all, promise);
         i += stride) {}
  }
}

INSTANTIATE_TEST_SUITE_P(Sessions, MemoryOf, testing::Range(std::size_t{0}, kSessions.size()));

TEST(Memory, WhatIsModifiedIsRescued) {
  const std::string little = "ulimit -v 100000; exec \"$0\" \"$@\"";
  const Stage stage;
  set_up(stage);
  if (stage.run({{"-h"}, "", little}).status != 0) GTEST_SKIP() << "memory cannot be limited";
  stage.prepare("yes abcdefghi | head -c 20000000 >big");
  RunResult run = stage.run({{"f"},
                             "SUBSTITUTE/one/1/\nINCLUDE /dev/zero\nFIND =B\nINCLUDE big\n"
                             "CHGU WHOLE\nCHGL WHOLE\nCHGU WHOLE\nCHGL WHOLE\nCHGU WHOLE\nEXIT\n",
                             little});
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(contains(run.output, "?Unable to open include file /dev/zero\n")) << run.output;
  EXPECT_EQ(run.errors, "fatal: std::bad_alloc\n");
  EXPECT_EQ(read_file(stage / "f.save"), "1\ntwo\nthree\n");
  // The text that found no room is not saved in its place.
  stage.prepare("truncate -s 1T big");
  run = stage.run({{"big"}, "INSERT x\nTYPE/SAVE\nEXIT\n", little});
  EXPECT_EQ(run.errors, "?Unable to write big\n");
  EXPECT_EQ(stat_of(stage / "big").st_size, off_t{1} << 40);
}

} // namespace
