// What may stand in the place of the file that is saved, or of the journal.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"

namespace {

using namespace zan::test;

const std::string kOld = "old\n";
const std::string kNew = "new\n";

// Owner and mask, and one user besides: version 2, then entries of tag, rights and user.
const std::string kAccessList("\2\0\0\0"
                              "\1\0\6\0\377\377\377\377"
                              "\2\0\4\0\322\4\0\0"
                              "\4\0\4\0\377\377\377\377"
                              "\20\0\4\0\377\377\377\377"
                              "\40\0\0\0\377\377\377\377",
                              44);

void give_attribute(const std::string& name, const Stage& stage) {
  const bool on_directory = contains(name, "default");
  set_attribute(stage / (on_directory ? "" : "f"), name, kAccessList);
}

Files identities(const Stage& stage) {
  Files found;
  for (const auto& [path, bytes] : stage.contents()) found[path] = identity(stage.home(path));
  return found;
}

std::string save_to(const Row& target, bool by_exit) {
  const Stage stage;
  write_file(stage.home("in"), kNew);
  stage.prepare(target.script);
  give_attribute(target.get("attribute", ""), stage);
  const Files before = stage.contents();
  const Files identities_before = identities(stage);

  const std::string to = target.get("path", "f");
  Start start{{"../in", "-journal=../spare/j"}, by_exit ? "EXIT\n" : "WRITE " + to + "\nQUIT\n"};
  if (by_exit) start.arguments.push_back("-output=" + to);
  start.shell = target.shell();
  const RunResult run = stage.run(start);

  const std::string text_in = target.get("in", "");
  const bool saved = !text_in.empty();
  const std::string said =
      !saved ? "?Unable to write " + to + "\n" : "*" + to + (by_exit ? " 1 lines\n" : " written\n");
  std::string wrong = run.timed_out ? " timed out" : "";
  if (!contains(run.output + run.errors, said)) wrong += " it says: " + run.output + run.errors;
  if (run.status != (by_exit && !saved ? 2 : 0)) wrong += " status " + std::to_string(run.status);
  if (saved && text_in[0] != '/' && read_file(stage / text_in) != kNew) wrong += " text not in " + text_in;
  const mode_t mode = stat_of(stage / text_in).st_mode & 07777;
  if (target.is("mode") && mode != std::stoul(target.get("mode", ""), nullptr, 8)) wrong += " another mode";
  const auto may_come = [&](const std::string& path) {
    return path == "spare/j" || path == "work/" + text_in || (by_exit && !saved && is_rescue_copy(path));
  };
  wrong += changes(before, stage.contents(), may_come, [&](const auto&) { return saved; });
  return wrong + changes(identities_before, identities(stage), may_come);
}

TEST(Places, OfTheFile) {
  Promise promise(Promised::places);
  for (const Row& target : read_rows("places"))
    for (const bool by_exit : {true, false})
      promise.ran(target.name + (by_exit ? ", EXIT" : ", WRITE"), save_to(target, by_exit));
}

std::string run_with(const Row& journal, bool by_exit) {
  const Stage stage;
  write_file(stage / "f", kOld);
  std::filesystem::permissions(stage / "f", std::filesystem::perms(0666)); // another user is to save it, too
  stage.prepare(journal.script);
  const auto before = stage.contents();
  const auto identities_before = identities(stage);
  const std::string typed = "SUBSTITUTE/old/new/\n";
  Start start{journal.words("arguments", "f"),
              typed + "WRITE ../spare/result\n" + (by_exit ? "EXIT\n" : "QUIT\n")};
  start.shell = journal.shell();
  const RunResult run = journal.is("full") ? stage.run(start, 1, {"full", 1}) : stage.run(start);

  auto after = stage.contents();
  const bool to_output = std::ranges::find(start.arguments, "-output=out") != start.arguments.end();
  const std::string output = to_output ? "work/out" : "work/f";
  std::string wrong = run.timed_out ? " timed out" : "";
  if (run.status != 0 || !run.errors.empty()) wrong += " status " + std::to_string(run.status) + run.errors;
  if (after["spare/result"] != kNew) wrong += " the command did not run: " + run.output;
  if (by_exit && after[output] != kNew) wrong += " not saved";
  const std::string file = journal.get("noted in", "");
  const auto may_come = [&](const std::string& path) {
    return (by_exit ? path == output : path == file || (journal.is("full") && path == "work/f.jou")) ||
           path == "spare/result";
  };
  const auto may_go = [&](const std::string& path) {
    return by_exit && journal.is("goes") && !after.contains(path);
  };
  wrong += changes(before, after, may_come, [&](const std::string& path) { // a text is saved by any name
    return path == file || may_go(path) ||
           (by_exit && (path == output || (!to_output && before.at(path) == kOld)));
  });
  wrong += changes(identities_before, identities(stage), may_come, may_go);
  if (!file.empty() && !by_exit) {
    if (!after[file].starts_with(typed)) wrong += " not noted";
    if ((stat_of(stage.home(file)).st_mode & 07777) != 0600) wrong += " mode " + identity(stage.home(file));
  }
  return wrong;
}

TEST(Places, OfTheJournal) {
  Promise promise(Promised::journals);
  for (const Row& journal : read_rows("journals"))
    for (const bool by_exit : {true, false})
      promise.ran(journal.name + (by_exit ? ", EXIT" : ", QUIT"), run_with(journal, by_exit));
}

// Neither beside the file and its journal nor at home; the text of another program and that of the session.
TEST(Places, OfTheCopies) {
  for (const bool saves : {true, false}) {
    const Stage stage;
    stage.prepare("echo one >g; echo old >f; chmod 666 f g; chmod 555 .");
    Start start{{"g", "f"}, "SUBSTITUTE/one/new/\nNEXT\nUNDO\nEXIT\n", as_nobody()};
    if (!saves) start.arguments.emplace_back("-output=no/f");
    start.environment["HOME"] = "/no";
    const RunResult run = stage.run(start);
    EXPECT_EQ(run.status, saves ? 0 : 2) << run.errors;
    EXPECT_EQ(read_file(stage / "f"), saves ? "one\n" : "old\n");
    EXPECT_EQ(read_file(stage.home("spare/f.save")), saves ? "old\n" : "one\n");
  }
}

} // namespace
