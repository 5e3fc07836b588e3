// Standard streams that are closed, full, broken or at their end, and a limit on the size of files.
#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"

namespace {

using namespace zan::test;

const std::string kTail(100000, 'n'); // beyond the limits below
const std::string kCommands = "SUBSTITUTE/old/new/\nWRITE copy\nTYPE WHOLE\nHELP\nEXIT\n";

// The shell's words for each: $0 "$@" is the program.
const struct {
  const char* name;
  const char* shell;
  bool saves = true;
} kStreams[] = {
    {"0 closed", "exec \"$0\" \"$@\" <&-"},
    {"1 closed", "exec \"$0\" \"$@\" >&-"},
    {"2 closed", "exec \"$0\" \"$@\" 2>&-"},
    {"0 and 1 closed", "exec \"$0\" \"$@\" <&- >&-"},
    {"0 and 2 closed", "exec \"$0\" \"$@\" <&- 2>&-"},
    {"1 and 2 closed", "exec \"$0\" \"$@\" >&- 2>&-"},
    {"all closed", "exec \"$0\" \"$@\" <&- >&- 2>&-"},
    {"1 full", "exec \"$0\" \"$@\" >/dev/full"},
    {"2 full", "exec \"$0\" \"$@\" 2>/dev/full"},
    {"1 and 2 full", "exec \"$0\" \"$@\" >/dev/full 2>&1"},
    {"1 a broken pipe", "mkfifo ../p; exec 8<>../p 9>../p 8<&-; exec \"$0\" \"$@\" >&9 9>&-"},
    {"1 and 2 a broken pipe", "mkfifo ../p; exec 8<>../p 9>../p 8<&-; exec \"$0\" \"$@\" >&9 2>&9 9>&-"},
    {"no file may grow", "ulimit -f 0; exec \"$0\" \"$@\"", false},
    {"files up to a limit", "ulimit -f 100; exec \"$0\" \"$@\"", false},
};

std::string wrong_files(const Stage& stage, const std::map<std::string, std::string>& expected) {
  std::string wrong;
  auto after = stage.contents();
  for (const auto& [path, bytes] : expected) {
    if (after[path] != bytes) wrong += " " + path + " holds " + after[path].substr(0, 100);
  }
  for (const auto& [path, bytes] : after) {
    const bool allowed = path.ends_with(".jou") || is_rescue_copy(path);
    if (!expected.contains(path) && !allowed) wrong += " left behind: " + path;
  }
  return wrong;
}

// Commands come from a file, whatever the streams are; the output file cannot be written in every second run.
TEST(Streams, FilesHoldTheirTextOnly) {
  Promise promise(4);
  for (const auto& row : kStreams) {
    for (const bool output_fails : {false, true}) {
      const Stage stage;
      const std::string old_text = "old" + kTail + "\n";
      write_file(stage / "f", old_text);
      write_file(stage.home("commands"), kCommands);
      Start start{{"f", "-command=../commands"}, "", row.shell};
      if (output_fails) start.arguments.emplace_back("-output=no/f");
      const RunResult run = stage.run(start);
      const std::string new_text = "new" + kTail + "\n";
      std::map<std::string, std::string> expected = {
          {"work/f", row.saves && !output_fails ? new_text : old_text}};
      if (row.saves) expected["work/copy"] = new_text;
      std::string wrong = wrong_files(stage, expected);
      const int status = row.saves && !output_fails ? 0 : 2;
      if (run.status != status) wrong += " status " + std::to_string(run.status);
      promise.ran(std::string(row.name) + (output_fails ? ", no output file" : ""), wrong);
    }
  }
}

// The processor time that a run may take, in seconds: one that reads the end again and again takes more.
const std::string kLimit = "ulimit -t 2; exec \"$0\" \"$@\"";

const struct {
  const char* name;
  const char* typed;
  const char* redirection = "";
} kEnds[] = {
    {"an empty pipe", ""},
    {"no device", "", " </dev/null"},
    {"closed", "", " <&-"},
    {"a directory", "", " </"},
    {"not readable", "", " 0>../sink"},
    {"after a command", "SUBSTITUTE/old/new/\n"},
    {"in a command", "SUBSTITUTE/old/new/\nSUBST"},
    {"at a question", "SUBSTITUTE/old/new/QUERY\n"},
    {"at a question, unanswered", "SUBSTITUTE/n/m/ WHOLE/QUERY\n"},
    {"at inserted lines", "INSERT\nsome\ntext"},
    {"in the screen", "CHANGE\n"},
    {"in the screen, after keys", "CHANGE\nxyz"},
    {"in nokeypad mode", "SET NOKEYPAD\nCHANGE\nD"},
    {"after a failed command", "NO SUCH COMMAND\n"},
    {"a file, in a command", "", " <../commands"},
};

TEST(Streams, TheEndOfInputEndsTheProgram) {
  Promise promise(10);
  for (const auto& row : kEnds) {
    const std::size_t megabytes = long_form() ? 100 : 10;
    const Stage stage;
    write_file(stage.home("commands"), "SUBSTITUTE/old/new/\nEXIT/X");
    std::string text = "old\n";
    for (std::size_t i = 0; i < megabytes * 10; ++i) text += kTail + "\n";
    write_file(stage / "f", text);
    const RunResult run = stage.run({{"f"}, row.typed, kLimit + row.redirection});
    std::string wrong = run.timed_out ? " it went on" : "";
    if (run.status != 0) wrong += " status " + std::to_string(run.status) + run.errors;
    promise.ran(row.name, wrong + wrong_files(stage, {{"work/f", text}}));
  }
}

} // namespace
