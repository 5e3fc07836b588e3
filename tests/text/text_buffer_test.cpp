#include "text/text_buffer.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>

#include "tests/text/buffer_model.h"
#include "text/bytes.h"

namespace {

using zan::LineStore;
using zan::test::BufferModel;

struct Arguments {
  std::uint64_t row = 0, col = 0, row2 = 0, col2 = 0; // rows and columns may lie beyond the text
  std::uint64_t line = 0;                             // this one exists
  std::vector<std::uint64_t> columns;                 // of that line
  std::string bytes;
  LineStore text;
};

char changed(char c) { return c == '\n' ? 'N' : zan::to_upper(c); }

std::string said(char c) { return c == 0 ? "nothing" : std::string(1, c); }
std::string said(const std::string& text) { return text; }
std::string said(const LineStore& text) { return text.to_string(); }

// One kind of edit, of a buffer and of its model. What it hands out is told as text, with the place that it
// moved.
struct Edit {
  template <typename Make>
  Edit(const char* kind, Make make) : name(kind), model(telling(make)), buffer(telling(make)) {}

  template <typename Make> static auto telling(Make make) {
    return [make](auto& it, Arguments with) {
      std::string told;
      if constexpr (std::is_void_v<decltype(make(it, with))>) make(it, with);
      else told = said(make(it, with));
      return told + ", then at " + std::to_string(with.row) + " " + std::to_string(with.col);
    };
  }

  const char* name;
  std::function<std::string(BufferModel&, Arguments)> model;
  std::function<std::string(TextBuffer&, Arguments)> buffer;
};

const Edit kEdits[] = {
    {"insert_char", [](auto& it, auto& with) { it.insert_char(with.row, with.col, 'i'); }},
    {"split_line", [](auto& it, auto& with) { it.split_line(with.row, with.col); }},
    {"split_line_at", [](auto& it, auto& with) { it.split_line_at(with.line, with.columns); }},
    {"backspace", [](auto& it, auto& with) { return it.backspace(with.row, with.col); }},
    {"delete_at", [](auto& it, auto& with) { return it.delete_at(with.row, with.col); }},
    {"delete_to_eol", [](auto& it, auto& with) { return it.delete_to_eol(with.row, with.col); }},
    {"delete_to_bol", [](auto& it, auto& with) { return it.delete_to_bol(with.row, with.col); }},
    {"delete_word_forward",
     [](auto& it, auto& with) { return it.delete_word_forward(with.row, with.col, " ."); }},
    {"delete_word_backward",
     [](auto& it, auto& with) { return it.delete_word_backward(with.row, with.col, " ."); }},
    {"insert_text", [](auto& it, auto& with) { it.insert_text(with.row, with.col, with.text); }},
    {"replace_in_line",
     [](auto& it, auto& with) { it.replace_in_line(with.line, with.col, with.col2, with.bytes); }},
    {"transform_span",
     [](auto& it, auto& with) {
       it.transform_span({with.line, with.col},
                         std::max<zan::Position>({with.line, with.col}, {with.row2, with.col2}), changed);
     }},
    {"text_in_span",
     [](auto& it, auto& with) { return it.text_in_span(with.row, with.col, with.row2, with.col2); }},
    {"delete_span",
     [](auto& it, auto& with) { return it.delete_span(with.row, with.col, with.row2, with.col2); }},
    {"delete_range", [](auto& it, auto& with) { return it.delete_range(with.row, with.row2); }},
    {"delete_line", [](auto& it, auto& with) { return it.delete_line(with.row); }},
    {"append_lines", [](auto& it, auto& with) { it.append_lines(with.text); }},
    {"insert_lines", [](auto& it, auto& with) { it.insert_lines(with.row, with.text); }},
    {"set_mark", [](auto& it, auto& with) { it.set_mark(with.row, with.col); }},
    {"clear_mark", [](auto& it, auto&) { it.clear_mark(); }},
    {"clamp_mark", [](auto& it, auto&) { it.clamp_mark(); }},
    {"set_text", [](auto& it, auto& with) { it.set_text(with.text); }},
    {"clear", [](auto& it, auto&) { it.clear(); }},
    {"ensure_row", [](auto& it, auto& with) { it.ensure_row(with.row); }},
    {"replace_lines", [](auto& it, auto& with) { it.replace_lines(with.text); }},
};

std::string state(const std::vector<std::string>& lines, const std::string& text, bool modified,
                  bool has_mark, std::uint64_t mark_row, std::uint64_t mark_col) {
  std::string shown;
  for (const std::string& line : lines) shown += "|" + line + "|\n";
  return shown + "as text " + text + (modified ? "\nmodified" : "\nnot modified") +
         (has_mark ? ", mark " : ", no mark ") + std::to_string(mark_row) + " " + std::to_string(mark_col);
}

class BufferPlay {
 public:
  explicit BufferPlay(unsigned seed) : random_(seed) {}

