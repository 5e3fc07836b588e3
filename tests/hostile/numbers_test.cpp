// Numbers of every size in every place that reads one.
#include <gtest/gtest.h>

#include "tests/hostile/sandbox.h"

namespace {

const std::vector<std::string> kNumbers = lines_of_file("hostile/numbers.txt");
const std::string kFiveLines =
    "one\talpha\n\ttwo a a\n\nfour " + std::string(100, 'a') + "\nfive six seven\n";

// Files larger than this are refused by the system.
constexpr std::string_view kSmallFiles = "ulimit -f 2000";

} // namespace

TEST(Hostile, NumbersOfEverySize) {
  Promise promise(Promised::numbers);
  const Sandbox box;
  const std::size_t stride = long_or_short(1, 3); // shares no divisor with the number of numbers
  std::size_t turn = 0;
  // Every place, "#" in that of the number; lines that follow use what was set.
  for (const std::string& place : lines_of_file("hostile/places.txt")) {
    for (const std::string& number : kNumbers) {
      if (turn++ % stride != 0) continue;
      const std::string commands = replaced(unescape(place), "#", number) + "\nQUIT\n";
      box.clear();
      box.write("a.txt", kFiveLines);
      expect_answer(promise, box.run({"a.txt"}, commands, std::string(kSmallFiles)), commands);
    }
  }
}

TEST(Hostile, TwoBillion) {
  Promise promise(Promised::two_billion);
  const Sandbox box;
  for (const std::string& row : lines_of_file("hostile/two_billion.txt")) {
    const std::string commands = unescape(row);
    box.clear();
    box.write("a.txt", kFiveLines);
    expect_answer(promise,
                  box.run({"a.txt"}, commands + "\n", std::string(kSmallFiles) + "; " + limited_memory()),
                  commands);
  }
}
