// Every call of a save fails in turn, or the program is killed at it.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <set>
#include <sys/xattr.h>

#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"

namespace {

using namespace zan::test;

// Shares no divisor with the number of errors, or of faults: each of them is met.
constexpr long kShortFormStride = 9;

const std::string kTail(600000, 'n'); // with it a text takes several writes
const std::string kOld = "old\n";
const std::string kNew = "new\n";
const std::string kChange = "SUBSTITUTE/old/new/\n";

struct Save {
  const char* name;
  const char* script;                 // that prepares the directory, in which f is there already
  std::vector<std::string> arguments; // of the program
  std::string before;                 // lines typed before
  std::string line;                   // the one that saves
  std::string saved;                  // what it says then
  std::string failed;                 // and otherwise
  std::string target = "f";           // the file that the text ends in
  std::string old_text = kOld;
  std::string new_text = kNew;
  bool in_place = false;
  bool own_file = true; // a save to it makes the buffer unmodified
  bool as_nobody = false;
  bool needs_root = false;
  std::string journal = "work/f.jou";

  bool exits() const { return line == "EXIT"; }
  std::string path() const { return "work/" + target; }
};

Save by_exit(const char* name, const char* script) {
  return {name, script, {"f"}, kChange, "EXIT", "*f 1 lines\n", "?Unable to write f\n"};
}

Save by_line(const char* name, std::vector<std::string> arguments, const std::string& line,
             const std::string& saved, const std::string& failed) {
  return {name, "", std::move(arguments), kChange, line, saved, failed};
}

std::vector<Save> all_saves() {
  std::vector<Save> saves;
  const auto add = [&](Save save) -> Save& { return saves.emplace_back(std::move(save)); };
  add(by_exit("EXIT", ""));
  Save& large = add(by_exit("EXIT of a large text", ""));
  large.old_text = "old" + kTail + "\n";
  large.new_text = "new" + kTail + "\n";
  add(by_exit("EXIT, hard link", "ln f g")).in_place = true;
  Save& linked = add(by_exit("EXIT of a large text, hard link", "ln f g"));
  linked.in_place = true;
  linked.old_text = "old" + kTail + "\n";
  linked.new_text = "new" + kTail + "\n";
  Save& fresh = add(by_exit("EXIT, new file", "rm f; echo new >g"));
  fresh.before = "INCLUDE g\n";
  fresh.old_text = "";
  Save& link = add(by_exit("EXIT, symbolic link", "mv f t; ln -s t f"));
  link.target = "t";
  add(by_exit("EXIT, set-user-id", "chmod 4750 f"));
  add(by_exit("EXIT, other owner", "chown 1234:4321 f")).needs_root = true;
  Save& version = add(by_exit("EXIT, next version", "echo one >'f;1'"));
  version.before = "SET VERSIONING\n" + kChange;
  version.target = "f;2";
  version.old_text = "";
  version.saved = "*f;2 1 lines\n";
  version.failed = "?Unable to write f;2\n";
  Save& locked = add(by_exit("EXIT, directory that may not be written", "chmod 666 f; chmod 555 ."));
  locked.arguments = {"f", "-journal=../spare/j"};
  locked.in_place = locked.as_nobody = true;
  locked.journal = "spare/j";
  Save& journal = add(by_exit("EXIT, the journal is the input", ""));
  journal.arguments = {"f", "-journal=f"};
  journal.journal = "";
  Save& output = add(by_exit("EXIT to an output file", ""));
  output.arguments = {"f", "-output=g"};
  output.target = "g";
  output.old_text = "";
  output.saved = "*g 1 lines\n";
  output.failed = "?Unable to write g\n";
  add(by_line("WRITE", {"f"}, "WRITE f", "*f written\n", "*?Unable to write f\n"));
  Save& part = add(by_line("WRITE of a range", {"f"}, "WRITE g 1", "*g written\n", "*?Unable to write g\n"));
  part.target = "g";
  part.old_text = "";
  part.own_file = false;
  add(by_line("/SAVE", {"f"}, "TYPE/SAVE", "[Saved f]\n", "?Unable to save f\n"));
  Save& next = add(by_line("NEXT", {"f", "g"}, "NEXT", "*g\n", "*?Unable to write f\n"));
  next.script = "echo gee >g";
  Save& previous = add(by_line("PREVIOUS", {"g", "f"}, "PREVIOUS", "*g\n", "*?Unable to write f\n"));
  previous.script = "echo gee >g";
  previous.before = "NEXT\n" + kChange;
  return saves;
}

void PrintTo(const Save& save, std::ostream* out) { *out << save.name; }

void set_up(const Save& save, const Stage& stage) {
  write_file(stage / "f", save.old_text.empty() ? kOld : save.old_text);
  ::setxattr((stage / "f").c_str(), "user.note", "hello", 5, 0);
  stage.prepare(save.script);
}

Start start_of(const Save& save) {
  Start start{save.arguments, save.before + save.line + "\nQUIT\n"};
  if (save.as_nobody) start.shell = as_nobody();
  return start;
}

long line_of(const Save& save) { return std::count(save.before.begin(), save.before.end(), '\n') + 1; }

// One run and what must hold after it.
class Judge {
 public:
  Judge(const Save& save, const Stage& stage, const Fault& fault, std::string call, bool in_journal)
      : save_(save), stage_(stage), fault_(fault), call_(std::move(call)), in_journal_(in_journal),
        killed_(fault.how.starts_with("kill")) {}

