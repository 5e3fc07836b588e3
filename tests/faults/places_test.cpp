// What may stand in the place of the file that is saved, or of the journal.
#include <algorithm>
#include <sys/xattr.h>

#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"

namespace {

using namespace zan::test;

const std::string kOld = "old\n";
const std::string kNew = "new\n";

enum class User {
  same,
  nobody,  // the editor is run by nobody, the script by whoever runs the tests
  visitor, // as nobody, in files that only root can make somebody else's
  root     // for root alone
};

bool is_left_out(User user) { return !is_root() && (user == User::visitor || user == User::root); }

std::string shell_for(User user, const char* shell) {
  return user == User::nobody || user == User::visitor ? as_nobody() : shell;
}

struct Target {
  const char* name;
  const char* script;              // a shell's
  const char* text_in;             // the file that has the text then; "": the save fails
  User user = User::same;          // of the editor; the script is run by the test's
  std::string path = "f";          // what is saved to
  const char* attribute = nullptr; // an access list that f, or "." for a default one, is given
  const char* shell = "exec \"$0\" \"$@\"";
};

const std::string kLongestName(255, 'q');

const Target kTargets[] = {
    {"file", "echo old >f; chmod 640 f", "f"},
    {"no file", "", "f"},
    {"symbolic link", "echo old >t; ln -s t f", "t"},
    {"chain of links", "mkdir d; echo old >t; ln -s ../t d/b; ln -s d/b f", "t"},
    {"dangling link", "ln -s t f", "t"},
    {"dangling chain", "mkdir d; ln -s t d/b; ln -s d/b f", "d/t"},
    {"link loop", "ln -s b f; ln -s f b", ""},
    {"link to itself", "ln -s f f", ""},
    {"link into no directory", "ln -s no/t f", ""},
    {"hard links", "echo old >f; ln f g", "g"},
    {"link to hard links", "echo old >t; ln t g; ln -s t f", "g"},
    {"set-user-id", "echo old >f; chmod 4755 f", "f"},
    {"set-user-id, hard links", "echo old >f; chmod 4755 f; ln f g", "g"},
    {"set-group-id", "echo old >f; chmod 2750 f", "f"},
    {"set-group-id directory", "mkdir d; chmod 2775 d; echo old >d/f; ln -s d/f f", "d/f"},
    {"sticky directory", "chmod 1777 .; echo old >f; chmod 666 f", "f", User::visitor},
    {"access list", "echo old >f", "f", User::same, "f", "system.posix_acl_access"},
    {"directory with a default access list", "echo old >f", "f", User::same, "f", "system.posix_acl_default"},
    {"extended attribute", "echo old >f", "f", User::same, "f", "user.note"},
    {"other owner, for root", "echo old >f; chown 1234:4321 f; chmod 600 f", "f", User::root},
    {"other owner, hard links, for root", "echo old >f; chown 1234:4321 f; ln f g", "g", User::root},
    {"other owner, for another", "echo old >f; chmod 666 f", "f", User::visitor},
    {"directory not to be written", "echo old >f; chmod 666 f; chmod 555 .", "f", User::nobody},
    {"no file in a directory not to be written", "chmod 555 .", "", User::nobody},
    {"file not to be written", "echo old >f; chmod 444 f", "", User::nobody},
    {"file not to be written, for root", "echo old >f; chmod 444 f", "f", User::root},
    {"/dev/null", "", "/dev/null", User::same, "/dev/null"},
    {"/dev/full", "", "", User::same, "/dev/full"},
    {"pipe", "mkfifo f", "../got", User::same, "f", nullptr,
     "timeout 20 cat f >../got & \"$0\" \"$@\"; status=$?; wait; exit $status"},
    {"directory", "mkdir f", ""},
    {"link to a directory", "mkdir d; ln -s d f", ""},
    {"name with a slash at its end", "echo old >f", "", User::same, "f/"},
    {"no directory", "", "", User::same, "no/f"},
    {"longest name", "", kLongestName.c_str(), User::same, kLongestName},
    {"name too long", "", "", User::same, kLongestName + "q"},
};

// Owner and mask, and one user besides: version 2, then entries of tag, rights and user.
const std::string kAccessList("\2\0\0\0"
                              "\1\0\6\0\377\377\377\377"
                              "\2\0\4\0\322\4\0\0"
                              "\4\0\4\0\377\377\377\377"
                              "\20\0\4\0\377\377\377\377"
                              "\40\0\0\0\377\377\377\377",
                              44);

void give_attribute(const Target& target, const Stage& stage) {
  if (target.attribute == nullptr) return;
  const bool on_directory = contains(target.attribute, "default");
  ::setxattr((stage / (on_directory ? "" : "f")).c_str(), target.attribute, kAccessList.data(),
             kAccessList.size(), 0);
}

std::map<std::string, std::string> identities(const Stage& stage) {
  std::map<std::string, std::string> found;
  for (const auto& [path, bytes] : stage.contents()) found[path] = identity(stage.home(path));
  return found;
}

std::string save_to(const Target& target, bool by_exit) {
  const Stage stage;
  write_file(stage.home("in"), kNew);
  stage.prepare(target.script);
  give_attribute(target, stage);
  const auto before = stage.contents();
  const auto identities_before = identities(stage);

  Start start{{"../in", "-journal=../spare/j"}, by_exit ? "EXIT\n" : "WRITE " + target.path + "\nQUIT\n"};
  if (by_exit) start.arguments.push_back("-output=" + target.path);
  start.shell = shell_for(target.user, target.shell);
  const RunResult run = stage.run(start);

  const std::string text_in = target.text_in;
  const bool saved = !text_in.empty();
  const std::string said = !saved ? "?Unable to write " + target.path + "\n"
                                  : "*" + target.path + (by_exit ? " 1 lines\n" : " written\n");
  std::string wrong = run.timed_out ? " timed out" : "";
  if (!contains(run.output + run.errors, said)) wrong += " it says: " + run.output + run.errors;
  if (run.status != (by_exit && !saved ? 2 : 0)) wrong += " status " + std::to_string(run.status);
  if (saved && text_in[0] != '/' && read_file(stage / text_in) != kNew) wrong += " text not in " + text_in;
  for (const auto& [path, as] : identities_before) {
    const std::string now = identity(stage.home(path));
    if (now != as) wrong += " " + path + " was " + as + ", is " + now;
  }
  for (const auto& [path, bytes] : stage.contents()) {
    const bool allowed =
        path == "spare/j" || path == "work/" + text_in || (by_exit && !saved && is_rescue_copy(path));
    const auto old = before.find(path);
    if (old == before.end() && !allowed) wrong += " left behind: " + path;
    if (old != before.end() && !saved && bytes != old->second) wrong += " changed: " + path;
  }
  return wrong;
}

TEST(Places, OfTheFile) {
  Promise promise(5);
  for (const Target& target : kTargets) {
    if (is_left_out(target.user)) continue;
    for (const bool by_exit : {true, false}) {
      promise.ran(target.name + std::string(by_exit ? ", EXIT" : ", WRITE"), save_to(target, by_exit));
    }
  }
}

struct Journal {
  const char* name;
  const char* script;
  std::vector<std::string> arguments = {"f"};
  const char* file = ""; // that the lines are noted in; "": nowhere
  User user = User::same;
  const char* shell = "exec \"$0\" \"$@\"";
  bool full = false; // no room for the line
  bool goes = false; // with a successful EXIT, although nothing could be noted
};

const Journal kJournals[] = {
    {"none yet", "", {"f"}, "work/f.jou"},
    {"none yet, umask 0", "", {"f"}, "work/f.jou", User::same, "umask 0; exec \"$0\" \"$@\""},
    {"none yet, umask 022", "", {"f"}, "work/f.jou", User::same, "umask 022; exec \"$0\" \"$@\""},
    {"none yet, umask 077", "", {"f"}, "work/f.jou", User::same, "umask 077; exec \"$0\" \"$@\""},
    {"named", "", {"f", "-journal=../spare/j"}, "spare/j"},
    {"symbolic link", "echo theirs >v; ln -s v f.jou"},
    {"dangling link", "ln -s v f.jou"},
    {"pipe", "mkfifo f.jou"},
    {"pipe, named", "mkfifo j", {"f", "-journal=j"}},
    {"directory", "mkdir f.jou"},
    {"directory, named", "mkdir j", {"f", "-journal=j"}},
    {"device", "mknod f.jou c 1 3", {"f"}, "", User::root},
    {"device, named", "", {"f", "-journal=/dev/full"}},
    {"terminal, named", "", {"f", "-journal=/dev/tty"}},
    {"not to be written",
     "echo x >f.jou; chown nobody f.jou || :; chmod 444 f.jou",
     {"f"},
     "",
     User::nobody,
     "",
     false,
     true},
    {"other owner", "echo theirs >f.jou; chown 1234:4321 f.jou; chmod 666 f.jou", {"f"}, "", User::root},
    {"other owner, for another", "echo theirs >f.jou; chmod 666 f.jou", {"f"}, "", User::visitor},
    {"full disk", "", {"f"}, "", User::same, "", true},
    {"no directory", "", {"f", "-journal=no/j"}},
    {"directory not to be written", "chmod 555 .", {"f"}, "", User::nobody},
    {"the input", "", {"f", "-journal=f"}},
    {"a link to the input", "ln -s f j", {"f", "-journal=j"}},
    {"another name of the input", "ln f g", {"f", "-journal=g"}},
    {"the second input", "echo theirs >g", {"f", "g", "-journal=g"}},
    {"the output", "echo out >out", {"f", "-output=out", "-journal=out"}},
    {"the output, no file yet", "", {"f", "-output=out", "-journal=./out"}},
    {"the command file", "echo '! nothing' >c", {"f", "-command=c", "-journal=c"}},
};

std::string run_with(const Journal& journal, bool by_exit) {
  const Stage stage;
  write_file(stage / "f", kOld);
  std::filesystem::permissions(stage / "f", std::filesystem::perms(0666)); // another user is to save it, too
  stage.prepare(journal.script);
  const auto before = stage.contents();
  const auto identities_before = identities(stage);
  const std::string typed = "SUBSTITUTE/old/new/\n";
  Start start{journal.arguments, typed + "WRITE ../spare/result\n" + (by_exit ? "EXIT\n" : "QUIT\n")};
  start.shell = shell_for(journal.user, journal.shell);
  const RunResult run = journal.full ? stage.run(start, 1, {"full", 1}) : stage.run(start);

  auto after = stage.contents();
  const bool to_output = std::ranges::find(start.arguments, "-output=out") != start.arguments.end();
  const std::string output = to_output ? "work/out" : "work/f";
  std::string wrong = run.timed_out ? " timed out" : "";
  if (run.status != 0 || !run.errors.empty()) wrong += " status " + std::to_string(run.status) + run.errors;
  if (after["spare/result"] != kNew) wrong += " the command did not run: " + run.output;
  if (by_exit && after[output] != kNew) wrong += " not saved";
  for (const auto& [path, bytes] : before) {
    const bool saved = by_exit && (path == output || (!to_output && bytes == kOld)); // by any name
    if (!after.contains(path)) wrong += by_exit && journal.goes ? "" : " gone: " + path;
    else if (!saved && after[path] != bytes) wrong += " changed: " + path;
    else if (identity(stage.home(path)) != identities_before.at(path)) wrong += " another: " + path;
  }
  const std::string file = journal.file;
  for (const auto& [path, bytes] : after) {
    const bool noted = !by_exit && (path == file || (journal.full && path == "work/f.jou"));
    const bool saved = path == "spare/result" || (by_exit && path == output);
    if (!before.contains(path) && !noted && !saved) wrong += " left behind: " + path;
  }
  if (!file.empty() && !by_exit) {
    if (!after[file].starts_with(typed)) wrong += " not noted";
    if ((stat_of(stage.home(file)).st_mode & 07777) != 0600) wrong += " mode " + identity(stage.home(file));
  }
  return wrong;
}

TEST(Places, OfTheJournal) {
  Promise promise(6);
  for (const Journal& journal : kJournals) {
    if (is_left_out(journal.user)) continue;
    for (const bool by_exit : {true, false}) {
      promise.ran(journal.name + std::string(by_exit ? ", EXIT" : ", QUIT"), run_with(journal, by_exit));
    }
  }
}

} // namespace
