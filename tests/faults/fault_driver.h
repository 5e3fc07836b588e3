#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/files/scratch_directory.h"
#include "tests/promise.h"
#include "tests/sessions/run_program.h"

// Runs of the program under faults, and the count of what held.
namespace zan::test {

// By their path from home, their bytes; of a link, where it leads, of others "(no file)".
using Files = std::map<std::string, std::string>;
using PathTest = std::function<bool(const std::string&)>;

// What has come, gone or changed between two looks, but for what may.
std::string changes(
    const Files& before, const Files& after, const PathTest& may_come,
    const PathTest& may_change = [](const std::string&) { return false; });

// A row of a table: what it is about, a script of the shell that prepares it, and words for what is unusual.
struct Row {
  std::string name, script;
  std::map<std::string, std::string> with;

  bool is(const std::string& word) const { return with.contains(word); }
  std::string get(const std::string& word, const std::string& usual) const {
    return is(word) ? with.at(word) : usual;
  }
  std::vector<std::string> words(const std::string& word, const std::string& usual) const;
  std::string shell() const; // that runs the program as the wanted user; see Start
};

// The rows of the table of that name, but for those that this user, or a system without the shim, cannot
// play. {255} is a name of that length.
std::vector<Row> read_rows(const std::string& table);

// How a run is to go wrong; see the shim.
struct Fault {
  std::string how; // "": not at all
  long call = 0;
};

struct Start {
  std::vector<std::string> arguments;
  std::string input;
  std::string shell = {}; // a command in which $0 "$@" is the program and its arguments; "": just that
  std::map<std::string, std::string> environment = {}; // besides the usual
};

// A directory with "work", where the program runs, and "spare", where it may put temporary files.
class Stage {
 public:
  Stage();
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  std::string operator/(const std::string& name) const { return home_ / ("work/" + name); }
  std::string home(const std::string& name) const { return home_ / name; }
  void prepare(const std::string& script) const; // a shell's, run in "work"

  RunResult run(const Start& start) const;
  // The fault strikes while the program acts on the given line of its input.
  RunResult run(Start start, long line, const Fault& fault) const;
  std::vector<std::string> calls() const; // that the last run with a line made while it acted on it

  Files contents() const; // of "work" and "spare"

 private:
  ScratchDirectory home_;
};

// Kind, mode, owner, number of links, extended attributes and, for a link, where it leads.
std::string identity(const std::string& path);

void set_attribute(const std::string& path, const std::string& name, std::string_view value);

bool is_root();
// A shell prefix that runs the program as nobody, for root; for others they are somebody else than root
// already.
std::string as_nobody();

bool is_temporary(std::string_view path);   // what a save leaves when it cannot end
bool is_rescue_copy(std::string_view path); // of a text that could not be saved

inline bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

} // namespace zan::test
