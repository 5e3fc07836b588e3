#include "app/editor.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include "screen/terminal.h"
#include "text/bytes.h"

namespace {

using Result = Editor::CommandResult;
using Parsed = Editor::ParsedCommand;

struct Command {
  std::string_view key;
  Result (*run)(Editor&, const Parsed&, bool verbose);
  bool changes = false; // refused when read-only, and preceded by an undo snapshot
};

constexpr bool kChanges = true;

// The action of a row that is one member: with whatever of argument, qualifiers and verbose it takes.
template <auto Member> Result call(Editor& editor, const Parsed& command, bool verbose) {
  const auto invoke = [&]() {
    if constexpr (std::is_invocable_v<decltype(Member), Editor&>) return (editor.*Member)();
    else if constexpr (std::is_invocable_v<decltype(Member), Editor&, const Parsed&, bool>)
      return (editor.*Member)(command, verbose);
    else if constexpr (std::is_invocable_v<decltype(Member), Editor&, const std::string&,
                                           const Editor::Qualifiers&, bool>)
      return (editor.*Member)(command.arg, command.quals, verbose);
    else if constexpr (std::is_invocable_v<decltype(Member), Editor&, const std::string&, bool>)
      return (editor.*Member)(command.arg, verbose);
    else return (editor.*Member)(verbose);
  };
  if constexpr (std::is_same_v<decltype(invoke()), Result>) return invoke();
  else {
    invoke();
    return Result::Continue;
  }
}

template <Result result> Result give(Editor&, const Parsed&, bool) { return result; }

template <Editor::Direction direction> Result turn(Editor& editor, const Parsed&, bool verbose) {
  editor.set_direction(direction, verbose);
  return Result::Continue;
}

template <bool move> Result copy_or_move(Editor& editor, const Parsed& command, bool verbose) {
  editor.copy_move_command(command.arg, move, verbose);
  return Result::Continue;
}

template <bool to_upper> Result change_case(Editor& editor, const Parsed& command, bool verbose) {
  editor.chg_case_command(command.arg, to_upper, verbose);
  return Result::Continue;
}

Result type_current(Editor& editor, const Parsed&, bool verbose) {
  if (verbose) editor.type_current_line(false, 40);
  return Result::Continue;
}

Result set_mode_change(Editor& editor, const Parsed& command, bool verbose) {
  editor.mode = "Change";
  return editor.change_command(command.arg, verbose);
}

Result help(Editor& editor, const Parsed& command, bool verbose) {
  if (verbose) editor.print_line_help(Editor::trim(command.arg));
  return Result::Continue;
}

Result substitute_all(Editor& editor, const Parsed& command, bool verbose) {
  editor.substitute_global(command.arg, command.quals.query, verbose);
  return Result::Continue;
}

// Every key that is not a setting (those are rows of the settings table). Sorted by key for the lookup.
constexpr auto kCommands = [] {
  auto rows = std::to_array<Command>({
      {"ADVANCE", turn<Editor::Direction::Advance>},
      {"APPEND", call<&Editor::append_select>, kChanges},
      {"BACKUP", turn<Editor::Direction::Backup>},
      {"BELL", call<&Editor::ring_bell>},
      {"BOTTOM", call<&Editor::go_bottom>},
      {"CHANGE", call<&Editor::change_command>},
      {"CHGL", change_case<false>},
      {"CHGU", change_case<true>},
      {"CLEAR", call<&Editor::clear_buffer_command>, kChanges},
      {"COPY", copy_or_move<false>, kChanges},
      {"CUT", call<&Editor::cut_select>, kChanges},
      {"DATE", call<&Editor::date_command>, kChanges},
      {"DEFINE-KEY", call<&Editor::define_key_command>, kChanges},
      {"DEFINE-MACRO", call<&Editor::define_macro_command>, kChanges},
      {"DEL-C", call<&Editor::delete_char_at_cursor>, kChanges},
      {"DEL-EOL", call<&Editor::delete_eol>, kChanges},
      {"DEL-L", call<&Editor::delete_line>, kChanges},
      {"DEL-W", call<&Editor::delete_word>, kChanges},
      {"DELETE", call<&Editor::delete_command>, kChanges},
      {"EXIT", give<Result::Exit>},
      {"FILES", call<&Editor::show_files>},
      {"FILL", call<&Editor::fill_command>},
      {"FIND", call<&Editor::find_command>},
      {"FNDNXT", call<&Editor::find_next_command>},
      {"GOTO-LINE", call<&Editor::goto_line>},
      {"HELP", help},
      {"INCLUDE", call<&Editor::include_file_command>, kChanges},
      {"INSERT", call<&Editor::insert_command>, kChanges},
      {"MOVE", copy_or_move<true>, kChanges},
      {"NEXT", call<&Editor::next_file_command>},
      {"PASTE", call<&Editor::paste>, kChanges},
      {"PREVIOUS", call<&Editor::previous_file_command>},
      {"PRINT", call<&Editor::print_command>},
      {"QUIT", give<Result::Quit>},
      {"RANGE", call<&Editor::range_command>},
      {"REPLACE", call<&Editor::replace_select_with_paste>, kChanges},
      {"RESEQUENCE", call<&Editor::resequence_command>, kChanges},
      {"RESET", call<&Editor::reset_state>},
      {"RETAIN", call<&Editor::retain_command>, kChanges},
      {"SELECT", call<&Editor::start_select>},
      {"SET-MODE-CHANGE", set_mode_change},
      {"SHOW-BUFFER", call<&Editor::show_buffers>},
      {"SHOW-FILES", call<&Editor::show_files>},
      {"SHOW-KEY", call<&Editor::show_key_command>},
      {"SHOW-MACRO", call<&Editor::show_macros>},
      {"SUBSTITUTE", call<&Editor::substitute_command>, kChanges},
      {"SUBSTITUTE-ALL", substitute_all},
      {"TAB", call<&Editor::insert_tab_at_cursor>, kChanges},
      {"TAB-ADJUST", call<&Editor::tab_adjust_command>, kChanges},
      {"TOP", call<&Editor::go_top>},
      {"TYPE", call<&Editor::type_command>},
      {"TYPECURRENT", type_current},
      {"UND-C", call<&Editor::undelete_char>, kChanges},
      {"UND-L", call<&Editor::undelete_line>, kChanges},
      {"UND-W", call<&Editor::undelete_word>, kChanges},
      {"WRITE", call<&Editor::write_command>, kChanges},
      {"XLATE", call<&Editor::xlate_command>, kChanges},
  });
  std::ranges::sort(rows, {}, &Command::key);
  return rows;
}();

const Command* find_command_row(std::string_view key) {
  const auto found = std::ranges::lower_bound(kCommands, key, {}, &Command::key);
  return found != kCommands.end() && found->key == key ? &*found : nullptr;
}

} // namespace

