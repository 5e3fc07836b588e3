// The editor's members that only call functions of this room.
#include "app/editor.h"

#include "text/bytes.h"

std::string Editor::trim(std::string_view text) { return std::string(zan::trim(text)); }

std::string Editor::upper(std::string_view text) { return zan::upper(text); }

bool Editor::starts_with_ci(std::string_view text, std::string_view prefix) {
  return zan::starts_with_ci(text, prefix);
}

std::string Editor::strip_optional_quotes(std::string_view text) {
  return std::string(zan::strip_optional_quotes(text));
}

Editor::Qualifiers Editor::extract_qualifiers(std::string& line) { return zan::extract_qualifiers(line); }

Editor::ParsedCommand Editor::parse_command(const std::string& line) const {
  return zan::parse_command(line, line_context(), key_form);
}

zan::LineContext Editor::line_context() const { return {current.line_count(), cursor_row}; }

std::optional<std::uint64_t> Editor::parse_line_ref(std::string_view text) const {
  return zan::parse_line_ref(text, line_context());
}

std::optional<Editor::LineRange> Editor::parse_line_range(std::string_view text) const {
  return zan::parse_line_range(text, line_context());
}

std::string Editor::strip_qualifiers_for_range(std::string_view text) {
  return std::string(zan::strip_qualifiers_for_range(text));
}
