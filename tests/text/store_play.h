#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/line_store.h"

// Line stores and what they must be, through the same edits. What differs is thrown.
namespace zan::test {

// The plain model of a text: one symbol per byte, and one beyond all bytes for the end of a line.
constexpr char16_t kBreak = 256;
using Model = std::u16string;

inline Model model_of(std::string_view bytes, bool breaks) {
  Model model;
  for (const char c : bytes) model += breaks && c == '\n' ? kBreak : static_cast<unsigned char>(c);
  return model;
}

inline std::string bytes_of_model(const Model& model) {
  std::string bytes;
  for (const char16_t symbol : model) bytes += symbol == kBreak ? '\n' : static_cast<char>(symbol);
  return bytes;
}

inline std::vector<std::string> lines_of(const Model& model) {
  std::vector<std::string> lines(1);
  for (const char16_t symbol : model) {
    if (symbol == kBreak) {
      lines.emplace_back();
    } else {
      lines.back() += static_cast<char>(symbol);
    }
  }
  return lines;
}

inline std::vector<std::string> walked_lines(const LineStore& store, std::uint64_t first = 0) {
  std::vector<std::string> lines;
  LineWalker walker(store, first);
  for (std::string_view line; walker.next(line);) lines.emplace_back(line);
  return lines;
}

inline void holds(bool condition) {
  if (!condition) throw std::logic_error("the line store is not what its model is");
}

template <typename A, typename B> void same(const A& a, const B& b) { holds(a == b); }

// What both directions of a walk over [begin, end) give; each chunk is checked against its offset.
inline std::string walked_bytes(const LineStore& store, std::uint64_t begin, std::uint64_t end,
                                bool forward) {
  std::string bytes;
  PieceWalker walker(store, begin, end);
  for (Chunk chunk; forward ? walker.next(chunk) : walker.previous(chunk);) {
    same(chunk.offset, forward ? begin + bytes.size() : end - bytes.size() - chunk.bytes.size());
    holds(!(chunk.bytes.empty()));
    bytes.insert(forward ? bytes.size() : 0, chunk.bytes);
  }
  return bytes;
}

struct Text {
  LineStore store;
  Model model;
};

// Random edits of several texts that take pieces from each other, as copies, snapshots and PASTE buffers do.
class Play {
 public:
  explicit Play(std::function<std::uint64_t()> choices) : choices_(std::move(choices)), texts_(4) {}

  void step() {
    Text& text = texts_[below(texts_.size())];
    const std::uint64_t begin = below(text.model.size() + 1);
    const std::uint64_t end = begin + below(std::min<std::uint64_t>(text.model.size() - begin, 300) + 1);
    edit(text, begin, end);
    if (text.model.size() > 20000) erase(text, 500, text.model.size() - 700);
    if (below(200) == 0) make_plain(text);
  }

  const LineStore& store(std::size_t number) const { return texts_[number].store; } // 0 to 3

  void check_all() const {
    for (const Text& text : texts_) check(text);
  }

 private:
  void edit(Text& text, std::uint64_t begin, std::uint64_t end) {
    switch (below(12)) {
    case 0:
      return insert(text, begin, some_bytes(40), true);
    case 1:
      return insert(text, begin, some_bytes(40), false);
    case 2:
      return type(text, begin);
    case 3:
      return insert(text, begin, some_bytes(below(20) == 0 ? 3000 : 200), true);
    case 4:
      return erase(text, begin, end);
    case 5:
      return erase(text, begin, begin + 1);
    case 6:
      return void(text = texts_[below(texts_.size())]);
    case 7:
      return insert_store(text, begin);
    case 8:
      return void(texts_[below(texts_.size())] = part(text, begin, end + 600));
    case 9:
      return rebuild(text);
    case 10:
      return move(text, begin, end);
    default:
      return check_places(text, begin, end);
    }
  }

  std::uint64_t below(std::uint64_t limit) { return choices_() % limit; }

  std::string some_bytes(std::uint64_t limit) {
    static constexpr std::string_view kAlphabet("ab\n\r\0\n\xff xyz", 11);
    std::string bytes(below(limit), ' ');
    for (char& c : bytes) c = kAlphabet[below(kAlphabet.size())];
    return bytes;
  }

  void insert(Text& text, std::uint64_t at, const std::string& bytes, bool breaks) {
    if (breaks) {
      text.store.insert_text(at, bytes);
    } else {
      text.store.insert_bytes(at, bytes);
    }
    text.model.insert(at, model_of(bytes, breaks));
  }