  void before() {
    before_ = stage_.contents();
    identity_ = identity(stage_ / save_.target);
  }

  std::string wrong(const RunResult& run) {
    after_ = stage_.contents();
    text_ = after_.contains(save_.path()) ? after_[save_.path()] : "";
    if (killed_) {
      if (run.status != 128 + SIGKILL) note("status " + std::to_string(run.status));
    } else {
      judge_words(run);
    }
    judge_text();
    judge_names();
    judge_journal();
    return wrong_;
  }

 private:
  void note(const std::string& text) { wrong_ += "\n  " + text; }

  void judge_words(const RunResult& run) {
    const std::string said = run.output + run.errors;
    reported_ = contains(said, save_.failed);
    if (reported_ == contains(said, save_.saved)) note("it says: " + said);
    if (run.status != (save_.exits() && reported_ ? 2 : 0)) note("status " + std::to_string(run.status));
    if (!reported_ && text_ != save_.new_text) note("it says that it was saved");
    if (reported_ && retried()) note("not tried again");
    const bool modified = contains(run.output, "Changes discarded\n");
    if (!save_.exits() && modified != (reported_ || !save_.own_file)) note("modified: " + said);
  }

  // Must the save succeed all the same?
  bool retried() const {
    static const std::set<std::string> kInterruptible = {"openat", "write",     "writev",    "pread", "close",
                                                         "fsync",  "ftruncate", "fallocate", "fchmod"};
    const bool interrupted = fault_.how == std::to_string(EINTR);
    return fault_.how == "short" ||
           (interrupted && kInterruptible.contains(call_.substr(0, call_.find(' '))));
  }

  void judge_text() {
    const bool whole = text_ == save_.old_text || text_ == save_.new_text;
    if (!whole && !(save_.in_place && has_copy())) note("text of " + std::to_string(text_.size()) + " bytes");
    if (before_.contains(save_.path()) && identity(stage_ / save_.target) != identity_) {
      note("was " + identity_ + ", is " + identity(stage_ / save_.target));
    }
  }

  bool has_copy() const {
    return std::any_of(after_.begin(), after_.end(), [&](const auto& entry) {
      return is_temporary(entry.first) && entry.second == save_.new_text;
    });
  }

  // Besides what was there: the file, the journal; what a killed save was writing, or could not remove; after
  // a failure in place the copy; after a failed EXIT the rescue copy.
  void judge_names() {
    for (const auto& [path, bytes] : after_) {
      if (before_.contains(path) || path == save_.path() || path == save_.journal) continue;
      if (path == "work/g.jou") continue; // the other file of the list has its own
      const bool whole = bytes == save_.new_text;
      if (is_temporary(path) && (killed_ || call_.starts_with("unlink"))) continue;
      if (is_temporary(path) && save_.in_place && reported_ && whole) continue;
      if (is_rescue_copy(path) && save_.exits() && reported_ && whole) continue;
      note("left behind: " + path);
    }
    for (const auto& [path, bytes] : before_) {
      if (!after_.contains(path)) note("gone: " + path);
    }
  }

  void judge_journal() {
    if (save_.journal.empty()) return;
    const bool left = save_.exits() && text_ == save_.new_text && !reported_;
    if (!after_.contains(save_.journal)) {
      if (!left) note("no journal");
      return;
    }
    // Files before the current one had journals of their own.
    std::string lines = save_.before.substr(save_.before.starts_with("NEXT") ? 5 : 0);
    const std::string& journal = after_[save_.journal];
    if (in_journal_ ? !journal.starts_with(lines) : !journal.starts_with(lines + save_.line + "\n")) {
      note("journal: " + journal);
    }
  }

