#include "search/pattern.h"

#include <algorithm>
#include <cstring>

#include "text/bytes.h"

namespace zan {

namespace {

constexpr auto kLower = [] {
  std::array<unsigned char, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i)
    table[i] = static_cast<unsigned char>(i >= 'A' && i <= 'Z' ? i - 'A' + 'a' : i);
  return table;
}();

bool equal_folded(const char* text, std::string_view needle) {
  for (std::size_t i = 0; i < needle.size(); ++i)
    if (kLower[to_byte(text[i])] != to_byte(needle[i])) return false;
  return true;
}

bool is_wildcard_byte(char c) { return std::string_view("*?%[^$").find(c) != std::string_view::npos; }

} // namespace

bool has_wildcards(std::string_view pattern) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\\') ++i;
    else if (is_wildcard_byte(pattern[i])) return true;
  }
  return false;
}

std::size_t find_bytes(std::string_view text, std::string_view needle, std::size_t from) {
  if (from > text.size() || text.size() - from < needle.size()) return std::string_view::npos;
  const void* found = memmem(text.data() + from, text.size() - from, needle.data(), needle.size());
  return found == nullptr ? std::string_view::npos
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

std::size_t find_folded(std::string_view text, std::string_view needle, std::size_t from) {
  if (text.size() < needle.size()) return std::string_view::npos;
  const std::size_t last = text.size() - needle.size();
  // Where the first byte stands next in either case; each is looked up again only once it has been passed.
  const char lower_first = needle.front();
  const char upper_first = to_upper(lower_first);
  const auto next = [&](char c, std::size_t at) {
    const void* found = at <= last ? std::memchr(text.data() + at, c, last - at + 1) : nullptr;
    return found == nullptr ? std::string_view::npos
                            : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
  };
  std::size_t lower_at = next(lower_first, from);
  std::size_t upper_at = upper_first == lower_first ? std::string_view::npos : next(upper_first, from);
  for (;;) {
    const std::size_t at = std::min(lower_at, upper_at);
    if (at == std::string_view::npos || equal_folded(text.data() + at, needle)) return at;
    (at == lower_at ? lower_at : upper_at) = next(at == lower_at ? lower_first : upper_first, at + 1);
  }
}

std::size_t find_last_bytes(std::string_view text, std::string_view needle, std::size_t limit, bool folded) {
  if (limit > text.size() || limit < needle.size()) return std::string_view::npos;
  if (!folded) return text.substr(0, limit).rfind(needle);
  for (std::size_t at = limit - needle.size() + 1; at > 0; --at)
    if (equal_folded(text.data() + at - 1, needle)) return at - 1;
  return std::string_view::npos;
}

Pattern::Pattern(std::string_view source, bool exact, Reading reading)
    : exact_(exact), empty_(source.empty()), wildcard_(reading == Reading::elements || has_wildcards(source)),
      source_length_(source.size()) {
  const std::string folded = exact ? std::string() : lower(source);
  if (!exact) source = folded;
  if (!wildcard_) {
    plain_ = source;
    return;
  }
  source = source.substr(0, source.find('\0'));
  if (reading == Reading::search_string && source.starts_with('^')) {
    anchored_ = true;
    source.remove_prefix(1);
  }
  compile(source);
}

void Pattern::compile(std::string_view source) {
  segments_.emplace_back();
  for (std::size_t i = 0; i < source.size(); ++i) {
    const char c = source[i];
    if (c == '*') {
      if (i == 0 || source[i - 1] != '*' || segments_.back().count > 0)
        segments_.push_back({elements_.size(), 0, 0, false});
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

bool Pattern::fits(const Segment& segment, std::string_view line, std::size_t at) const {
  if (line.size() - at < segment.length || (segment.at_end && line.size() - at != segment.length))
    return false;
  for (std::size_t i = 0; i < segment.length; ++i) {
    const Element& element = elements_[segment.first + i];
    const unsigned char c = exact_ ? to_byte(line[at + i]) : kLower[to_byte(line[at + i])];
    switch (element.kind) {
    case Kind::byte:
      if (c != element.byte) return false;
      break;
    case Kind::set:
      if (!sets_[element.set].test(c)) return false;
      break;
    case Kind::never:
      return false;
    case Kind::any:
    case Kind::end:
      break;
    }
  }
  return true;
}

std::optional<std::size_t> Pattern::first_fit(const Segment& segment, std::string_view line,
                                              std::size_t from) const {
  if (line.size() - from < segment.length) return std::nullopt;
  const std::size_t last = line.size() - segment.length;
  for (std::size_t at = segment.at_end ? last : from; at <= last; ++at)
    if (fits(segment, line, at)) return at;
  return std::nullopt;
}

// The last place where the segment fits and ends at or before `limit`.
std::optional<std::size_t> Pattern::last_fit(const Segment& segment, std::string_view line,
                                             std::size_t limit) const {
  if (limit < segment.length || (segment.at_end && limit < line.size())) return std::nullopt;
  const std::size_t lowest = segment.at_end ? limit - segment.length : 0;
  for (std::size_t at = limit - segment.length + 1; at > lowest; --at)
    if (fits(segment, line, at - 1)) return at - 1;
  return std::nullopt;
}

// Where the segments after the first one end, when they are found at or after `from`.
std::optional<std::size_t> Pattern::match_tail(std::string_view line, std::size_t from) const {
  for (std::size_t i = 1; i < segments_.size(); ++i) {
    const auto at = first_fit(segments_[i], line, from);
    if (!at) return std::nullopt;
    from = *at + segments_[i].length;
  }
  return from;
}

std::optional<std::size_t> Pattern::match_at(std::string_view line, std::size_t col) const {
  if (!wildcard_) {
    if (line.size() - col < plain_.size()) return std::nullopt;
    const bool equal =
        exact_ ? line.substr(col, plain_.size()) == plain_ : equal_folded(line.data() + col, plain_);
    return equal ? std::optional(plain_.size()) : std::nullopt;
  }
  const Segment& head = segments_.front();
  if (!fits(head, line, col)) return std::nullopt;
  const auto end = match_tail(line, col + head.length);
  return end ? std::optional(*end - col) : std::nullopt;
}

// The first column at or after `from` that the first element does not rule out; the line's length otherwise.
std::size_t Pattern::next_candidate(std::string_view line, std::size_t from) const {
  const Segment& head = segments_.front();
  if (head.length == 0 || !exact_ || elements_.front().kind != Kind::byte || from == line.size()) return from;
  const void* found = std::memchr(line.data() + from, elements_.front().byte, line.size() - from);
  return found == nullptr ? line.size()
                          : static_cast<std::size_t>(static_cast<const char*>(found) - line.data());
}

std::optional<std::size_t> Pattern::find_forward(std::string_view line, std::size_t from) const {
  if (from > line.size() || (anchored_ && from != 0)) return std::nullopt;
  if (!wildcard_) {
    const std::size_t at = exact_ ? find_bytes(line, plain_, from) : find_folded(line, plain_, from);
    return at == std::string_view::npos ? std::nullopt : std::optional(at);
  }
  if (anchored_) return match_at(line, 0) ? std::optional<std::size_t>(0) : std::nullopt;
  const Segment& head = segments_.front();
  for (std::size_t col = from; col <= line.size(); ++col) {
    col = next_candidate(line, col);
    if (!fits(head, line, col)) continue;
    // What is not found after this column is not found after a later one.
    return match_tail(line, col + head.length) ? std::optional(col) : std::nullopt;
  }
  return std::nullopt;
}

std::optional<std::size_t> Pattern::find_backward(std::string_view line, std::size_t limit) const {
  if (!wildcard_) {
    const std::size_t at = find_last_bytes(line, plain_, limit, !exact_);
    return at == std::string_view::npos ? std::nullopt : std::optional(at);
  }
  if (anchored_) return match_at(line, 0) ? std::optional<std::size_t>(0) : std::nullopt;
  // The rightmost place from which the tail can still be found.
  std::size_t tail = line.size();
  for (std::size_t i = segments_.size(); i-- > 1;) {
    const auto at = last_fit(segments_[i], line, tail);
    if (!at) return std::nullopt;
    tail = *at;
  }
  const Segment& head = segments_.front();
  for (std::size_t end = limit + 1; end > 0; --end) {
    const std::size_t col = end - 1;
    if (fits(head, line, col) && col + head.length <= tail) return col;
  }
  return std::nullopt;
}

std::size_t Pattern::match_length(std::string_view line, std::size_t col) const {
  if (!wildcard_) return source_length_;
  if (col > line.size()) return 0;
  return match_at(line, col).value_or(source_length_);
}

} // namespace zan
