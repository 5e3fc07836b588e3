#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "search/text_search.h"

// Searches that find nothing, or only what the constraints reject: the whole text is passed each time.
namespace {

using zan::LineStore;
using zan::Pattern;
using zan::SearchConstraints;

constexpr std::size_t kBytes = std::size_t{1} << 28;
constexpr std::sig_atomic_t kRunning = 0;

// Words of common letters in lines of 63 bytes.
const std::string& prose() {
  static const std::string text = [] {
    constexpr std::string_view letters = "eeeettaaooiinnsshrdlcumfpgwyb";
    std::string made(kBytes, ' ');
    std::minstd_rand random(1);
    for (std::size_t i = 0; i < made.size(); ++i) {
      const auto value = random() >> 8;
      made[i] = i % 64 == 63 ? '\n' : value % 6 == 0 ? ' ' : letters[value / 6 % letters.size()];
    }
    return made;
  }();
  return text;
}

const LineStore& whole() {
  static const LineStore text = LineStore::from_text(prose());
  return text;
}

// The same after many edits, one every 200 bytes.
const LineStore& in_pieces() {
  static const LineStore text = [] {
    LineStore made;
    for (std::size_t at = 0; at < kBytes / 8; at += 200) {
      made.insert(made.byte_count(), whole().substore(at, at + 200));
      made.insert_bytes(made.byte_count(), "z");
    }
    return made;
  }();
  return text;
}

// What no match satisfies in these texts, so that every one of them is looked at.
SearchConstraints never_satisfied() {
  SearchConstraints wanted{false, false, true, {}};
  wanted.delimiters['#'] = true;
  return wanted;
}

void search(benchmark::State& state, const LineStore& text, const std::string& source, bool exact,
            bool backward, const SearchConstraints& wanted) {
  const Pattern pattern(source, exact);
  const zan::Position end = text.position_of(text.byte_count());
  for (auto _ : state) {
    const auto found = backward ? zan::search_backward(text, pattern, end, wanted, kRunning)
                                : zan::search_forward(text, pattern, {0, 0}, wanted, kRunning);
    if (found) state.SkipWithError("found");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.byte_count()));
}

void add(const std::string& name, const std::string& source, bool exact, const SearchConstraints& wanted = {},
         const LineStore& (*text)() = whole) {
  for (const bool backward : {false, true})
    benchmark::RegisterBenchmark(
        (name + (backward ? "/backward" : "/forward")).c_str(),
        [=](benchmark::State& state) { search(state, text(), source, exact, backward, wanted); })
        ->Unit(benchmark::kMillisecond);
}

// Lines that are the worst text for patterns that nearly match.
const LineStore& monotone() {
  static const LineStore text = LineStore::from_text(std::string(1000000, 'a'));
  return text;
}

std::string repeated(std::string_view part, std::size_t count) {
  std::string made;
  for (std::size_t i = 0; i < count; ++i) made += part;
  return made;
}

const LineStore& alternating() {
  static const LineStore text = LineStore::from_text(repeated("ab", 500000));
  return text;
}

const bool added = [] {
  add("plain_exact", "receive", true);
  add("plain_general", "RECEIVE", false);
  add("plain_common", "the tea.", true);
  add("plain_one_byte", "Q", true);
  add("plain_pieces", "receive", true, {}, in_pieces);
  add("plain_rejected", "eat", true, never_satisfied());
  add("wildcard_literal", "rec%ive*now", true);
  add("wildcard_general", "REC%IVE*NOW", false);
  add("wildcard_common", "th*[Q]", true);
  add("wildcard_sets", "[xq][xq]", true);
  add("wildcard_rare_set", "t*[0-9]%[!@]", true);
  add("line_near_miss", repeated("ab", 2000) + "aa" + repeated("ab", 2000), true, {}, alternating);
  add("line_of_a_stars", repeated("a*", 100) + "b", true, {}, monotone);
  add("line_of_a_rejected", "a*a", true, never_satisfied(), monotone);
  return true;
}();

} // namespace
