// Command files and macros that call themselves, each other, or a long row of others.
#include <gtest/gtest.h>

#include "tests/hostile/sandbox.h"

namespace {

constexpr std::string_view kFewDescriptors = "ulimit -n 256";

// Names each of which calls the next.
struct Row {
  const char* what;
  std::string_view kinds;         // taken in turn: F is a command file, M a macro
  std::size_t count;              // of the names
  bool closed;                    // the last one calls the first
  std::vector<std::string> first; // arguments that run the first one; without any it is typed
};

const std::vector<std::string> kStartup{"-d"}; // only a startup file's name says what it is

} // namespace

TEST(Hostile, CallsThatNest) {
  const std::size_t deep = long_or_short(10000, 1000);
  const std::vector<Row> rows{
      {"a file that runs itself", "F", 1, true, {}},
      {"two files that run each other", "F", 2, true, {}},
      {"a row of files", "F", deep, false, {}},
      {"a ring of files", "F", deep, true, {}},
      {"a macro that calls itself", "M", 1, true, {}},
      {"two macros that call each other", "M", 2, true, {}},
      {"a row of macros", "M", deep, false, {}},
      {"a ring of macros", "M", deep, true, {}},
      {"files and macros in turn", "FM", deep, false, {}},
      {"a file and a macro that call each other", "FM", 2, true, {}},
      {"a -command file that runs itself", "F", 1, true, {"-command", "N0"}},
      {"a journal that runs itself", "F", 1, true, {"-recover", "-journal=N0"}},
      {"a startup file that runs itself", "F", 1, true, kStartup},
  };
  Promise promise(Promised::nesting);
  for (const Row& row : rows) {
    const Sandbox box;
    box.write("a.txt", "one\n");
    const auto name = [](std::size_t i) { return "N" + std::to_string(i); };
    const auto is_file = [&](std::size_t i) { return row.kinds[i % row.kinds.size()] == 'F'; };
    const auto call = [&](std::size_t i) { return (is_file(i) ? "SET COMMAND " : "") + name(i); };
    std::string input;
    for (std::size_t i = 0; i < row.count; ++i) {
      const bool last = i + 1 == row.count;
      const std::string line = last && !row.closed ? "INSERT deepest" : call(last ? 0 : i + 1);
      if (is_file(i)) box.write(name(i), line + "\n");
      else input += "DEFINE MACRO " + name(i) + " AS \"" + line + "\"\n";
    }
    if (row.first == kStartup) box.write("zan.ini", box.read("N0"));
    std::vector<std::string> arguments = row.first;
    arguments.emplace_back("a.txt");
    if (row.first.empty()) input += call(0) + "\n";
    expect_answer(promise,
                  box.run(arguments, "SET QUIET\n" + input + "TYPE WHOLE\n", std::string(kFewDescriptors)),
                  row.what);
  }
}
