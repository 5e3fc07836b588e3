#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "text/file_state.h"
#include "text/line_store.h"
#include "text/load_file.h"

// One editable text: its lines, file name, flags and mark. A value; copies share unchanged text (LineStore),
// so a copy costs the same whatever the size. Rows and columns are zero-based byte positions; a column may
// equal the line's length. Removed and copied text is handed out as a LineStore that shares it: the text
// "a\nb\n" is the three lines "a", "b" and "".
class TextBuffer {
 public:
  const std::string& filename() const { return filename_; }
  void set_filename(std::string name) { filename_ = std::move(name); }
  bool modified() const { return modified_; }
  void clear_modified() { modified_ = false; }
  void mark_modified() { modified_ = true; }
  // The file that the text was loaded from, whatever has been done to the text since; null: none.
  const zan::OriginRef& origin() const { return origin_; }
  void set_origin(zan::OriginRef origin) { origin_ = std::move(origin); }

  // ---- reading
  const zan::LineStore& lines() const { return lines_; }
  std::uint64_t line_count() const { return lines_.line_count(); }
  zan::TextView line(std::uint64_t row) const { return lines_.line(row); } // "" past the end
  std::uint64_t line_length(std::uint64_t row) const {
    return row < line_count() ? lines_.line_length(row) : 0;
  }
  zan::LineStore text() const; // the lines, and a last line feed when final_newline; one empty line gives ""
  zan::LineStore text_in_span(std::uint64_t r1, std::uint64_t c1, std::uint64_t r2, std::uint64_t c2) const;
  // Lines first..last, last clamped. Nothing when first is past the end or after last.
  std::optional<zan::LineStore> lines_in_range(std::uint64_t first, std::uint64_t last) const;

  // ---- whole text
  // False when it cannot be read, or `abort` was set meanwhile: then one empty line.
  bool load(const std::string& path, zan::Abort& abort = zan::kNeverAborted);
  void set_text(const zan::LineStore& text);
  void set_text(std::string_view text) { set_text(zan::LineStore::from_text(text)); }
  void clear();
  void ensure_row(std::uint64_t row); // appends empty lines until row exists
  // Puts `lines` in place of the whole text, as a command that rewrites lines does: flags and mark stay, but
  // for modified, which is set.
  void replace_lines(zan::LineStore lines);

  // ---- character edits: each keeps the mark on its text and sets modified when it changes something
  void insert_char(std::uint64_t row, std::uint64_t col, char c);
  void split_line(std::uint64_t row, std::uint64_t col);
  // Splits one line at several of its columns, given in increasing order, in one pass.
  void split_line_at(std::uint64_t row, std::span<const std::uint64_t> columns);
  // The byte removed, '\n' when lines were joined, 0 when nothing changed.
  char backspace(std::uint64_t& row, std::uint64_t& col);
  char delete_at(std::uint64_t row, std::uint64_t col);
  zan::LineStore delete_to_eol(std::uint64_t row, std::uint64_t col);
  zan::LineStore delete_to_bol(std::uint64_t row, std::uint64_t& col);
  zan::LineStore delete_word_forward(std::uint64_t row, std::uint64_t& col, std::string_view delimiters);
  zan::LineStore delete_word_backward(std::uint64_t& row, std::uint64_t& col, std::string_view delimiters);
  void insert_text(std::uint64_t& row, std::uint64_t& col, const zan::LineStore& text); // position: after it
  // Puts `bytes` (line feeds stay inside the line) in place of `length` bytes at (row, col). The mark's
  // stored position stays as it is; modified is set when a byte changed.
  void replace_in_line(std::uint64_t row, std::uint64_t col, std::uint64_t length, std::string_view bytes);
  // Puts change(c) in place of every byte c of the span, line breaks excepted. The mark's stored position
  // stays.
  void transform_span(zan::Position start, zan::Position end, char (*change)(char));

  // ---- spans and lines
  zan::LineStore delete_span(std::uint64_t r1, std::uint64_t c1, std::uint64_t r2, std::uint64_t c2);
  zan::LineStore delete_range(std::uint64_t first, std::uint64_t last); // each line followed by a line feed
  zan::LineStore delete_line(std::uint64_t row);
  void append_lines(const zan::LineStore& lines); // replaces the text when it is one empty line
  void insert_lines(std::uint64_t at, const zan::LineStore& lines); // likewise

  // ---- the mark: the fixed end of the select range
  void set_mark(std::uint64_t row, std::uint64_t col);
  void clear_mark();
  bool has_mark() const { return mark_.has_value(); }
  std::uint64_t mark_row() const { return mark_.value_or(zan::Position()).row; }
  std::uint64_t mark_col() const { return mark_.value_or(zan::Position()).col; }
  void clamp_mark();

  // ---- search/: one pattern against lines
  static bool has_wildcards(const std::string& pattern);
  static std::string to_lower(std::string_view text);
  // Length of the match at the start of text[0, length), or -1. `pattern` is read up to its NUL.
  static std::int64_t wmatch(const char* pattern, const char* text, std::size_t length);
  std::optional<zan::Position> find_forward(const std::string& pattern, std::uint64_t row, std::uint64_t col,
                                            bool exact) const;
  std::optional<zan::Position> find_backward(const std::string& pattern, std::uint64_t row, std::uint64_t col,
                                             bool exact) const;
  std::uint64_t match_len_at(const std::string& pattern, std::uint64_t row, std::uint64_t col,
                             bool exact) const;

 private:
  // What an edit does to positions: those in [begin, end] come to lie at `end_now`, those after them as far
  // behind it as they were behind `end`. The mark's column may lie beyond its line's end.
  struct Edit {
    zan::Position begin;
    zan::Position end;
    zan::Position end_now;
  };
  static zan::Position moved(zan::Position at, const Edit& edit);
  void after_edit(const Edit& edit); // moves the mark, sets modified
  void after_erase(zan::Position begin, zan::Position end);
  void join_with_next(std::uint64_t row); // row + 1 exists

  std::string filename_;
  zan::OriginRef origin_;
  zan::LineStore lines_;
  bool modified_ = false;
  bool final_newline_ = true;
  std::optional<zan::Position> mark_;
};
