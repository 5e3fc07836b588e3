#include <algorithm>
#include <array>
#include <chrono>

#include "app/editor.h"
#include "app/version.h"
#include "screen/draw.h"
#include "screen/help_page.h"
#include "screen/keys.h"
#include "screen/terminal.h"

namespace {

// Draws the screen before each wait for a key. When the next key has arrived already the drawing is left out,
// but at intervals a long paste is shown as it comes in.
class KeyLoop {
 public:
  explicit KeyLoop(Editor& editor) : editor_(editor) {}

  std::optional<int> next() {
    if (Clock::now() - drawn_ > kLongestUndrawn || !zan::key_waiting()) draw();
    return zan::read_key([this] { draw(); });
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kLongestUndrawn{40};

  void draw() {
    editor_.draw_screen();
    drawn_ = Clock::now();
  }

  Editor& editor_;
  Clock::time_point drawn_;
};

} // namespace

void Editor::screen_mode() {
  append_journal_line("CHANGE");
  console.flush();
  const zan::ScreenVisit visit(keypad == "PC");
  if (!visit) return;
  handle_screen_keys();
  if (row_error) row_error->clear(); // the user has seen errors from before the visit
}

void Editor::handle_screen_keys() {
  const RowReports silent_keys(*this, false);
  KeyLoop keys(*this);
  for (bool leave = false; !leave;) {
    const auto key = keys.next();
    if (debug_keys && key) last_key_name = key_debug_name(*key);
    // The end of the input leaves the screen, even if Ctrl/Z was redefined.
    if (key) leave = handle_screen_key(*key);
    else leave = true;
    if (!key) status_message = "Command mode";
    clamp_cursor();
    adjust_view();
  }
}

void Editor::nokeypad_mode() {
  console.flush();
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
