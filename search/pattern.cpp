#include "search/pattern.h"

#include <algorithm>

#include "text/bytes.h"

namespace zan {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

std::optional<std::size_t> found_at(std::size_t at) { return at == kNone ? std::nullopt : std::optional(at); }

bool is_wildcard_byte(char c) { return std::string_view("*?%[^$").find(c) != std::string_view::npos; }

} // namespace

bool has_wildcards(std::string_view pattern) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\\') ++i;
    else if (is_wildcard_byte(pattern[i])) return true;
  }
  return false;
}

Pattern::Pattern(std::string_view source, bool exact, Reading reading)
    : exact_(exact), empty_(source.empty()), wildcard_(reading == Reading::elements || has_wildcards(source)),
      source_length_(source.size()) {
  const std::string folded = exact ? std::string() : lower(source);
  if (!exact) source = folded;
  if (!wildcard_) {
    plain_ = Substring(source, exact);
    require(plain_);
    return;
  }
  source = source.substr(0, source.find('\0'));
  if (reading == Reading::search_string && source.starts_with('^')) {
    anchored_ = true;
    source.remove_prefix(1);
  }
  compile(source);
  for (Segment& segment : segments_) {
    prepare(segment);
    require(segment.run);
  }
  require_sets();
}

void Pattern::require(const Substring& bytes) {
  const bool line_feed = bytes.bytes().find('\n') != kNone;
  requires_line_feed_ = requires_line_feed_ || line_feed;
  if (line_feed || bytes.empty()) return;
  if (required_.empty() || bytes.commonness() < required_.commonness()) required_ = bytes;
}

// A set of one or two bytes can be searched for like a byte, and may be rarer than every byte of the pattern.
void Pattern::require_sets() {
  for (const std::bitset<256>& set : sets_) {
    if (set.count() == 0 || set.count() > 2) continue;
    std::string members;
    for (unsigned byte = 0; byte < set.size(); ++byte)
      if (set[byte]) members += static_cast<char>(static_cast<unsigned char>(byte));
    if (members.find('\n') == kNone) require(Substring::either(members.front(), members.back(), exact_));
  }
}

void Pattern::compile(std::string_view source) {
  segments_.emplace_back();
  for (std::size_t i = 0; i < source.size(); ++i) {
    const char c = source[i];
    if (c == '*') {
      if (i == 0 || source[i - 1] != '*' || segments_.back().count > 0)
        segments_.emplace_back().first = elements_.size();
    } else if (c == '\\') {
      if (++i < source.size()) add(Kind::byte, to_byte(source[i]));
      else add(Kind::never);
    } else if (c == '$' && i + 1 == source.size()) {
      add(Kind::end);
    } else if (c == '%' || c == '?') {
      add(Kind::any);
    } else if (c == '[') {
      i = compile_set(source, i + 1);
    } else {
      add(Kind::byte, to_byte(c));
    }
  }
}

// Reads a set whose first byte is at `at`; returns the place of its last one (the "]", when it has one).
std::size_t Pattern::compile_set(std::string_view source, std::size_t at) {
  std::bitset<256> members;
  const bool negated = at < source.size() && source[at] == '^';
  if (negated) ++at;
  for (; at < source.size() && source[at] != ']'; ++at) {
    const unsigned char low = to_byte(source[at]);
    unsigned char high = low;
    if (at + 2 < source.size() && source[at + 1] == '-' && source[at + 2] != ']') {
      at += 2;
      high = to_byte(source[at]);
    }
    for (unsigned value = low; value <= high; ++value) members.set(value);
  }
  sets_.push_back(negated ? ~members : members);
  add(Kind::set, 0, static_cast<std::uint32_t>(sets_.size() - 1));
  return at;
}

void Pattern::add(Kind kind, unsigned char byte, std::uint32_t set) {
  elements_.push_back({kind, byte, set});
  Segment& segment = segments_.back();
  ++segment.count;
  if (kind == Kind::end) segment.at_end = true;
  else ++segment.length;
}

