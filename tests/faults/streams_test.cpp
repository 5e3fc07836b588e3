// Standard streams that are closed, full, broken or at their end, and a limit on the size of files.
#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"
#include "tests/screen/key_names.h"
#include "tests/sessions/text_forms.h"

namespace {

using namespace zan::test;

const std::string kTail(100000, 'n'); // beyond the limits below
const std::string kCommands = "SUBSTITUTE/old/new/\nWRITE copy\nTYPE WHOLE\nHELP\nEXIT\n";

// In the end there are the files, journals and copies of the text that could not be saved.
std::string wrong_files(const Stage& stage, const Files& expected, const std::string& rescued = "") {
  const Files after = stage.contents();
  return changes(expected, after, [&](const std::string& path) {
    return path.ends_with(".jou") || (is_rescue_copy(path) && after.at(path) == rescued);
  });
}

// Commands come from a file, whatever the streams are; the output file cannot be written in every second run.
TEST(Streams, FilesHoldTheirTextOnly) {
  Promise promise(Promised::streams);
  for (const Row& row : read_rows("streams")) {
    const bool saves = !row.is("cannot save");
    for (const bool output_fails : {false, true}) {
      const Stage stage;
      const std::string old_text = "old" + kTail + "\n";
      write_file(stage / "f", old_text);
      write_file(stage.home("commands"), kCommands);
      Start start{{"f", "-command=../commands"}, "", row.shell()};
      if (output_fails) start.arguments.emplace_back("-output=no/f");
      const RunResult run = stage.run(start);
      const std::string new_text = "new" + kTail + "\n";
      Files expected = {{"work/f", saves && !output_fails ? new_text : old_text}};
      if (saves) expected["work/copy"] = new_text;
      std::string wrong = wrong_files(stage, expected, new_text);
      const int status = saves && !output_fails ? 0 : 2;
      if (run.status != status) wrong += " status " + std::to_string(run.status);
      promise.ran(row.name + (output_fails ? ", no output file" : ""), wrong);
    }
  }
}

// The processor time that a run may take, in seconds: one that reads the end again and again takes more.
const std::string kLimit = "ulimit -t 2; exec \"$0\" \"$@\" ";

TEST(Streams, TheEndOfInputEndsTheProgram) {
  Promise promise(Promised::end_of_input);
  std::string text = "old\n";
  for (int i = 0; i < (long_form() ? 1000 : 10); ++i) text += kTail + "\n";
  for (const Row& row : read_rows("ends")) {
    const Stage stage;
    write_file(stage.home("commands"), "SUBSTITUTE/old/new/\nEXIT/X");
    write_file(stage / "f", text);
    const RunResult run =
        stage.run({{"f"}, unescape(key_bytes(row.get("typed", ""))), kLimit + row.get("input", "")});
    std::string wrong = run.timed_out ? " it went on" : "";
    if (run.status != 0) wrong += " status " + std::to_string(run.status) + run.errors;
    promise.ran(row.name, wrong + wrong_files(stage, {{"work/f", text}}));
  }
}

} // namespace
