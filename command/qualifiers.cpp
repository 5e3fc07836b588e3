#include "command/qualifiers.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "text/bytes.h"

namespace zan {
namespace {

// Reads the value of a qualifier, if there is one. `rest` is the line behind the qualifier's name. Returns
// the length of the value.
using ReadValue = std::size_t (*)(std::string_view rest, Qualifiers& quals);

std::size_t read_brief_width(std::string_view rest, Qualifiers& quals) {
  if (!rest.starts_with(':')) return 0;
  rest.remove_prefix(1);
  const auto end = std::ranges::find_if_not(rest, is_digit);
  const auto count = static_cast<std::size_t>(end - rest.begin());
  if (const auto width = parse_int_prefix(rest.substr(0, count))) quals.brief_width = std::max(1, *width);
  return 1 + count;
}

std::size_t read_sequence(std::string_view rest, Qualifiers& quals) {
  if (!rest.starts_with('=')) return 0;
  rest.remove_prefix(1);
  const auto end = std::ranges::find_if(rest, [](char c) { return c == '/' || is_space(c); });
  const std::string_view value = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
  const std::size_t colon = value.find(':');
  if (const auto start = parse_int_prefix(value.substr(0, colon))) {
    quals.seq_start = *start;
    if (colon != std::string_view::npos)
      quals.seq_step = parse_int_prefix(value.substr(colon + 1)).value_or(quals.seq_step);
  }
  return 1 + value.size();
}

struct Qualifier {
  std::string_view name;
  bool Qualifiers::*flag;
  ReadValue read_value = nullptr;
};

constexpr Qualifier kQualifiers[] = {
    {"QUERY", &Qualifiers::query},
    {"NOTYPE", &Qualifiers::notype},
    {"BRIEF", &Qualifiers::brief, read_brief_width}, // /BRIEF, /BRIEF:n
    {"SAVE", &Qualifiers::save},
    {"GLOBAL", &Qualifiers::global},
    {"G", &Qualifiers::global},
    {"STAY", &Qualifiers::stay},
    {"DUPLICATE", &Qualifiers::duplicate},
    {"SEQUENCE", &Qualifiers::sequence, read_sequence}, // /SEQUENCE, /SEQUENCE=n, /SEQUENCE=n:i
};

const Qualifier* find_qualifier(std::string_view word) {
  for (const Qualifier& row : kQualifiers)
    if (row.name.size() == word.size() && starts_with_ci(word, row.name)) return &row;
  return nullptr;
}

// `rest` begins behind a slash. Applies the qualifier there, if it is one, and returns the length of its name
// and value.
std::size_t take_qualifier(std::string_view rest, Qualifiers& quals) {
  const auto end = std::ranges::find_if_not(rest, is_alpha);
  const auto length = static_cast<std::size_t>(end - rest.begin());
  const Qualifier* row = find_qualifier(rest.substr(0, length));
  if (row == nullptr) return 0;
  quals.*row->flag = true;
  return row->read_value == nullptr ? length : length + row->read_value(rest.substr(length), quals);
}

} // namespace

Qualifiers extract_qualifiers(std::string& line) {
  Qualifiers quals;
  std::size_t kept = 0; // bytes that stay; they are moved to the front
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '/') {
      if (const std::size_t taken = take_qualifier(std::string_view(line).substr(at + 1), quals); taken > 0) {
        at += taken;
        continue;
      }
    }
    line[kept++] = line[at];
  }
  line.resize(kept);
  const std::string_view text = trim(line);
  line.erase(0, static_cast<std::size_t>(text.data() - line.data())).resize(text.size());
  return quals;
}

} // namespace zan
