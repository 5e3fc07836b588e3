// Every allocation of typical sessions fails, alone or with all that follow it.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"

namespace {

using namespace zan::test;

constexpr long kShortFormStride = 5;
constexpr long kAfterStart = 3; // before it, the run-time library takes its reserve for reporting the failure

const char* const kSessions[] = {
    "TYPE WHOLE\nQUIT\n",
    "SUBSTITUTE/one/1/\nEXIT\n",
    "SUBSTITUTE/e/E/ WHOLE/NOTYPE\nEXIT\n",
    "SUBSTITUTE/o/0/ WHOLE/GLOBAL\nWRITE copy\nEXIT\n",
    "DELETE 2\nEXIT\n",
    "DELETE 1 THRU 2\nUNDO\nEXIT\n",
    "DELETE WHOLE\nUNDO\nREDO\nEXIT\n",
    "INCLUDE g\nEXIT\n",
    "INCLUDE g\nTYPE WHOLE\nWRITE copy 1:2\nQUIT\n",
    "COPY 1:2 TO =A\n=A\nTYPE WHOLE\nEXIT\n",
    "MOVE 2 TO =A\n=MAIN\nEXIT\n",
    "CLEAR =A\nRETAIN =A\nEXIT\n",
    "FIND two\nDEL W\nUND W\nEXIT\n",
    "FIND three\nFNDNXT\nQUIT\n",
    "SELECT\nBOTTOM\nCUT\nTOP\nPASTE\nEXIT\n",
    "SET VERSIONING\nSUBSTITUTE/one/1/\nEXIT\n",
    "SET RMS FIXED 10\nSUBSTITUTE/one/1/\nEXIT\n",
    "NEXT\nSUBSTITUTE/gee/GEE/\nPREVIOUS\nEXIT\n",
    "NEXT\nNEXT\nEXIT\n",
    "TYPE/SAVE\nDELETE 1/SAVE\nQUIT\n",
    "FILL WHOLE\nEXIT\n",
    "CHGU WHOLE\nEXIT\n",
    "XLATE o 0 WHOLE\nEXIT\n",
    "RESEQUENCE\nEXIT\n",
    "DEFINE MACRO M AS \"DELETE 1; TYPE WHOLE\"\nM\nEXIT\n",
    "DEFINE KEY F1 AS \"TOP\"\nSHOW KEY\nQUIT\n",
    "SHOW ALL\nSHOW BUFFERS\nSHOW FILES\nQUIT\n",
    "HELP\nHELP SUBSTITUTE\nQUIT\n",
    "SET COMMAND commands\nEXIT\n",
    "INSERT a line that is typed behind the command\nBELL\nWRITE copy BUFFER MAIN\nEXIT\n",
};

void set_up(const Stage& stage) {
  write_file(stage / "f", "one\ntwo\nthree\n");
  write_file(stage / "g", "gee\n");
  write_file(stage / "commands", "DELETE 1\nTYPE WHOLE\n");
}

struct Outcome {
  RunResult run;
  std::map<std::string, std::string> files;
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
    std::string wrong;
    if (fatal ? run.status != 1 : run.status != whole_.run.status && !unsaved) {
      wrong += " status " + std::to_string(run.status) + run.errors;
    }
    if (!fatal && run.output != whole_.run.output && !contains(run.output + run.errors, "?")) {
      wrong += " without a message: " + run.output;
    }
    for (const auto& [path, bytes] : outcome.files) wrong += wrong_file(path, bytes, fatal || unsaved);
    for (const auto& [path, bytes] : before_) {
      if (!outcome.files.contains(path)) wrong += " gone: " + path;
    }
    return wrong;
  }

  std::string wrong_file(const std::string& path, const std::string& bytes, bool ended_early) const {
    if (path.ends_with(".jou")) return is_noted(bytes) ? "" : " " + path + ": " + bytes;
    if (ended_early && is_rescue_copy(path)) return "";
    const auto old = before_.find(path);
    const auto saved = whole_.files.find(path);
    if (old != before_.end() && old->second == bytes) return "";
    if (saved != whole_.files.end() && saved->second == bytes) return "";
    return " " + path + " holds " + bytes;
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
  std::map<std::string, std::string> before_;
  Outcome whole_;
};

TEST(Memory, EveryAllocationFails) {
  Promise promise(16);
  const long stride = long_form() ? 1 : kShortFormStride;
  long turn = 0; // so that the sessions do not all fail at the same places
  for (const char* typed : kSessions) {
    const Session session(typed);
    // A sanitizer has an allocator of its own.
    if (!session.run(std::to_string(kAfterStart), promise))
      GTEST_SKIP() << "allocations cannot be made to fail";
    for (const char* all : {"", "+"}) {
      for (long i = kAfterStart + 1 + turn++ % stride; session.run(std::to_string(i) + all, promise);
           i += stride) {}
    }
  }
}

} // namespace
