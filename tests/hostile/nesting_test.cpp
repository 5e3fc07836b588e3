// Command files and macros that call themselves, each other, or a long row of others.
#include <gtest/gtest.h>

#include "tests/hostile/sandbox.h"

namespace {

constexpr std::string_view kFewDescriptors = "ulimit -n 256";

} // namespace

TEST(Hostile, CallsThatNest) {
  const std::size_t deep = long_or_short(10000, 1000);
  Promise promise(Promised::nesting);
  for (const std::string& line : lines_of_file("hostile/nesting.table")) {
    const Fields row = bytes_of_row(line);
    const std::string &kinds = row[1], &first = row[4];
    const std::size_t count = row[2] == "deep" ? deep : std::stoul(row[2]);
    const Sandbox box;
    box.write("a.txt", "one\n");
    const auto name = [](std::size_t i) { return "N" + std::to_string(i); };
    const auto is_file = [&](std::size_t i) { return kinds[i % kinds.size()] == 'F'; };
    const auto call = [&](std::size_t i) { return (is_file(i) ? "SET COMMAND " : "") + name(i); };
    std::string input;
    for (std::size_t i = 0; i < count; ++i) {
      const bool last = i + 1 == count;
      const std::string next = last && row[3] == "row" ? "INSERT deepest" : call(last ? 0 : i + 1);
      if (is_file(i)) box.write(name(i), next + "\n");
      else input += "DEFINE MACRO " + name(i) + " AS \"" + next + "\"\n";
    }
    if (first == "-d") box.write("zan.ini", box.read("N0"));
    std::vector<std::string> arguments = split_arguments(first);
    arguments.emplace_back("a.txt");
    if (first.empty()) input += call(0) + "\n";
    expect_answer(promise,
                  box.run(arguments, "SET QUIET\n" + input + "TYPE WHOLE\n", std::string(kFewDescriptors)),
                  row[0]);
  }
}
