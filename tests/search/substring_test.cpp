#include "search/substring.h"

#include <gtest/gtest.h>

#include <random>

#include "text/bytes.h"

using zan::Substring;

namespace {

void expect_as_standard(const std::string& needle, const std::string& text, bool exact) {
  const Substring substring(needle, exact);
  const std::string plain_needle = exact ? needle : zan::lower(needle);
  const std::string plain_text = exact ? text : zan::lower(text);
  for (std::size_t at = 0; at <= text.size() + 1; ++at) {
    SCOPED_TRACE("\"" + needle + "\" in \"" + text + "\", place " + std::to_string(at));
    ASSERT_EQ(substring.find(text, at), plain_text.find(plain_needle, at));
    const auto head = std::string_view(plain_text).substr(0, at);
    ASSERT_EQ(substring.find_last(text, at), head.rfind(plain_needle));
  }
}

} // namespace

TEST(Substring, FindsWhatTheStandardSearchFinds) {
  std::mt19937 random(11);
  for (int round = 0; round < 1500; ++round) {
    const std::string_view letters = round % 3 == 0 ? "ab" : "aA@Z[z`{\xc1\xe1\n";
    std::string text(random() % 300, ' ');
    for (char& c : text) c = letters[random() % letters.size()];
    std::string needle(random() % 4, 'a');
    for (char& c : needle) c = letters[random() % letters.size()];
    if (round % 2 == 0) needle = text.substr(random() % (text.size() + 1), random() % 60);
    expect_as_standard(needle, text, round % 5 < 3);
  }
}

// A long needle whose rarer bytes fit nearly everywhere goes over to the automaton, also in the middle of
// matching.
TEST(Substring, FindsLongNeedlesInTextsThatNearlyHoldThem) {
  const auto repeat = [](const std::string& part, int count) {
    std::string made;
    for (int i = 0; i < count; ++i) made += part;
    return made;
  };
  const std::string needle = repeat("ab", 30) + "aa" + repeat("ab", 30);
  const std::string miss = repeat("ab", 300);
  for (const bool exact : {true, false}) {
    expect_as_standard(needle, miss, exact);
    expect_as_standard(needle, miss + needle.substr(2) + needle + miss, exact);
    expect_as_standard(needle, miss + needle.substr(0, 90) + "A" + needle + "\n" + needle + "ab", exact);
  }
  // Byte by byte at each place this would take minutes.
  const std::string long_needle = repeat("ab", 100000) + "aa" + repeat("ab", 100000);
  const std::string long_text = repeat("ab", 1000000);
  EXPECT_EQ(Substring(long_needle, true).find(long_text, 0), Substring::npos);
  EXPECT_EQ(Substring(long_needle, false).find_last(long_text, long_text.size()), Substring::npos);
}
