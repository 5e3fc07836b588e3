#include <chrono>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <unistd.h>

#include "app/editor.h"
#include "app/members/rescue.h"
#include "host/signals.h"
#include "recovery/restore.h"
#include "text/bytes.h"

// What is typed at a terminal is recorded while the program waits, so that it outlives the program, whatever
// ends it; and what an earlier session has left is made a copy of when the next one begins.
namespace {

constexpr int kNothingToDo = -1;
constexpr int kLookAgain = 20; // milliseconds, while the disk is waited for

std::string time_of_day(std::uint64_t seconds) {
  const auto then = static_cast<std::time_t>(seconds);
  const std::time_t now = std::time(nullptr);
  std::tm at{};
  std::tm today{};
  if (::localtime_r(&then, &at) == nullptr || ::localtime_r(&now, &today) == nullptr)
    return "an unknown time";
  const bool is_today = at.tm_year == today.tm_year && at.tm_yday == today.tm_yday;
  char text[32];
  return {text, std::strftime(text, sizeof text, is_today ? "%H:%M" : "%Y-%m-%d %H:%M", &at)};
}

// Loading takes the carriage returns at the ends of lines away, and line feeds for ends of lines.
bool loads_as_it_is(const zan::LineStore& text) {
  return !text.holds_literal_breaks() && !text.may_hold_returns();
}

std::string report_line(const std::string& name, const zan::SessionReport& report) {
  if (report.lives) return "?" + name + " is being edited by process " + report.process;
  std::string line = "?A session of " + time_of_day(report.started) + " on " + name + " ended early";
  if (!report.copies.empty()) line += "; its text is in " + zan::joined(report.copies, ", ");
  if (report.failed) line += "; some of its text could not be written";
  if (report.damaged) line += "; some of its text is damaged";
  if (!report.lost_files.empty())
    line += "; what stood in " + zan::joined(report.lost_files, ", ") + " is missing";
  return line;
}

} // namespace

void Editor::begin_recovery() {
  if (!console.reads_terminal()) return;
  restore_sessions();
  session_log.set_path(input_file);
  note_recovery_base(input_file, current.origin()->state, current.lines());
  zan::standard_input().set_idle([this] { return record_while_waiting(); });
}

void Editor::restore_sessions() {
  const auto copy = [this](std::string_view buffer, const Text& text) {
    return zan::write_copy(*this, buffer, text);
  };
  try {
    for (const auto& report : zan::restore_sessions(input_file, main_on_disk.value_or(Text()), copy))
      if (!recover) notify(report_line(input_file, report));
  } catch (const std::exception&) { // no memory: the files stay for the next session
  }
}

void Editor::note_recovery_base(const std::string& path, const zan::FileState& state, const Text& text) {
  if (console.reads_terminal()) session_log.add_base({path, state, text});
}

int Editor::record_while_waiting() {
  recovery_failed = recovery_failed && !recovery; // SET RECOVERY tries again
  if (recovery_failed || g_zan_pending_signal != 0) return kNothingToDo;
  if (!recovery) {
    if (session_log.waits_for_disk()) return kLookAgain;
    end_recovery();
    return kNothingToDo;
  }
  try {
    return record_a_step();
  } catch (const std::exception&) { // no memory
    stop_recovery();
    return kNothingToDo;
  }
}

// Milliseconds after which there is more to do.
int Editor::record_a_step() {
  if (!session_log.is_complete() && !session_log.go_on()) stop_recovery();
  if (session_log.is_complete()) {
    const RecordedState now{current.lines(), buffers, current_buffer_name, typing ? typing->count() : 0};
    const auto due = record_pace.due_in(!(now == recorded), !(now == seen), zan::RecordPace::Clock::now());
    seen = now;
    if (!due || recovery_failed) return kNothingToDo;
    if (due->count() > 0) return static_cast<int>(due->count());
    recorded = now;
    record_pace = {};
    auto texts = texts_to_record();
    if (texts.empty()) session_log.remove();
    else session_log.record(std::move(texts));
    if (session_log.is_complete()) return kNothingToDo;
  }
  return session_log.waits_for_disk() ? kLookAgain : 0;
}

// All that would not be on the disk if the program ended now.
std::vector<zan::NamedText> Editor::texts_to_record() const {
  std::vector<zan::NamedText> texts;
  const auto add = [&](std::string_view name, const Text& text, const Text* as_found) {
    if (as_found != nullptr ? text.tree() != as_found->tree() : !text.empty() || name == "MAIN")
      texts.push_back({std::string(name), text});
  };
  const auto found = [&](std::string_view name) -> const Text* {
    if (name == "MAIN") return main_on_disk ? &*main_on_disk : nullptr;
    const TextBuffer* buffer = buffers_found.find(name);
    return buffer != nullptr ? &buffer->lines() : nullptr;
  };
  add(current_buffer_name, with_typed_lines(), found(current_buffer_name));
  for (const auto& [name, buffer] : buffers.entries())
    if (name != current_buffer_name) add(name, buffer.lines(), found(name));
  if (typing && !typing->macro.empty()) add(typing->macro, typing->so_far(), nullptr);
  return texts;
}

EditorState::Text EditorState::with_typed_lines() const {
  if (!typing || !typing->macro.empty()) return current.lines();
  TextBuffer text = current;
  std::uint64_t row = cursor_row;
  std::uint64_t col = cursor_col;
  text.insert_text(row, col, typing->so_far());
  return text.lines();
}

void Editor::stop_recovery() {
  recovery = false;
  recovery_failed = true;
  notify("?Unable to record what is typed, for recovery");
}

void Editor::end_recovery() {
  session_log.remove();
  recorded = {};
}

// What has been recorded may refer to a file that was written.
void Editor::hurry_recovery() {
  recorded = {};
  record_pace.hurry();
}

// The text as the file has it now need not be recovered, and what else there is begins a new file.
void Editor::note_saved_text(const std::string& path, const zan::FileState& state) {
  if (!console.reads_terminal()) return;
  session_log.begin_anew();
  if (loads_as_it_is(*main_on_disk) && !rms_fixed) note_recovery_base(path, state, *main_on_disk);
  if (texts_to_record().empty()) session_log.remove();
}
