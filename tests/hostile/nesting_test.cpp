// Command files and macros that call themselves, each other, or a long row of others.
#include <gtest/gtest.h>

#include "tests/hostile/sandbox.h"

namespace {

constexpr std::string_view kFewDescriptors = "ulimit -n 256";

// Names each of which calls the next: the line that calls `name`, and one that defines it to do `line`.
struct Kind {
  std::string_view call;
  void (*define)(const Sandbox& box, std::string& input, const std::string& name, const std::string& line);
};

void define_file(const Sandbox& box, std::string&, const std::string& name, const std::string& line) {
  box.write(name, line + "\n");
}

void define_macro(const Sandbox&, std::string& input, const std::string& name, const std::string& line) {
  input += "DEFINE MACRO " + name + " AS \"" + line + "\"\n";
}

constexpr Kind kFile{"SET COMMAND $", define_file};
constexpr Kind kMacro{"$", define_macro};

struct Row {
  const char* what;
  std::vector<Kind> kinds;        // taken in turn
  std::size_t count;              // of the names
  bool closed;                    // the last one calls the first
  std::vector<std::string> first; // arguments that run the first one; without any it is typed
};

const std::vector<std::string> kStartup{"-d"}; // only a startup file's name says what it is

std::string call_of(const Kind& kind, std::size_t i) {
  return replaced(std::string(kind.call), "$", "N" + std::to_string(i));
}

} // namespace

TEST(Hostile, CallsThatNest) {
  const std::size_t deep = long_or_short(10000, 1000);
  const std::vector<Row> rows{
      {"a file that runs itself", {kFile}, 1, true, {}},
      {"two files that run each other", {kFile}, 2, true, {}},
      {"a row of files", {kFile}, deep, false, {}},
      {"a ring of files", {kFile}, deep, true, {}},
      {"a macro that calls itself", {kMacro}, 1, true, {}},
      {"two macros that call each other", {kMacro}, 2, true, {}},
      {"a row of macros", {kMacro}, deep, false, {}},
      {"a ring of macros", {kMacro}, deep, true, {}},
      {"files and macros in turn", {kFile, kMacro}, deep, false, {}},
      {"a file and a macro that call each other", {kFile, kMacro}, 2, true, {}},
      {"a -command file that runs itself", {kFile}, 1, true, {"-command", "N0"}},
      {"a journal that runs itself", {kFile}, 1, true, {"-recover", "-journal=N0"}},
      {"a startup file that runs itself", {kFile}, 1, true, kStartup},
  };
  Promise promise(13);
  for (const Row& row : rows) {
    const Sandbox box;
    box.write("a.txt", "one\n");
    const auto kind = [&](std::size_t i) { return row.kinds[i % row.kinds.size()]; };
    std::string input;
    for (std::size_t i = 0; i < row.count; ++i) {
      const bool last = i + 1 == row.count;
      const std::size_t next = last ? 0 : i + 1;
      kind(i).define(box, input, "N" + std::to_string(i),
                     last && !row.closed ? "INSERT deepest" : call_of(kind(next), next));
    }
    if (row.first == kStartup) box.write("zan.ini", box.read("N0"));
    std::vector<std::string> arguments = row.first;
    arguments.emplace_back("a.txt");
    if (row.first.empty()) input += call_of(kind(0), 0) + "\n";
    expect_answer(promise,
                  box.run(arguments, "SET QUIET\n" + input + "TYPE WHOLE\n", std::string(kFewDescriptors)),
                  row.what);
  }
}
