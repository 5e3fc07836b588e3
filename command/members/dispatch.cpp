#include "app/editor.h"

#include <algorithm>
#include <array>
#include <optional>
#include <type_traits>

#include "screen/terminal.h"
#include "text/bytes.h"

namespace {

using Result = Editor::CommandResult;
using Parsed = Editor::ParsedCommand;
using zan::KeyForm;

struct Command {
  std::string_view key;
  Result (*run)(Editor&, const Parsed&, bool verbose);
  // A command that changes text or buffers is refused in a read-only run, and an undo snapshot is taken
  // before it. One that may ask for lines takes the snapshot itself after asking, so that Ctrl/C leaves none.
  enum class Changes { no, yes, after_asking } changes = Changes::no;
  KeyForm form = KeyForm::alone; // of a key of several words
  bool after_macros = false;     // settings and macros of that name come first
};

constexpr auto kNoChanges = Command::Changes::no;
constexpr auto kChanges = Command::Changes::yes;
constexpr auto kChangesAfterAsking = Command::Changes::after_asking;
constexpr bool kAfterMacros = true;

// Calls a member with those of argument, qualifiers and verbose that it takes.
template <auto Member> Result member(Editor& editor, const Parsed& command, bool verbose) {
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

template <Result result> Result return_result(Editor&, const Parsed&, bool) { return result; }

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
  if (verbose) editor.type_current_line();
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

// Every key but those of the settings, which settings.cpp has. Sorted by key for the lookup.
constexpr auto kCommands = [] {
  auto rows = std::to_array<Command>({
      {"ADVANCE", turn<Editor::Direction::Advance>},
      {"APPEND", member<&Editor::append_select>, kChanges},
      {"BACKUP", turn<Editor::Direction::Backup>},
      {"BELL", member<&Editor::ring_bell>},
      {"BOTTOM", member<&Editor::go_bottom>},
      {"CHANGE", member<&Editor::change_command>},
      {"CHGL", change_case<false>},
      {"CHGU", change_case<true>},
      {"CLEAR", member<&Editor::clear_buffer_command>, kChanges},
      {"COPY", copy_or_move<false>, kChanges},
      {"CUT", member<&Editor::cut_select>, kChanges},
      {"DATE", member<&Editor::date_command>, kChanges},
      {"DEFINE-KEY", member<&Editor::define_key_command>, kChanges, KeyForm::argument, kAfterMacros},
      {"DEFINE-MACRO", member<&Editor::define_macro_command>, kChangesAfterAsking, KeyForm::argument},
      {"DEL-C", member<&Editor::delete_char_at_cursor>, kChanges},
      {"DEL-EOL", member<&Editor::delete_eol>, kChanges},
      {"DEL-L", member<&Editor::delete_line>, kChanges},
      {"DEL-W", member<&Editor::delete_word>, kChanges},
      {"DELETE", member<&Editor::delete_command>, kChanges},
      {"EXIT", return_result<Result::Exit>},
      {"FILES", member<&Editor::show_files>},
      {"FILL", member<&Editor::fill_command>},
      {"FIND", member<&Editor::find_command>},
      {"FNDNXT", member<&Editor::find_next_command>},
      {"GOTO-LINE", member<&Editor::goto_line>, kNoChanges, KeyForm::unspelled},
      {"HELP", help},
      {"INCLUDE", member<&Editor::include_file_command>, kChanges},
      {"INSERT", member<&Editor::insert_command>, kChangesAfterAsking},
      {"MOVE", copy_or_move<true>, kChanges},
      {"NEXT", member<&Editor::next_file_command>},
      {"PASTE", member<&Editor::paste>, kChanges},
      {"PREVIOUS", member<&Editor::previous_file_command>},
      {"PRINT", member<&Editor::print_command>},
      {"QUIT", return_result<Result::Quit>},
      {"RANGE", member<&Editor::range_command>},
      {"REDO", member<&Editor::redo_last>},
      {"REPLACE", member<&Editor::replace_select_with_paste>, kChanges},
      {"RESEQUENCE", member<&Editor::resequence_command>, kChanges},
      {"RESET", member<&Editor::reset_state>},
      {"RETAIN", member<&Editor::retain_command>, kChanges},
      {"SELECT", member<&Editor::start_select>},
      {"SET-MODE-CHANGE", set_mode_change},
      {"SHOW-BUFFER", member<&Editor::show_buffers>},
      {"SHOW-FILES", member<&Editor::show_files>},
      {"SHOW-KEY", member<&Editor::show_key_command>, kNoChanges, KeyForm::either},
      {"SHOW-MACRO", member<&Editor::show_macros>, kNoChanges, KeyForm::either},
      {"SUBSTITUTE", member<&Editor::substitute_command>, kChanges},
      {"SUBSTITUTE-ALL", substitute_all, kNoChanges, KeyForm::unspelled},
      {"TAB", member<&Editor::insert_tab_at_cursor>, kChanges},
      {"TAB-ADJUST", member<&Editor::tab_adjust_command>, kChanges, KeyForm::either},
      {"TOP", member<&Editor::go_top>},
      {"TYPE", member<&Editor::type_command>},
      {"TYPECURRENT", type_current},
      {"UND-C", member<&Editor::undelete_char>, kChanges},
      {"UND-L", member<&Editor::undelete_line>, kChanges},
      {"UND-W", member<&Editor::undelete_word>, kChanges},
      {"UNDO", member<&Editor::undo_last>}, // no kChanges: it takes no snapshot and is not refused
      {"WRITE", member<&Editor::write_command>, kChanges},
      {"XLATE", member<&Editor::xlate_command>, kChanges},
  });
  std::ranges::sort(rows, {}, &Command::key);
  return rows;
}();

static_assert(std::ranges::all_of(kCommands, [](auto row) { return zan::suits(row.key, row.form); }));

const Command* find_command_row(std::string_view key) {
  const auto found = std::ranges::lower_bound(kCommands, key, {}, &Command::key);
  return found != kCommands.end() && found->key == key ? &*found : nullptr;
}

} // namespace

Editor::CommandResult Editor::dispatch_command(const std::string& line, const Qualifiers& quals,
                                               bool verbose) {
  ParsedCommand command = parse_command(line);
  command.quals = quals;
  std::optional<RowReports> silent;
  if (quals.notype) {
    verbose = false;
    silent.emplace(*this, false);
  }
  if (command.key.empty()) return CommandResult::Continue;
  const Command* row = find_command_row(command.key);
  if (row != nullptr && row->changes != Command::Changes::no) {
    if (read_only) {
      report(verbose, "?Buffer is read-only");
      return CommandResult::Error;
    }
    if (row->changes == kChanges) begin_undo_unit();
  }
  if (row != nullptr && !row->after_macros) return row->run(*this, command, verbose);
  if (const auto result = run_setting(command, verbose)) return *result;
  if (try_execute_macro(command.key, verbose)) return CommandResult::Continue;
  if (row != nullptr) return row->run(*this, command, verbose);
  report(verbose, "?Unrecognized command: ", command.text);
  return CommandResult::Error;
}

zan::KeyForm Editor::key_form(std::string_view key) {
  const Command* row = find_command_row(key);
  return row != nullptr ? row->form : setting_form(key);
}

bool Editor::command_changes_text_or_buffers(std::string_view key) const {
  const Command* row = find_command_row(key);
  return row != nullptr && row->changes != Command::Changes::no;
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
