// The line store against a vector of strings, through edits and copies. The input: letters that choose an
// operation and its places, each followed by what it takes; texts end at "|".

#include "fuzz/input.h"
#include "text/byte_scan.h"
#include "text/line_store.h"

namespace {

using zan::fuzz::check;

// Bytes, of which those that end a line are marked: a line feed may also stand inside one.
struct Model {
  std::string bytes;
  std::vector<bool> breaks;

  void insert(std::size_t at, const Model& other) {
    bytes.insert(at, other.bytes);
    breaks.insert(breaks.begin() + static_cast<std::ptrdiff_t>(at), other.breaks.begin(), other.breaks.end());
  }
  void erase(std::size_t begin, std::size_t end) {
    bytes.erase(begin, end - begin);
    breaks.erase(breaks.begin() + static_cast<std::ptrdiff_t>(begin),
                 breaks.begin() + static_cast<std::ptrdiff_t>(end));
  }
  Model part(std::size_t begin, std::size_t end) const {
    return {bytes.substr(begin, end - begin),
            {breaks.begin() + static_cast<std::ptrdiff_t>(begin),
             breaks.begin() + static_cast<std::ptrdiff_t>(end)}};
  }
  std::vector<std::string> lines() const {
    std::vector<std::string> lines(1);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      if (breaks[i]) lines.emplace_back();
      else lines.back() += bytes[i];
    }
    return lines;
  }
};

Model model_of(std::string_view text, bool line_feeds_break) {
  Model model{std::string(text), {}};
  for (const char c : text) model.breaks.push_back(line_feeds_break && c == '\n');
  return model;
}

std::string take_text(zan::fuzz::Input& input) {
  std::string text;
  for (char c = '\0'; !input.empty() && (c = static_cast<char>(input.byte())) != '|';) text += c;
  return text;
}

struct Pair {
  zan::LineStore store;
  Model model;
};

void edit(Pair& pair, Pair& other, zan::fuzz::Input& input) {
  auto& [store, model] = pair;
  const std::size_t size = model.bytes.size();
  const char operation = static_cast<char>(input.byte());
  std::size_t begin = input.below(size + 1);
  std::size_t end = input.below(size + 1);
  if (begin > end) std::swap(begin, end);
  switch (operation) {
  case 't':
  case 'b': {
    const std::string text = take_text(input);
    if (operation == 't') store.insert_text(begin, text);
    else store.insert_bytes(begin, text);
    return model.insert(begin, model_of(text, operation == 't'));
  }
  case 'e':
    store.erase(begin, end);
    return model.erase(begin, end);
  case 'c': // both go on, sharing text
    other = pair;
    return;
  case 'x':
    return std::swap(pair, other);
  case 'i':
    if (size + other.model.bytes.size() > 4096) return;
    store.insert(begin, other.store);
    return model.insert(begin, Model(other.model));
  case 's':
    other = {store.substore(begin, end), model.part(begin, end)};
    return;
  case 'l':
    store = store.with_literals_as_breaks();
    model = model_of(model.bytes, true);
    return;
  case 'r': { // written anew, with a text in between
    zan::LineStoreBuilder builder;
    const std::string text = take_text(input);
    builder.append(store, 0, begin);
    builder.append_bytes(text);
    builder.append_break();
    builder.append(store, end, size);
    store = builder.finish();
    model.erase(begin, end);
    model.insert(begin, model_of("\n", true));
    return model.insert(begin, model_of(text, false));
  }
  default:
    return;
  }
}

void compare(const zan::LineStore& store, const Model& model) {
  const std::vector<std::string> lines = model.lines();
  check(store.line_count() == lines.size() && store.byte_count() == model.bytes.size());
  check(store.to_string() == model.bytes);
  check(store.empty() == model.bytes.empty());
  check(store.ends_with_break() == (!model.bytes.empty() && model.breaks.back()));
  zan::LineWalker walker(store, 0);
  std::size_t start = 0;
  for (std::size_t row = 0; row < lines.size(); ++row) {
    std::string_view walked;
    check(walker.next(walked) && walked == lines[row] && store.line(row).get() == lines[row]);
    check(store.line_start(row) == start && store.line_length(row) == lines[row].size());
    start += lines[row].size();
    check(store.position_of(start) == zan::Position{row, lines[row].size()});
    check(store.offset_of({row, lines[row].size() + 3}) == start);
    ++start;
  }
  check(store.line(lines.size()).get().empty());
  zan::PieceWalker pieces(store, 0, store.byte_count());
  std::string gathered;
  for (zan::Chunk chunk; pieces.previous(chunk);) {
    for (std::size_t i = 0; i < chunk.bytes.size(); ++i)
      check(model.breaks[chunk.offset + i] == (chunk.bytes[i] == '\n' && !chunk.literal));
    gathered.insert(0, chunk.bytes);
  }
  check(gathered == model.bytes);
}

void look_at(const Pair& pair, zan::fuzz::Input& input) {
  const auto& [store, model] = pair;
  const std::size_t size = model.bytes.size();
  std::size_t begin = input.below(size + 1);
  std::size_t end = input.below(size + 1);
  if (begin > end) std::swap(begin, end);
  check(store.slice(begin, end).get() == model.bytes.substr(begin, end - begin));
  if (begin < size) check(store.byte_at(begin) == model.bytes[begin]);
  const bool member = input.flag();
  const zan::ByteSet set = zan::byte_set("ab \n");
  const auto fits = [&](char c) { return set[static_cast<unsigned char>(c)] == member; };
  const auto first = model.bytes.begin() + static_cast<std::ptrdiff_t>(begin);
  const auto last = model.bytes.begin() + static_cast<std::ptrdiff_t>(end);
  const auto found = static_cast<std::size_t>(std::find_if(first, last, fits) - model.bytes.begin());
  check(zan::scan_forward(store, begin, end, set, member) == found);
  std::size_t back = end;
  while (back > begin && !fits(model.bytes[back - 1])) --back;
  check(zan::scan_backward(store, begin, end, set, member) == back);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zan::fuzz::Input input(data, size);
  Pair pair, other;
  while (!input.empty()) {
    edit(pair, other, input);
    look_at(pair, input);
    compare(pair.store, pair.model);
    compare(other.store, other.model);
  }
  const bool same = pair.model.lines() == other.model.lines();
  check((pair.store == other.store) == same);
  return 0;
}
