// Patterns that make a matcher which tries everything run for ever.
#include <gtest/gtest.h>

#include "tests/hostile/sandbox.h"

namespace {

std::string repeated(std::string_view part, std::size_t count) {
  std::string text;
  for (; count > 0; --count) text += part;
  return text;
}

} // namespace

TEST(Hostile, PatternsOfManyStars) {
  constexpr std::size_t kStars[] = {1, 2, 3, 5, 10, 20, 50, 100};
  constexpr std::size_t kLengths[] = {100, 1000, 10000, 100000};
  // One that matches, those that do not match, one that only the line's end decides about.
  constexpr std::string_view kForms[] = {"$*", "$*b", "*$b", "$*[^a]", "$*%$", "$?*\\b"};
  Promise promise(Promised::patterns);
  const Sandbox box;
  for (const std::size_t length : kLengths) {
    box.write("a.txt", std::string(length, 'a') + "\n" + std::string(length, 'a') + "\n");
    for (const std::size_t stars : kStars) {
      std::string commands = "SET NOVERIFY\n";
      for (const std::string_view form : kForms) {
        // The mark stands for "a*a*a": the form's own star is the last.
        const std::string stem = repeated("a*", stars - 1) + "a";
        const std::string pattern = replaced(std::string(form), form == "$*%$" ? "$*" : "$", stem);
        commands += "FIND/BRIEF " + pattern + "\nBACKUP\nFNDNXT/NOTYPE\nADVANCE\n";
        commands += "SUBSTITUTE," + pattern + ",x,2/NOTYPE\nUNDO\n";
      }
      expect_answer(promise, box.run({"a.txt"}, commands + "QUIT\n"),
                    std::to_string(stars) + " stars on " + std::to_string(length));
    }
  }
}

TEST(Hostile, PatternsOfAMegabyte) {
  const std::size_t megabyte = long_or_short(1000000, 100000);
  constexpr std::string_view kParts[] = {"a*", "%*b", "?", "a", "[ab]", "*", "\\a", "[^b]*", "a?"};
  Promise promise(Promised::patterns);
  const Sandbox box;
  box.write("a.txt", std::string(100000, 'a') + "\n" + std::string(megabyte, 'a') + "\n");
  for (const std::string_view part : kParts) {
    const std::string pattern = repeated(part, megabyte / part.size());
    expect_answer(promise, box.run({"a.txt"}, "FIND/BRIEF " + pattern + "\nBACKUP\nFNDNXT/NOTYPE\nQUIT\n"),
                  "a megabyte of " + std::string(part));
  }
}
