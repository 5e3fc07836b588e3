// PRINT with printers that are missing or fail, and a temporary file that cannot be made or written.
#include <cerrno>

#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"

namespace {

using namespace zan::test;

const std::string kText = "one\ntwo\n";
const std::string kTake = "echo '#!/bin/sh\ncat \"$1\" >printed' >lpr; ";
const std::string kRefuse = "echo '#!/bin/sh\nexit 1' >lpr; ";

struct Print {
  std::string name;
  std::string programs; // a script that makes them
  std::string line;
  std::string said;    // "": some message
  std::string printed; // bytes that reach the printer
  Fault fault = {};
};

// No file may be left, unless removing it is what failed.
std::string wrong_with(const Print& print) {
  const Stage stage;
  write_file(stage / "f", kText);
  std::filesystem::create_directory(stage / "bin");
  stage.prepare("cd bin; " + print.programs + "for p in *; do chmod 755 \"$p\" || :; done");
  const auto before = stage.contents();
  Start start{{"f"}, print.line + "\nQUIT\n"};
  // Programs need some themselves; of printers there are only these.
  start.environment["PATH"] = stage / "bin" + ":" + stage.home("tools");
  std::filesystem::create_directory(stage.home("tools"));
  std::filesystem::create_symlink("/bin/cat", stage.home("tools/cat"));
  const RunResult run = stage.run(start, 1, print.fault);

  std::string wrong = run.status == 0 ? "" : " status " + std::to_string(run.status);
  const auto calls = stage.calls();
  const bool some = contains(run.output, "*?") || contains(run.output, "*Sent to printer\n");
  if (print.said.empty() ? !some : !contains(run.output, "*" + print.said + "\n")) {
    wrong += " it says: " + run.output;
  }
  for (std::size_t i = 0; i < calls.size(); ++i) {
    if (!calls[i].starts_with("made ")) continue;
    const std::string path = calls[i].substr(5);
    if (stat_of(path).st_ino == 0) continue;
    std::filesystem::remove(path);
    if (!contains(print.name, "unlink")) wrong += " left behind: " + path;
  }
  const Files after = stage.contents();
  const std::string printed = after.contains("work/printed") ? after.at("work/printed") : "";
  if (printed != print.printed && (!print.said.empty() || contains(run.output, "Sent")))
    wrong += " printed: " + printed;
  return wrong + changes(before, after, [](const std::string& path) {
           return path == "work/f.jou" || path == "work/printed";
         });
}

TEST(Print, LeavesNoFile) {
  Promise promise(Promised::print);
  const Print rows[] = {
      {"sent", kTake, "PRINT", "Sent to printer", kText},
      {"a range", kTake, "PRINT 2", "Sent to printer", "two\n"},
      {"no printer", "", "PRINT", "?Print failed", ""},
      {"a printer that fails", kRefuse + "cp lpr lp; ", "PRINT", "?Print failed", ""},
      {"the second printer", kTake + "mv lpr lp; " + kRefuse, "PRINT", "Sent to printer", kText},
      {"bad range", kTake, "PRINT 0", "?Invalid range: 0", ""},
      {"no range", kTake, "PRINT 1 THRU x", "?Invalid range: 1 THRU x", ""},
  };
  for (const Print& row : rows) promise.ran(row.name, wrong_with(row));
}

TEST(Print, EveryCallFails) {
  Promise promise(Promised::print);
  const Stage stage;
  write_file(stage / "f", kText);
  stage.run({{"f"}, "PRINT\nQUIT\n"}, 1, {});
  long number = 0, turn = 0;
  for (const std::string& call : stage.calls()) {
    if (call.starts_with("made ")) continue;
    ++number;
    for (const int error : {ENOSPC, EIO, EDQUOT, EACCES, EROFS, EINTR, EPERM}) {
      if (turn++ % one_in(2) != 0) continue; // the errors are seven: none is left out everywhere
      const std::string how = std::to_string(error);
      promise.ran(how + " at " + call,
                  wrong_with({how + " at " + call, kTake, "PRINT", "", kText, {how, number}}));
    }
    promise.ran("no room from " + call, wrong_with({"no room", kTake, "PRINT", "", kText, {"full", number}}));
    promise.ran("short at " + call,
                wrong_with({"short", kTake, "PRINT", "Sent to printer", kText, {"short", number}}));
  }
}

} // namespace
