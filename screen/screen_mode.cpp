#include <algorithm>
#include <array>

#include "app/editor.h"
#include "app/version.h"
#include "screen/draw.h"
#include "screen/help_page.h"
#include "screen/keys.h"
#include "screen/terminal.h"

namespace {

// A drawing that the next key overtakes may be left out, but a long paste is to be seen coming in.
constexpr int kMostKeysUndrawn = 64;

// The screen is drawn whenever the wait for a key begins.
class KeyLoop {
 public:
  explicit KeyLoop(Editor& editor) : editor_(editor) {}

  std::optional<int> next() {
    if (undrawn_ >= kMostKeysUndrawn || !zan::key_waiting()) {
      editor_.draw_screen();
      undrawn_ = 0;
    }
    ++undrawn_;
    return zan::read_key([this] { editor_.draw_screen(); });
  }

 private:
  Editor& editor_;
  int undrawn_ = kMostKeysUndrawn;
};

// What was printed and read ahead belongs to line mode.
void leave_line_mode(Editor& editor) {
  editor.console.flush();
  editor.console.release_input();
}

} // namespace

void Editor::screen_mode() {
  append_journal_line("CHANGE");
  leave_line_mode(*this);
  const zan::ScreenVisit visit(keypad == "PC");
  if (!visit) return;
  KeyLoop keys(*this);
  for (bool leave = false; !leave;) {
    const auto key = keys.next();
    if (debug_keys && key) last_key_name = key_debug_name(*key);
    // The end of the input is the end of screen mode; what was defined for Ctrl/Z does not count then.
    if (key) leave = handle_screen_key(*key);
    else leave = true;
    if (!key) status_message = "Command mode";
    clamp_cursor();
    adjust_view();
  }
}

void Editor::nokeypad_mode() {
  leave_line_mode(*this);
  const zan::ScreenVisit visit(keypad == "PC");
  if (!visit) return;
  status_message = "Nokeypad — type commands (HELP NOKEYPAD); EX or Ctrl/Z to leave";
  const std::string leaves(1, static_cast<char>(zan::kCtrlZ));
  for (bool done = false; !done && !zan::screen_input_ended();) {
    draw_screen();
    const std::string line = prompt_line("Nokeypad: ");
    if (line.empty()) continue;
    if (line == leaves) break;
    done = execute_nokeypad_string(line, false);
    clamp_cursor();
    adjust_view();
  }
  status_message = "Command mode";
}

void Editor::show_help_screen() {
  const std::string heading = (zan_version_string() + "  ZAN keypad editor - screen help").substr(0, 95);
  std::array<std::string_view, zan::kHelpPage.size() + 1> rows{heading};
  std::copy(zan::kHelpPage.begin(), zan::kHelpPage.end(), rows.begin() + 1);
  zan::show_page(rows);
  zan::read_key([&] { zan::show_page(rows); });
}
