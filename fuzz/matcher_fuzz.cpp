// Searching a text, forward and backward, against the naive search. The input: a line of letters that choose
// options and place, a line with the pattern, the text.
#include "fuzz/input.h"
#include "fuzz/naive_search.h"
#include "search/text_search.h"

namespace {

constexpr std::sig_atomic_t kNoAbort = 0;
constexpr std::string_view kDelimiters = " \t.,-";

// A text in several pieces, which it gets by being edited: "~" cuts it, "`" is a line feed inside a line.
zan::LineStore build(std::string_view text, std::vector<std::string>& lines) {
  zan::LineStore store;
  lines.assign(1, "");
  while (!text.empty()) {
    const std::string_view part = text.substr(0, text.find_first_of("~`"));
    text.remove_prefix(part.size());
    store.insert(store.byte_count(), zan::LineStore::from_text(part));
    for (const char c : part) {
      if (c == '\n') lines.emplace_back();
      else lines.back() += c;
    }
    if (text.starts_with('`')) {
      store.insert(store.byte_count(), zan::LineStore::from_line("\n"));
      lines.back() += '\n';
    }
    if (!text.empty()) text.remove_prefix(1);
  }
  return store;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 200) return 0;
  zan::fuzz::Input input(data, size);
  zan::fuzz::Input choices = input;
  input.line();
  std::string searched = input.line();
  std::replace(searched.begin(), searched.end(), '`', '\n');
  zan::fuzz::NaiveSearch wanted{std::move(searched), std::string(kDelimiters)};
  wanted.choose(choices);
  if (wanted.takes_too_long()) return 0;
  std::vector<std::string> lines;
  const zan::LineStore text = build(input.rest(), lines);
  const zan::Position start{choices.below(lines.size() + 2), choices.below(32)};

  const zan::Pattern pattern(wanted.pattern, wanted.exact);
  const zan::SearchConstraints constraints{wanted.begin, wanted.end, wanted.word, zan::byte_set(kDelimiters)};
  const zan::fuzz::NaiveSearcher naive(lines, wanted);
  const auto forward = zan::search_forward(text, pattern, start, constraints, kNoAbort);
  zan::fuzz::check(forward == naive.forward(start));
  const auto backward = zan::search_backward(text, pattern, start, constraints, kNoAbort);
  zan::fuzz::check(backward == naive.backward(start));
  for (const auto& found : {forward, backward}) {
    if (!found) continue;
    const zan::TextView line = text.line(found->row);
    zan::fuzz::check(pattern.match_length(line, found->col) == naive.length_at(*found));
  }
  return 0;
}