inline bool Pattern::accepts(const Element& element, char c) const {
  const unsigned char byte = to_byte(exact_ ? c : folded(c));
  switch (element.kind) {
  case Kind::byte:
    return byte == element.byte;
  case Kind::set:
    return sets_[element.set].test(byte);
  case Kind::never:
    return false;
  case Kind::any:
  case Kind::end:
    break;
  }
  return true;
}

// Finds out what a search for the segment looks for first.
void Pattern::prepare(Segment& segment) const {
  const std::size_t length = find_run(segment);
  std::string run(length, '\0');
  for (std::size_t i = 0; i < length; ++i)
    run[i] = static_cast<char>(elements_[segment.first + segment.run_at + i].byte);
  segment.run = Substring(run, exact_);
  if (segment.length == 0 || length > 0) return;
  for (unsigned byte = 0; byte < 256; ++byte)
    segment.starts[byte] = accepts(elements_[segment.first], static_cast<char>(byte));
}

// Sets run_at, and returns the run's length.
std::size_t Pattern::find_run(Segment& segment) const {
  std::size_t best = 0;
  for (std::size_t i = 0, length = 0; i < segment.count; ++i) {
    length = elements_[segment.first + i].kind == Kind::byte ? length + 1 : 0;
    if (length <= best) continue;
    best = length;
    segment.run_at = i + 1 - length;
  }
  return best;
}

// ---- one place

inline bool Pattern::fits(const Segment& segment, std::string_view line, std::size_t at) const {
  if (line.size() - at < segment.length || (segment.at_end && line.size() - at != segment.length))
    return false;
  const Element* const elements = elements_.data() + segment.first;
  for (std::size_t i = 0; i < segment.length; ++i)
    if (!accepts(elements[i], line[at + i])) return false;
  return true;
}

std::optional<std::size_t> Pattern::match_at(std::string_view line, std::size_t col, Abort& abort) const {
  if (!wildcard_) {
    const bool equal = plain_.find(line.substr(0, col + plain_.size()), col) == col;
    return equal ? std::optional(plain_.size()) : std::nullopt;
  }
  const Segment& head = segments_.front();
  if (!fits(head, line, col)) return std::nullopt;
  const auto end = match_tail(line, col + head.length, abort);
  return end ? std::optional(*end - col) : std::nullopt;
}

std::size_t Pattern::match_length(std::string_view line, std::size_t col, Abort& abort) const {
  if (!wildcard_) return source_length_;
  if (col > line.size()) return 0;
  return match_at(line, col, abort).value_or(source_length_);
}

// ---- a line, forward

// The first place in [at, last] where the segment may fit: its run stands there, or a byte it may start with.
std::size_t Pattern::first_candidate(const Segment& segment, std::string_view line, std::size_t at,
                                     std::size_t last) const {
  if (!segment.run.empty()) {
    const std::string_view searched = line.substr(0, last + segment.run_at + segment.run.size());
    const std::size_t run = segment.run.find(searched, at + segment.run_at);
    return run == kNone ? kNone : run - segment.run_at;
  }
  if (segment.length == 0) return at;
  while (at <= last && !segment.starts[to_byte(line[at])]) ++at;
  return at <= last ? at : kNone;
}

// The first place in [from, stop) where the segment fits.
std::size_t Pattern::first_fit(const Segment& segment, std::string_view line, std::size_t from,
                               std::size_t stop, Abort& abort) const {
  if (line.size() - from < segment.length) return kNone;
  const std::size_t highest = line.size() - segment.length;
  const std::size_t last = std::min(highest, stop - 1);
  for (std::size_t at = segment.at_end ? highest : from; at <= last && abort == 0; ++at) {
    at = first_candidate(segment, line, at, last);
    if (at == kNone || fits(segment, line, at)) return at;
  }
  return kNone;
}

// Where the segments after the first one end, when they are found at or after `from`.
std::optional<std::size_t> Pattern::match_tail(std::string_view line, std::size_t from, Abort& abort) const {
  for (std::size_t i = 1; i < segments_.size(); ++i) {
    const std::size_t at = first_fit(segments_[i], line, from, kNone, abort);
    if (at == kNone) return std::nullopt;
    from = at + segments_[i].length;
  }
  return from;
}