  const Save& save_;
  const Stage& stage_;
  const Fault& fault_;
  std::string call_;
  bool in_journal_; // the fault strikes while the line is noted
  bool killed_;
  std::map<std::string, std::string> before_;
  std::map<std::string, std::string> after_;
  std::string identity_;
  std::string text_;
  bool reported_ = false; // that it failed
  std::string wrong_;
};

// What a save calls; empty when it does not even succeed without a fault.
std::vector<std::string> calls_of(const Save& save) {
  const Stage stage;
  set_up(save, stage);
  const RunResult run = stage.run(start_of(save), line_of(save), {});
  EXPECT_TRUE(contains(run.output, save.saved)) << run.output << run.errors;
  EXPECT_EQ(run.status, 0);
  return run.status == 0 ? stage.calls() : std::vector<std::string>{};
}

// Looking for versions takes dozens of calls of one kind, of which the short form takes two.
bool is_version_probe(const std::string& call) {
  return call.starts_with("stat f;") && call != "stat f;1" && call != "stat f;51";
}

bool applies(const std::string& how, const std::string& call) {
  return how != "short" || call.starts_with("write");
}

void run_all(const Save& save, int row, const std::vector<std::string>& ways) {
  if (save.needs_root && !is_root()) GTEST_SKIP() << "only root can give files away";
  Promise promise(row);
  const std::vector<std::string> calls = calls_of(save);
  ASSERT_FALSE(calls.empty());
  const auto noted = std::find_if(calls.begin(), calls.end(),
                                  [](const std::string& call) { return call.starts_with("close"); });
  long turn = 0;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    if (!long_form() && is_version_probe(calls[i])) continue;
    for (const std::string& how : ways) {
      if (!applies(how, calls[i]) || (!long_form() && turn++ % kShortFormStride != 0)) continue;
      const Fault fault{how, static_cast<long>(i) + 1};
      const Stage stage;
      set_up(save, stage);
      Judge judge(save, stage, fault, calls[i], i <= static_cast<std::size_t>(noted - calls.begin()));
      judge.before();
      const RunResult run = stage.run(start_of(save), line_of(save), fault);
      promise.ran(std::string(save.name) + ", " + how + " at call " + std::to_string(fault.call) + ", " +
                      calls[i],
                  judge.wrong(run));
    }
  }
}

std::vector<std::string> error_ways() {
  std::vector<std::string> ways;
  for (const int error : {ENOSPC, EIO, EDQUOT, EACCES, EROFS, EINTR, EPERM})
    ways.push_back(std::to_string(error));
  ways.emplace_back("short");
  return ways;
}

class SaveUnderFaults : public testing::TestWithParam<Save> {};

TEST_P(SaveUnderFaults, EveryCallFails) { run_all(GetParam(), 1, error_ways()); }

TEST_P(SaveUnderFaults, KilledAtEveryCall) { run_all(GetParam(), 2, {"kill", "kill-after"}); }

INSTANTIATE_TEST_SUITE_P(Saves, SaveUnderFaults, testing::ValuesIn(all_saves()));

// The shim stands before every call by which the program reaches a file.
TEST(Shim, KnowsEveryFileCall) {
  const Stage stage;
  const RunResult missing = run_program(
      "/bin/sh",
      {"-c",
       "nm -D --undefined-only \"$0\" | sed 's/.* U //; s/@.*//' | grep -xE \"$2\" | while read call; do "
       "nm -D --defined-only \"$1\" | grep -q \" $call\\$\" || echo $call; done",
       ZAN_PROGRAM, ZAN_FAULT_SHIM,
       "(f?open|openat|creat|close|p?readv?|p?writev?|fsync|fdatasync|(f|posix_f)?(truncate|allocate)|"
       "lseek|(f|l)?(chmod|chown)(at)?|_*[fl]?x?stat(at)?|statx|readlink(at)?|rename(at2?)?|"
       "link(at)?|symlink(at)?|unlink(at)?|remove|mk(o)?stemps?|[fl]?(set|get|list|remove)xattr|"
       "copy_file_range|sendfile|splice|system)(64)?"},
      {{"PATH", "/usr/bin:/bin"}}, stage.home("."), "");
  EXPECT_EQ(missing.status, 0) << missing.errors;
  EXPECT_EQ(missing.output, "");
}

// What a rename or an overwrite relies on has reached the disk before it.
TEST(SaveOrder, IsSyncedFirst) {
  Promise promise(1);
  const struct {
    Save save;
    std::vector<std::string> order;
  } rows[] = {
      {by_exit("rename", ""), {"write ", "fsync ", "renameat ", "fsync ", "unlink f.jou"}},
      {by_exit("new file", "rm f; echo new >g"), {"openat .f.zan-", "fsync ", "renameat2 ", "fsync "}},
      {by_exit("in place", "ln f g"),
       {"openat .f.zan-", "write ", "fsync ", "fsync ", "fallocate ", "write ", "fsync ", "ftruncate ",
        "fsync ", "unlinkat .f.zan-", "unlink f.jou"}},
  };
  for (const auto& row : rows) {
    const std::vector<std::string> calls = calls_of(row.save);
    auto at = calls.begin();
    std::string missing;
    for (const std::string& wanted : row.order) {
      at = std::find_if(at, calls.end(), [&](const std::string& call) { return call.starts_with(wanted); });
      if (at == calls.end() && missing.empty()) missing = "no " + wanted + "in its place";
      if (at != calls.end()) ++at;
    }
    promise.ran(row.save.name, missing);
  }
}

} // namespace
