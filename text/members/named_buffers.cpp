#include "app/editor.h"

#include "text/bytes.h"

namespace {

std::string name_or_main(std::string_view name) {
  std::string normal = zan::normalize_buffer_name(name);
  return normal.empty() ? "MAIN" : normal;
}

} // namespace

std::string Editor::normalize_buffer_name(std::string_view name) { return zan::normalize_buffer_name(name); }

TextBuffer& Editor::live_buffer(std::string_view name) {
  if (name_or_main(name) != current_buffer_name) return named_buffer(name);
  if (current_buffer_name == "MAIN") current.set_filename(input_file);
  return current;
}

const TextBuffer* Editor::find_live_buffer(std::string_view normal_name) const {
  return normal_name == current_buffer_name ? &current : buffers.find(normal_name);
}

TextBuffer& Editor::named_buffer(std::string_view name) {
  const std::string normal = name_or_main(name);
  TextBuffer& buffer = buffers.entry(normal);
  if (normal == "MAIN") buffer.set_filename(input_file);
  return buffer;
}

void Editor::save_current_buffer_state() {
  if (!current_buffer_name.empty()) buffers.entry(current_buffer_name) = current;
}

void Editor::find_buffer(std::string_view name, bool verbose) {
  std::string normal = normalize_buffer_name(name);
  if (normal.empty()) {
    report(verbose, "?Missing buffer name");
    return;
  }
  save_current_buffer_state();
  current = named_buffer(normal);
  current_buffer_name = std::move(normal);
  cursor_row = 0;
  cursor_col = 0;
  top_row = 0;
  clear_select();
  status_message = "Buffer " + current_buffer_name;
  say(verbose, "=", current_buffer_name, " ", std::to_string(current.line_count()), " lines\n");
}

Editor::Text Editor::paste_text_content() { return live_buffer("PASTE").text(); }

void Editor::set_paste_text(const Text& text) { live_buffer("PASTE").set_text(text); }

void Editor::append_paste_text(const Text& text) {
  if (text.empty()) return;
  Text joined = paste_text_content();
  joined.insert(joined.byte_count(), text);
  set_paste_text(joined);
}

void Editor::show_buffers(bool verbose) {
  save_current_buffer_state();
  for (const auto& [name, buffer] : buffers.entries())
    say(verbose, name == current_buffer_name ? "= " : "  ", name, " ",
        zan::counted(buffer.line_count(), "line"), buffer.modified() ? " *" : "", "\n");
}