std::optional<std::size_t> Pattern::find_forward(std::string_view line, std::size_t from,
                                                 Abort& abort) const {
  if (from > line.size() || (anchored_ && from != 0)) return std::nullopt;
  if (!wildcard_) return found_at(plain_.find(line, from));
  if (anchored_) return match_at(line, 0, abort) ? std::optional<std::size_t>(0) : std::nullopt;
  const Segment& head = segments_.front();
  const std::size_t col = first_fit(head, line, from, kNone, abort);
  // Where the tail is not found after this column, it is not found after a later one.
  return col != kNone && match_tail(line, col + head.length, abort) ? std::optional(col) : std::nullopt;
}

// ---- a line, backward

// As first_candidate, the last place in [first, at].
std::size_t Pattern::last_candidate(const Segment& segment, std::string_view line, std::size_t first,
                                    std::size_t at) const {
  if (!segment.run.empty()) {
    const std::size_t run = segment.run.find_last(line, at + segment.run_at + segment.run.size());
    return run == kNone || run < first + segment.run_at ? kNone : run - segment.run_at;
  }
  if (segment.length == 0) return at;
  while (at > first && !segment.starts[to_byte(line[at])]) --at;
  return segment.starts[to_byte(line[at])] ? at : kNone;
}

// The last place where the segment fits and ends at or before `limit`.
std::size_t Pattern::last_fit(const Segment& segment, std::string_view line, std::size_t limit,
                              Abort& abort) const {
  if (limit < segment.length || (segment.at_end && limit < line.size())) return kNone;
  const std::size_t last = limit - segment.length;
  const std::size_t first = segment.at_end ? last : 0;
  for (std::size_t at = last; abort == 0; --at) {
    at = last_candidate(segment, line, first, at);
    if (at == kNone || fits(segment, line, at)) return at;
    if (at == first) break;
  }
  return kNone;
}

std::optional<std::size_t> Pattern::find_backward(std::string_view line, std::size_t limit,
                                                  Abort& abort) const {
  return BackwardMatches(*this, line, abort).previous(limit);
}

std::optional<std::size_t> BackwardMatches::previous(std::size_t limit) {
  if (!pattern_.wildcard_) return found_at(pattern_.plain_.find_last(line_, limit));
  if (pattern_.anchored_)
    return pattern_.match_at(line_, 0, abort_) ? std::optional<std::size_t>(0) : std::nullopt;
  if (!last_tail_) last_tail_ = last_tail();
  if (*last_tail_ == kNone) return std::nullopt;
  const Pattern::Segment& head = pattern_.segments_.front();
  return found_at(pattern_.last_fit(head, line_, std::min(limit + head.length, *last_tail_), abort_));
}

std::size_t BackwardMatches::last_tail() const {
  std::size_t tail = line_.size();
  for (std::size_t i = pattern_.segments_.size(); i-- > 1 && tail != kNone;)
    tail = pattern_.last_fit(pattern_.segments_[i], line_, tail, abort_);
  return tail;
}

std::size_t BackwardMatches::length_at(std::size_t col) {
  if (!pattern_.wildcard_) return pattern_.source_length_;
  const auto& segments = pattern_.segments_;
  first_fits_.resize(segments.size());
  std::size_t end = col + segments.front().length;
  for (std::size_t i = 1; i < segments.size(); ++i) end = first_fit(i, end) + segments[i].length;
  return end - col;
}

// As Pattern::first_fit, for a `from` that never increases. Later places are cached; search only before them.
std::size_t BackwardMatches::first_fit(std::size_t segment, std::size_t from) {
  FirstFit& known = first_fits_[segment];
  if (from < known.from) {
    const std::size_t at = pattern_.first_fit(pattern_.segments_[segment], line_, from, known.from, abort_);
    known = {from, at == kNone ? known.at : at};
  }
  return known.at;
}

} // namespace zan
