#include "app/editor.h"
#include "screen/draw.h"
#include "screen/terminal.h"

namespace {

zan::ScreenView view_of(const EditorState& editor) {
  zan::ScreenView view;
  view.text = editor.current.lines();
  view.cursor = {editor.cursor_row, editor.cursor_col};
  view.corner = {editor.top_row, editor.left_col};
  view.rows = zan::screen_size().rows;
  view.columns = zan::screen_size().columns;
  view.screen_lines = editor.screen_lines;
  view.top_margin = editor.cursor_top_margin;
  view.bottom_margin = editor.cursor_bottom_margin;
  view.line_numbers = editor.line_numbers;
  view.truncate = editor.truncate;
  return view;
}

std::string status_line(const EditorState& editor) {
  std::string text = " EDIT[" + editor.current_buffer_name + "]";
  text += editor.direction == EditorState::Direction::Backup ? " BACKUP" : " ADVANCE";
  if (editor.overstrike) text += " OVR";
  if (editor.select_active()) text += " SELECT";
  if (editor.current.modified()) text += " *";
  if (editor.left_col != 0) text += " col+" + std::to_string(editor.left_col);
  if (!editor.debug_keys) return text + "  PF1=GOLD PF3=FNDNXT GOLD+PF3=FIND Ctrl/Z=CMD";
  return text + "  KEY: " + (editor.last_key_name.empty() ? "(none)" : editor.last_key_name);
}

} // namespace

void Editor::adjust_view() {
  const zan::Corner corner = zan::corner_for_cursor(view_of(*this));
  top_row = corner.top_row;
  left_col = corner.left_col;
}

void Editor::draw_screen() {
  if (!g_curses_active) return;
  zan::set_exact_paste(pasting == "EXACT");
  adjust_view();
  zan::ScreenView view = view_of(*this);
  view.width = zan::character_width();
  if (const auto span = active_select_span())
    view.selection = {{span->start_row, span->start_col}, {span->end_row, span->end_col}};
  view.status = status_line(*this);
  view.message = status_message;
  zan::show_view(view);
}
