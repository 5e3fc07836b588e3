#include "screen/members/screen_prompt.h"

#include <utility>

#include "app/editor.h"
#include "screen/draw.h"
#include "screen/keys.h"
#include "screen/prompt_editor.h"
#include "screen/terminal.h"

namespace {

void show_prompt(const zan::PromptEditor& line, std::string_view prompt) {
  const auto row = zan::prompt_row(prompt, line.answer(), zan::screen_size().columns, zan::character_width());
  zan::show_bottom_row(row.runs, row.columns);
}

// Draws the screen and waits for a key.
std::optional<int> read_editor_key(Editor& editor) {
  editor.draw_screen();
  return zan::read_key([&] { editor.draw_screen(); });
}

bool cancels_definition(std::optional<int> key) {
  return !key || *key == zan::kCtrlC || *key == zan::kEscapeKey;
}

} // namespace

zan::TypedLine zan::read_screen_line(Editor& editor, std::string_view prompt, std::string_view opening) {
  PromptEditor line;
  const auto show = [&] { show_prompt(line, line.answer().empty() && !opening.empty() ? opening : prompt); };
  const auto redraw = [&] {
    editor.draw_screen();
    show();
  };
  for (bool refused = false;;) {
    if (!key_waiting()) show();
    const auto key = read_key(redraw);
    if (!key) return {};
    const bool ends_here = key == kCtrlZ && line.answer().empty() && screen_reads_terminal();
    const auto outcome = key == kPasted ? line.paste(take_pasted()) : line.type(*key);
    // A refused paste rings the bell once.
    const bool follows = std::exchange(refused, outcome == PromptEditor::Outcome::refused) && key_waiting();
    if (refused && !follows) screen_beep();
    if (ends_here) discard_end_of_answer();
    if (ends_here || outcome == PromptEditor::Outcome::answered) return {line.answer()};
    if (outcome == PromptEditor::Outcome::cancelled) {
      note_interrupt();
      return {std::nullopt, true};
    }
  }
}

std::string Editor::prompt_line(const std::string& prompt_text) {
  if (!g_curses_active) return "";
  return zan::read_screen_line(*this, prompt_text).text.value_or("");
}

void Editor::command_prompt() { run_screen_command(prompt_line("Command: ")); }

void Editor::interactive_define_key() {
  status_message = "Press key to define";
  auto key = read_editor_key(*this);
  const bool gold = key == zan::kPf1;
  if (gold) {
    status_message = "GOLD — press key";
    key = read_editor_key(*this);
  }
  if (cancels_definition(key)) {
    status_message = "Define key cancelled";
    return;
  }
  const std::string identifier = key_id_from_input(*key, gold);
  if (identifier.empty()) {
    status_message = "Invalid key for DEFINE KEY";
    return;
  }
  const std::string definition = prompt_line("Definition: ");
  if (definition.empty()) {
    status_message = "Define key cancelled";
    return;
  }
  key_definitions[identifier] = definition;
  status_message = "Key defined: " + identifier;
}
