#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/abort.h"
#include "search/substring.h"

namespace zan {

// Is there an unescaped * ? % [ ^ or $ in it?
bool has_wildcards(std::string_view pattern);

// A search string, compiled, and its matches in one line. A plain string is searched byte by byte; a wildcard
// pattern holds % ? * [set] \c, a last $ and a leading ^, and is read up to its first NUL. Without `exact`,
// A to Z match like a to z; the line is never copied to fold it.
//
// A star matches the shortest run that lets the rest match. So the segments between stars are found one after
// the other, each as far left as it fits. When one is not found, a later start of the match cannot help: no
// search costs more than pattern length times line length.
// In a line of many megabytes that may take seconds. So the searches in a line look at an abort flag; once it
// is set, their results mean nothing.
class Pattern {
 public:
  // How the source is read: as what a user searches for, or as pattern elements whatever it holds (then ^ is
  // a character like others).
  enum class Reading { search_string, elements };
  Pattern(std::string_view source, bool exact, Reading reading = Reading::search_string);

  bool empty() const { return empty_; }
  bool is_wildcard() const { return wildcard_; }
  bool is_anchored() const { return anchored_; }    // a leading ^: column 0 only
  const Substring& plain() const { return plain_; } // of a plain string; otherwise empty
  // The bytes in every match that are rarest in ordinary text. Empty when there are none without a line feed.
  const Substring& required() const { return required_; }
  bool requires_line_feed() const { return requires_line_feed_; } // every match contains one

  // Length of the match that starts at col (at most the line's length), whatever an anchor says.
  std::optional<std::size_t> match_at(std::string_view line, std::size_t col,
                                      Abort& abort = kNeverAborted) const;
  // Column of the first match at or after `from`.
  std::optional<std::size_t> find_forward(std::string_view line, std::size_t from,
                                          Abort& abort = kNeverAborted) const;
  // Column of the last match before the limit: a plain one ends there or before, a wildcard one starts there
  // or before. `limit` is at most the line's length.
  std::optional<std::size_t> find_backward(std::string_view line, std::size_t limit,
                                           Abort& abort = kNeverAborted) const;
  // Length of the match at col: of the pattern itself, when it is plain or does not match there.
  std::size_t match_length(std::string_view line, std::size_t col, Abort& abort = kNeverAborted) const;

 private:
  friend class BackwardMatches;
  enum class Kind : unsigned char { byte, any, set, end, never };
  struct Element {
    Kind kind;
    unsigned char byte = 0; // of Kind::byte
    std::uint32_t set = 0;  // of Kind::set, an index
  };
  // The elements between two stars. Each matches one byte, except a last `end`.
  struct Segment {
    std::size_t first = 0;
    std::size_t count = 0;  // elements
    std::size_t length = 0; // bytes
    bool at_end = false;
    Substring run; // the longest sequence of fixed bytes in it
    std::size_t run_at = 0;
    std::bitset<256> starts; // without a run: the bytes that it may start with
  };

  void compile(std::string_view source);
  std::size_t compile_set(std::string_view source, std::size_t at);
  void add(Kind kind, unsigned char byte = 0, std::uint32_t set = 0);
  void prepare(Segment& segment) const;
  std::size_t find_run(Segment& segment) const;
  void require(const Substring& bytes);
  void require_sets();
  bool accepts(const Element& element, char c) const;
  bool fits(const Segment& segment, std::string_view line, std::size_t at) const;
  std::size_t first_candidate(const Segment& segment, std::string_view line, std::size_t at,
                              std::size_t last) const;
  std::size_t last_candidate(const Segment& segment, std::string_view line, std::size_t first,
                             std::size_t at) const;
  std::size_t first_fit(const Segment& segment, std::string_view line, std::size_t from, std::size_t stop,
                        Abort& abort) const;
  std::size_t last_fit(const Segment& segment, std::string_view line, std::size_t limit, Abort& abort) const;
  std::optional<std::size_t> match_tail(std::string_view line, std::size_t from, Abort& abort) const;

  bool exact_;
  bool empty_;
  bool wildcard_;
  bool anchored_ = false;
  bool requires_line_feed_ = false;
  std::size_t source_length_;
  Substring plain_;
  Substring required_;
  std::vector<Element> elements_;
  std::vector<Segment> segments_; // of a wildcard pattern: one more than it has stars
  std::vector<std::bitset<256>> sets_;
};

// The matches in one line from right to left. It caches where the segments between stars fit: all steps over
// a line together cost no more than pattern length times line length.
class BackwardMatches {
 public:
  // All must outlive it.
  BackwardMatches(const Pattern& pattern, std::string_view line, Abort& abort = kNeverAborted)
      : pattern_(pattern), line_(line), abort_(abort) {}

  // As Pattern::find_backward.
  std::optional<std::size_t> previous(std::size_t limit);
  // As Pattern::match_length, at a column that previous() gave; these never increase.
  std::size_t length_at(std::size_t col);

 private:
  // The first place at or after `from` where a segment fits.
  struct FirstFit {
    std::size_t from = std::string_view::npos; // npos: not searched yet
    std::size_t at = std::string_view::npos;
  };

  std::size_t last_tail() const;
  std::size_t first_fit(std::size_t segment, std::size_t from);

  const Pattern& pattern_;
  std::string_view line_;
  Abort& abort_;
  std::optional<std::size_t> last_tail_; // the last place where what follows the first star matches
  std::vector<FirstFit> first_fits_;     // of the segments after the first
};

} // namespace zan
