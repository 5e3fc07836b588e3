// Line references and ranges against a model that follows their description step by step. The input: a line
// whose letters choose the place, the text of the range.
#include "command/line_range.h"
#include "fuzz/input.h"
#include "text/bytes.h"

namespace {

using Text = std::string_view;

std::optional<std::uint64_t> line(Text text, const zan::LineContext& in) {
  const std::string word = zan::upper(zan::trim(text));
  if (word.empty() || in.line_count == 0) return std::nullopt;
  const std::uint64_t last = in.line_count - 1;
  const std::uint64_t here = std::min(in.cursor_row, last);
  if (word == "." || word == "CURRENT") return here;
  if (word == "BEGIN" || word == "FIRST" || word == "START") return 0;
  if (word == "END" || word == "LAST") return last;
  if (word[0] == '.') {
    const std::string_view offset = zan::trim(Text(word).substr(1));
    if (offset.empty() || (offset[0] != '+' && offset[0] != '-')) return std::nullopt;
    const auto by = zan::parse_digits(zan::trim(offset.substr(1)));
    if (!by) return std::nullopt;
    if (offset[0] == '-') return *by > here ? 0 : here - *by;
    return *by > last - here ? last : here + *by;
  }
  const auto named = zan::parse_digits(word);
  if (!named || *named == 0) return std::nullopt;
  return std::min(*named - 1, last);
}

std::optional<zan::LineRange> both(Text left, Text right, const zan::LineContext& in, bool numbers_only) {
  const auto plain = [&](Text text) { return !numbers_only || zan::parse_digits(zan::trim(text)); };
  const auto one = line(left, in);
  const auto other = line(right, in);
  if (!one || !other || !plain(left) || !plain(right)) return std::nullopt;
  return zan::LineRange{std::min(*one, *other), std::max(*one, *other)};
}

std::optional<zan::LineRange> range(Text text, const zan::LineContext& in, bool numbers_only) {
  const Text all = zan::trim(text.substr(0, text.find('/')));
  const std::string word = zan::upper(all);
  if (in.line_count == 0 || all.empty()) return std::nullopt;
  const std::uint64_t last = in.line_count - 1;
  if (word == "WHOLE" || word == "ALL") return zan::LineRange{0, last};
  if (word == "REST" && !numbers_only) return zan::LineRange{in.cursor_row, last};
  if (const auto at = word.find(" THRU "); at != std::string::npos)
    return both(all.substr(0, at), all.substr(at + 6), in, numbers_only);
  if (const auto at = all.find(':'); at != std::string::npos)
    return both(all.substr(0, at), all.substr(at + 1), in, numbers_only);
  const auto dash = all.find('-', 1);
  if (dash != std::string::npos && dash + 1 < all.size() && zan::trim(all.substr(0, dash)) != "." &&
      !numbers_only)
    return both(all.substr(0, dash), all.substr(dash + 1), in, numbers_only);
  return both(all, all, in, numbers_only);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zan::fuzz::Input input(data, size);
  zan::LineContext in{input.byte(), input.byte()};
  if (in.cursor_row == '~') in = {UINT64_MAX, UINT64_MAX - 1};
  input.line();
  const std::string text(input.rest());
  zan::fuzz::check(zan::parse_line_ref(text, in) == line(text, in));
  zan::fuzz::check(zan::parse_line_range(text, in) == range(text, in, false));
  zan::fuzz::check(zan::parse_number_range(text, in.line_count) == range(text, in, true));
  return 0;
}
