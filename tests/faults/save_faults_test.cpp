// Every call of a save fails in turn, the program is killed at it, or from then on no disk has room.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <set>

#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"
#include "tests/sessions/text_forms.h"

namespace {

using namespace zan::test;

// Shares no divisor with the number of errors, or of faults: each of them is met.
constexpr long kShortFormStride = 19;

// A row of the table of saves.
struct Save : Row {
  explicit Save(const Row& row) : Row(row) {}
  std::string before = unescape(get("before", "SUBSTITUTE/old/new/\n")); // lines typed before
  std::string line = get("line", "EXIT");                                // the one that saves
  std::string saved = get("saved", "*f 1 lines") + "\n";                 // what it says then
  std::string failed = get("failed", "?Unable to write f") + "\n";       // and otherwise
  std::string target = get("target", "f");                               // the file that the text ends in
  std::string tail = is("large") ? std::string(600000, 'n') : "";        // takes several writes
  std::string new_text = "new" + tail + "\n";
  std::string old_text = is("new") ? "" : "old" + tail + "\n";
  std::string journal = get("journal", "work/f.jou");
  bool in_place = is("in place");
  bool others = is("others"); // the old text is to be kept

  bool exits() const { return line == "EXIT"; }
  std::string path() const { return "work/" + target; }
};

std::vector<Save> all_saves() {
  std::vector<Save> saves;
  for (const Row& row : read_rows("saves")) saves.emplace_back(row);
  return saves;
}

// Before the first byte of a file is overwritten.
bool reserves_room(const std::string& call) { return call.starts_with("fallocate"); }

void PrintTo(const Save& save, std::ostream* out) { *out << save.name; }

void set_up(const Save& save, const Stage& stage) {
  write_file(stage / "f", save.old_text.empty() ? "old\n" : save.old_text);
  set_attribute(stage / "f", "user.note", "hello");
  stage.prepare(save.script);
}

Start start_of(const Save& save) {
  return {save.words("arguments", "f"), save.before + save.line + "\nQUIT\n", save.shell()};
}

long line_of(const Save& save) { return std::ranges::count(save.before, '\n') + 1; }

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
    take_copy_from_tmp(run.errors);
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

  // Where the other text goes when it finds no other place; as a rescue copy in "spare" from now on.
  void take_copy_from_tmp(const std::string& errors) {
    const std::size_t at = errors.find("its text is in /tmp/f.save");
    if (at == std::string::npos) return;
    const std::string path = errors.substr(at + 15, errors.find('\n', at) - at - 15);
    after_["spare/f.save"] = read_file(path);
    std::filesystem::remove(path);
  }

  void judge_words(const RunResult& run) {
    const std::string said = run.output + run.errors;
    reported_ = contains(said, save_.failed);
    if (reported_ == contains(said, save_.saved)) note("it says: " + said);
    if (run.status != (save_.exits() && reported_ ? 2 : 0)) note("status " + std::to_string(run.status));
    if (!reported_ && text_ != save_.new_text) note("it says that it was saved");
    const bool no_room = reserves_room(call_) && fault_.how == std::to_string(ENOSPC);
    if (no_room && !reported_) note("begun where there was no room");
    if (reported_ && retried()) note("not tried again");
    const bool modified = contains(run.output, "Changes discarded\n");
    if (!save_.exits() && modified != (reported_ || save_.is("other file"))) note("modified: " + said);
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
    if (!whole && !(save_.in_place && has_copy(is_temporary, save_.new_text)))
      note("text of " + std::to_string(text_.size()) + " bytes");
    if (save_.others && text_ != save_.old_text && !has_copy(is_rescue_copy, save_.old_text)) {
      note("the other text is gone");
    }
    const bool has_two_names = save_.others && killed_; // it may have, for a moment
    if (before_.contains(save_.path()) && !has_two_names && identity(stage_ / save_.target) != identity_) {
      note("was " + identity_ + ", is " + identity(stage_ / save_.target));
    }
  }

  bool has_copy(bool (*is_named)(std::string_view), const std::string& text) const {
    return std::any_of(after_.begin(), after_.end(),
                       [&](const auto& entry) { return is_named(entry.first) && entry.second == text; });
  }