  void type(Text& text, std::uint64_t at) {
    for (const char c : some_bytes(30)) insert(text, at++, std::string(1, c), true);
    for (std::uint64_t back = std::min(at, below(20)); back > 0; --back, --at) erase(text, at - 1, at);
    insert(text, at, "!", false);
  }

  void erase(Text& text, std::uint64_t begin, std::uint64_t end) {
    text.store.erase(begin, end);
    text.model.erase(begin, end - begin);
  }

  static Text part(const Text& text, std::uint64_t begin, std::uint64_t end) {
    return {text.store.substore(begin, end), text.model.substr(begin, end - begin)};
  }

  void insert_store(Text& text, std::uint64_t at) {
    const std::uint64_t source = below(texts_.size()); // often the text itself
    text.store.insert(at, texts_[source].store);
    text.model.insert(at, Model(texts_[source].model));
  }

  void move(Text& text, std::uint64_t begin, std::uint64_t end) {
    const Text moved = part(text, begin, end);
    erase(text, begin, end);
    const std::uint64_t to = below(3) == 0 ? begin : below(text.model.size() + 1);
    text.store.insert(to, moved.store);
    text.model.insert(to, moved.model);
  }

  void make_plain(Text& text) {
    text.store = text.store.with_literals_as_breaks();
    std::ranges::replace(text.model, u'\n', kBreak);
    holds(!(text.store.holds_literal_breaks()));
  }

  void rebuild(Text& text) {
    LineStoreBuilder builder;
    Model model;
    for (std::uint64_t i = below(8); i > 0; --i) {
      const Text& source = texts_[below(texts_.size())];
      const std::uint64_t begin = below(source.model.size() + 1);
      const Text taken = part(source, begin, begin + below(3000));
      const std::string bytes = some_bytes(60);
      builder.append(source.store, begin, begin + taken.model.size());
      builder.append_bytes(bytes);
      builder.append_text(bytes);
      builder.append_break();
      builder.append(taken.store);
      model += taken.model + model_of(bytes, false) + model_of(bytes, true) + kBreak + taken.model;
    }
    text = {builder.finish(), model};
    holds(builder.finish().empty());
  }

  static void check_places(const Text& text, std::uint64_t begin, std::uint64_t end) {
    const LineStore& store = text.store;
    const std::string bytes = bytes_of_model(text.model).substr(begin, end - begin);
    same(store.slice(begin, end), bytes);
    same(walked_bytes(store, begin, end, true), bytes);
    same(walked_bytes(store, begin, end, false), bytes);
    const Model before = text.model.substr(0, begin);
    const auto row = static_cast<std::uint64_t>(std::ranges::count(before, kBreak));
    const Position at{row, before.size() - (before.rfind(kBreak) + 1)};
    same(store.position_of(begin), at);
    same(store.offset_of(at), begin);
    same(store.offset_of({row, ~std::uint64_t{0}}),
         std::min(text.model.find(kBreak, begin), text.model.size()));
    if (begin < end) {
      same(store.byte_at(begin), bytes[0]);
    }
  }

  static void check(const Text& text) {
    const std::vector<std::string> lines = lines_of(text.model);
    same(text.store.byte_count(), text.model.size());
    same(text.store.line_count(), lines.size());
    same(walked_lines(text.store), lines);
    for (std::uint64_t row = 0; row < lines.size(); row += 1 + lines.size() / 20)
      same(text.store.line(row), lines[row]);
    same(text.store.to_string(), bytes_of_model(text.model));
    same(text.store.ends_with_break(), !text.model.empty() && text.model.back() == kBreak);
    holds(text.store.holds_literal_breaks() || text.model.find(u'\n') == Model::npos);
    holds(text.store.may_hold_returns() || text.model.find(u'\r') == Model::npos);
    LineStoreBuilder builder;
    for (std::size_t row = 0; row < lines.size(); ++row) {
      if (row > 0) builder.append_break();
      builder.append_bytes(lines[row]);
    }
    LineStore same = builder.finish();
    holds(same == text.store);
    if (text.model.empty()) return;
    same.insert_text(same.byte_count(), "#");
    same.erase(0, 1);
    holds(!(same == text.store));
  }

  std::function<std::uint64_t()> choices_;
  std::vector<Text> texts_;
};

} // namespace zan::test