  void step() {
    if (below(3) == 0) buffer_.clear_modified(), model_.modified = false;
    if (model_.count() > 12) buffer_.delete_range(1, 8), model_.delete_range(1, 8);
    if (below(4) == 0) mark_somewhere();
    const std::string before = model_state();
    const Edit& edit = kEdits[below(std::size(kEdits))];
    const Arguments with = arguments();
    const std::string told = edit.buffer(buffer_, with), wanted = edit.model(model_, with);
    const std::string after =
        state(zan::test::walked_lines(buffer_.lines()), buffer_.text().to_string(), buffer_.modified(),
              buffer_.has_mark(), buffer_.mark_row(), buffer_.mark_col());
    ASSERT_EQ(told + "\n" + after, wanted + "\n" + model_state())
        << edit.name << " of " << with.row << " " << with.col << ", to " << with.row2 << " " << with.col2
        << ", line " << with.line << ", columns " << testing::PrintToString(with.columns) << ", bytes \""
        << with.bytes << "\", before it:\n"
        << before;
  }

 private:
  std::uint64_t below(std::uint64_t limit) { return random_() % limit; }

  std::string model_state() const {
    return state(model_.lines, model_.text(), model_.modified, model_.has_mark, model_.mark.row,
                 model_.mark.col);
  }

  // Places near the mark and the ends of lines come often.
  std::uint64_t some_row() { return below(4) == 0 ? model_.mark.row : below(model_.count() + 2); }
  std::uint64_t some_col(std::uint64_t row) {
    const std::uint64_t length = model_.length(row);
    return below(4) == 0 ? model_.mark.col + below(2) : below(5) == 0 ? length : below(length + 3);
  }
  void mark_somewhere() {
    const std::uint64_t row = below(model_.count()), col = some_col(row);
    buffer_.set_mark(row, col);
    model_.set_mark(row, col);
  }

  Arguments arguments() {
    Arguments with;
    with.row = some_row();
    with.row2 = with.row + below(3);
    with.col = some_col(with.row);
    with.col2 = some_col(with.row2);
    with.line = below(model_.count());
    for (std::uint64_t col = below(3); col <= model_.length(with.line); col += 1 + below(4))
      with.columns.push_back(col);
    for (std::uint64_t size = below(8); size > 0; --size) with.bytes += "ab. \n\r\n"[below(7)];
    with.text = below(4) == 0 ? LineStore::from_line(with.bytes) : LineStore::from_text(with.bytes);
    return with;
  }

  std::mt19937 random_;
  TextBuffer buffer_;
  BufferModel model_;
};

} // namespace

TEST(TextBuffer, IsWhatItsModelIsAfterEveryEdit) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    BufferPlay play(seed);
    for (int step = 0; step < 200 && !testing::Test::HasFatalFailure(); ++step) play.step();
  }
}

TEST(TextBuffer, WhatCannotBeLoadedIsOneEmptyLine) {
  TextBuffer buffer;
  buffer.set_text("a\nb");
  buffer.set_mark(1, 1);
  EXPECT_FALSE(buffer.load("/nowhere/file"));
  EXPECT_EQ(buffer.filename(), "/nowhere/file");
  EXPECT_FALSE(buffer.modified() || buffer.has_mark());
  buffer.insert_char(0, 0, 'x');
  EXPECT_EQ(buffer.text().to_string(), "x\n");
}