  // Besides what was there: the file, the journal; what a killed save was writing, or could not remove; after
  // a failure in place the copy; after a failed EXIT the rescue copy; another's text that is no longer there.
  void judge_names() {
    const auto may_come = [&](const std::string& path) {
      const bool whole = after_[path] == save_.new_text;
      if (path == save_.path() || path == save_.journal) return true;
      if (path == "work/g.jou") return true; // the other file of the list has its own
      if (is_temporary(path) && (killed_ || call_.starts_with("unlink"))) return true;
      if (save_.others && after_[path] == save_.old_text && is_rescue_copy(path) &&
          (killed_ || call_.starts_with("unlink") || text_ != save_.old_text)) {
        return true;
      }
      return reported_ && whole &&
             ((is_temporary(path) && save_.in_place) || (is_rescue_copy(path) && save_.exits()));
    };
    wrong_ +=
        changes(before_, after_, may_come, [&](const std::string& path) { return after_.contains(path); });
  }

  void judge_journal() {
    if (save_.journal.empty()) return;
    const bool left = save_.exits() && text_ == save_.new_text && !reported_;
    if (!after_.contains(save_.journal)) {
      if (!left) note("no journal");
      return;
    }
    // Files before the current one had journals of their own.
    const std::size_t next = save_.is("journal") ? std::string::npos : save_.before.find("NEXT\n");
    std::string lines = save_.before.substr(next == std::string::npos ? 0 : next + 5);
    const std::string& journal = after_[save_.journal];
    if (left && journal.empty()) return; // what could not be removed any more
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
  Files before_;
  Files after_;
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
  if (how == "full") return call.starts_with("write") || reserves_room(call);
  return how != "short" || call.starts_with("write");
}

// In the short form one in so many of the faults.
void run_all(const Save& save, Promised row, const std::vector<std::string>& ways,
             long stride = kShortFormStride) {
  Promise promise(row);
  const std::vector<std::string> calls = calls_of(save);
  ASSERT_FALSE(calls.empty());
  const auto noted = std::find_if(calls.begin(), calls.end(),
                                  [](const std::string& call) { return call.starts_with("close"); });
  long turn = 0;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    if (!long_form() && is_version_probe(calls[i])) continue;
    for (const std::string& how : ways) {
      const bool always = long_form() || reserves_room(calls[i]);
      if (!applies(how, calls[i]) || (!always && turn++ % one_in(stride) != 0)) continue;
      const Fault fault{how, static_cast<long>(i) + 1};
      const Stage stage;
      set_up(save, stage);
      Judge judge(save, stage, fault, calls[i], i <= static_cast<std::size_t>(noted - calls.begin()));
      judge.before();
      const RunResult run = stage.run(start_of(save), line_of(save), fault);
      promise.ran(save.name + ", " + how + " at call " + std::to_string(fault.call) + ", " + calls[i],
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

TEST_P(SaveUnderFaults, EveryCallFails) { run_all(GetParam(), Promised::failing_save, error_ways()); }

TEST_P(SaveUnderFaults, KilledAtEveryCall) {
  run_all(GetParam(), Promised::killed_save, {"kill", "kill-after"});
}

TEST_P(SaveUnderFaults, OnAFullDisk) { run_all(GetParam(), Promised::full_disk, {"full"}, 1); }

INSTANTIATE_TEST_SUITE_P(Saves, SaveUnderFaults, testing::ValuesIn(all_saves()));

// What the file holds after a failed save is not known: the text that it held before is rescued as well.
TEST(SaveUnderFaults, TheOldTextOutlivesAFailedSave) {
  for (const char* script : {"", "ln f g"}) {
    std::vector<std::string> calls{""};
    for (long call = 0; call < static_cast<long>(calls.size()); ++call) {
      const std::string name = calls[static_cast<std::size_t>(call)]; // 0: nothing fails
      if (call > 0 && !name.starts_with("fsync") && !name.starts_with("write ")) continue;
      const Stage stage;
      const std::string old_text = "old" + std::string(600000, 'n') + "\n";
      write_file(stage / "f", old_text);
      stage.prepare(script);
      const Start start{{"f", "-output=no/f"}, "SUBSTITUTE/old/new/\nTYPE/SAVE/NOTYPE\nUNDO\nEXIT\n"};
      stage.run(start, 2, call == 0 ? Fault{} : Fault{std::to_string(EIO), call});
      if (call == 0)
        for (const std::string& made : stage.calls()) calls.push_back(made);
      EXPECT_TRUE(read_file(stage / "f") == old_text || read_file(stage / "f.save") == old_text) << name;
    }
  }
}

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

// A file that is there but was not read whole: no text takes its place.
TEST(Unread, AFileIsNotReplaced) {
  Promise promise(Promised::places);
  const Start start{{"f", "g"}, "NEXT\nINSERT x\nTYPE/SAVE\nEXIT\n"};
  const auto failed = [&](const Fault& fault, std::vector<std::string>& calls) {
    const Stage stage;
    write_file(stage / "f", "old\n");
    const RunResult run = stage.run(start, 0, fault);
    calls = stage.calls();
    const bool said = run.output ==
                          "$ EDIT/ZAN f\nInput file does not exist\n[EOB]\n*?Unable to write f\n**1 "
                          "x\n?Unable to save f\n*" &&
                      run.errors == "?Unable to write f\n" && run.status == 2;
    const bool kept = read_file(stage / "f") == "old\n" && read_file(stage / "f.save") == "x\n";
    return said && kept ? "" : run.output + run.errors;
  };
  // By another name of it.
  const auto failed_by_name = [](const Fault& fault) {
    const Stage stage;
    write_file(stage / "f", "old\n");
    const RunResult run = stage.run({{"f", "-output=./f"}, "EXIT\n"}, 0, fault);
    return run.errors == "?Unable to write ./f\n" && read_file(stage / "f") == "old\n" ? "" : run.output;
  };
  std::vector<std::string> calls;
  failed({}, calls);
  const auto opened = std::ranges::find(calls, "open f");
  ASSERT_NE(opened, calls.end());
  for (auto call = opened; call != calls.end() && !call->starts_with("close"); ++call)
    for (const int error : {EACCES, EIO, EMFILE}) {
      std::vector<std::string> ignored;
      const Fault fault{std::to_string(error), call - calls.begin() + 1};
      promise.ran(*call + " fails with error " + fault.how, failed(fault, ignored));
      EXPECT_EQ(failed_by_name(fault), "") << *call;
    }
}

TEST(Journal, IsSyncedOnlyWhileThePromptWaits) {
  const auto synced = [](const Stage& stage) {
    return std::ranges::any_of(stage.calls(), [](const auto& call) { return call.starts_with("fsync"); });
  };
  for (const bool waits : {true, false}) {
    const Stage stage;
    write_file(stage / "f", "old\n");
    Start start{{"f"}, waits ? "" : "TYPE 1\nQUIT\n"};
    if (waits)
      start.shell = R"((echo TYPE 1; until grep -q fsync ../log; do :; done; echo QUIT) | "$0" "$@")";
    const RunResult run = stage.run(start, 1, {});
    EXPECT_FALSE(run.timed_out);
    EXPECT_EQ(synced(stage), waits);
  }
}

// What a rename or an overwrite relies on has reached the disk before it.
TEST(SaveOrder, IsSyncedFirst) {
  Promise promise(Promised::failing_save);
  const struct {
    Row row;
    std::vector<std::string> order;
  } rows[] = {
      {{"rename", "", {}}, {"write ", "fsync ", "renameat ", "fsync ", "unlink f.jou"}},
      {{"new file", "rm f; echo new >g", {}}, {"openat .f.zan-", "fsync ", "renameat2 ", "fsync "}},
      {{"in place", "ln f g", {}},
       {"openat .f.zan-", "write ", "fsync ", "fsync ", "fallocate ", "write ", "fsync ", "ftruncate ",
        "fsync ", "unlinkat .f.zan-", "unlink f.jou"}},
  };
  for (const auto& [save, order] : rows) {
    const std::vector<std::string> calls = calls_of(Save(save));
    auto at = calls.begin();
    std::string missing;
    for (const std::string& wanted : order) {
      at = std::find_if(at, calls.end(), [&](const std::string& call) { return call.starts_with(wanted); });
      if (at == calls.end() && missing.empty()) missing = "no " + wanted + "in its place";
      if (at != calls.end()) ++at;
    }
    promise.ran(save.name, missing);
  }
}

} // namespace