Editor::CommandResult Editor::dispatch_command(const std::string& line, const Qualifiers& quals,
                                               bool verbose) {
  ParsedCommand command = parse_command(line);
  command.quals = quals;
  if (quals.notype) verbose = false;
  if (command.key.empty()) return CommandResult::Continue;
  // Before the read-only test and without a snapshot: they work on the history itself.
  if (command.key == "UNDO" || command.key == "REDO") {
    command.key == "UNDO" ? undo_last(verbose) : redo_last(verbose);
    return CommandResult::Continue;
  }
  const Command* row = find_command_row(command.key);
  if (row != nullptr && row->changes) {
    if (read_only) {
      say(verbose, "?Buffer is read-only\n");
      return CommandResult::Error;
    }
    begin_undo_unit();
  }
  // DEFINE KEY is the one built-in key that a macro of its name can stand in front of.
  const bool built_in = row != nullptr && command.key != "DEFINE-KEY";
  if (built_in) return row->run(*this, command, verbose);
  if (const auto result = run_setting(command, verbose)) return *result;
  if (try_execute_macro(command.key, verbose)) return CommandResult::Continue;
  if (row != nullptr) return row->run(*this, command, verbose);
  say(verbose, "?Unrecognized command: ", command.text, "\n");
  return CommandResult::Error;
}

bool Editor::command_changes_text_or_buffers(std::string_view key) const {
  const Command* row = find_command_row(key);
  return row != nullptr && row->changes;
}

Editor::CommandResult Editor::change_command(const std::string& arg, bool verbose) {
  const std::string_view text = zan::trim(arg);
  if (text.starts_with(';')) {
    execute_nokeypad_string(trim(text.substr(1)), verbose);
    return CommandResult::Continue;
  }
  if (keypad == "NOKEYPAD") {
    append_journal_line("CHANGE");
    nokeypad_mode();
    return CommandResult::Continue;
  }
  return CommandResult::EnterScreen;
}
