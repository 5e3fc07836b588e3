#include "app/editor.h"

#include <algorithm>

#include "command/macro_text.h"
#include "host/stack.h"
#include "screen/terminal.h"
#include "text/bytes.h"

namespace {

// On the screen Ctrl/Z ends it too.
bool ends_definition(std::string_view line, bool on_screen) {
  const std::string word = zan::upper(zan::trim(line));
  return word.empty() || word == "END DEFINE" || word == "END" || (on_screen && word == "\x1a");
}

} // namespace

std::vector<std::string> Editor::split_macro_commands(const std::string& text) {
  return zan::split_macro_commands(text);
}

std::string Editor::join_lines_as_text(const std::vector<std::string>& lines) {
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) text.append(i == 0 ? "" : "\n").append(lines[i]);
  return text;
}

Editor::CommandResult Editor::define_macro_command(const std::string& arg, bool verbose) {
  const std::string text = trim(arg);
  const auto sides = zan::cut_at(text, " AS ");
  const std::string name = normalize_buffer_name(sides ? sides->before : text);
  const bool allowed = !name.empty() && name != "MAIN" && name != "PASTE";
  std::vector<std::string> commands;
  if (sides) {
    commands = split_macro_commands(strip_optional_quotes(zan::trim(sides->after)));
  } else if (allowed) {
    auto typed = read_macro_lines(name, verbose);
    if (!typed) return CommandResult::Error;
    commands = std::move(*typed);
  }
  begin_undo_unit();
  if (text.empty()) {
    report(verbose, "?DEFINE MACRO syntax: DEFINE MACRO name AS \"command; command\"");
  } else if (!allowed) {
    report(verbose, "?Invalid macro name");
  } else if (commands.empty()) {
    report(verbose, "?Macro has no commands");
  } else {
    define_macro(name, commands);
    say(verbose, "macro ", name, " defined with ", zan::counted(commands.size(), "command"), "\n");
  }
  return CommandResult::Continue;
}

void Editor::define_macro(const std::string& name, const std::vector<std::string>& commands) {
  TextBuffer& buffer = live_buffer(name);
  buffer = TextBuffer();
  buffer.set_text(join_lines_as_text(commands));
  macros[name] = true;
  macro_texts[name] = buffer.lines();
}

// The lines typed for a macro, up to END or a blank one.
std::optional<std::vector<std::string>> Editor::read_macro_lines(const std::string& name, bool verbose) {
  std::vector<std::string> lines;
  const std::string how_to_end =
      "Enter macro commands for " + name + ". End with END DEFINE or a blank line.";
  const auto so_far = [&] { return Text::from_text(join_lines_as_text(lines)); };
  const TypingGuard guard(*this, {name, so_far, [&] { return lines.size(); }});
  auto typed = read_text_line(how_to_end + "\n_", verbose, how_to_end);
  for (; typed.text && !ends_definition(*typed.text, g_curses_active); typed = read_text_line("_", verbose))
    lines.push_back(std::move(*typed.text));
  if (typed.cancelled) {
    cancel_lines();
    return std::nullopt;
  }
  say(verbose, "\n");
  return lines;
}

void Editor::show_macros(const std::string& arg, bool verbose) {
  if (!verbose) return;
  const std::string wanted = normalize_buffer_name(arg);
  bool shown = false;
  for (const auto& [name, defined] : macros) {
    const TextBuffer* buffer = find_live_buffer(name);
    if (buffer == nullptr || (!wanted.empty() && name != wanted)) continue;
    shown = true;
    say(true, "MACRO ", name, " (", zan::counted(buffer->line_count(), "command"), ")\n");
    zan::LineWalker walker(buffer->lines(), 0);
    std::uint64_t number = 0;
    for (std::string_view line; walker.next(line);)
      say(true, "  ", std::to_string(++number), ": ", line, "\n");
  }
  if (shown) return;
  if (wanted.empty()) say(true, "No macros defined\n");
  else say(true, "?No such macro: ", wanted, "\n");
}

bool Editor::try_execute_macro(const std::string& key, bool verbose) {
  const std::string name = normalize_buffer_name(key);
  if (name.empty() || !macros.contains(name)) return false;
  if (running_macros.contains(name)) {
    report(verbose, "?Recursive macro invocation: ", name);
    return true;
  }
  const TextBuffer* buffer = find_live_buffer(name);
  if (buffer == nullptr) {
    report(verbose, "?Macro buffer missing: ", name);
    return true;
  }
  if (nesting_depth >= zan::nesting_limit()) {
    report(verbose, "?Macros nested too deep: ", name);
    return true;
  }
  const zan::LineStore commands = buffer->lines(); // a copy: the commands may change the registry
  ++nesting_depth;
  macro_stack.push_back(name);
  running_macros.insert(name);
  const CommandResult result = run_macro_lines(name, commands, verbose);
  running_macros.erase(name);
  macro_stack.pop_back();
  leave_nest();
  handle_command_result(result, true);
  return true;
}

// Runs the commands up to the first whose result is neither Continue nor Error, and returns that result.
Editor::CommandResult Editor::run_macro_lines(const std::string& name, const Text& commands, bool verbose) {
  zan::LineWalker walker(commands, 0);
  for (std::string_view line; !nest_aborted && walker.next(line);) {
    const std::string command = trim(line);
    if (is_comment_or_blank(command)) continue;
    if (verify) say(verbose, "[", name, "] ", command, "\n");
    const CommandResult result = execute_command(command, verbose);
    if (result != CommandResult::Continue && result != CommandResult::Error) return result;
  }
  return CommandResult::Continue;
}
