#include "app/editor.h"

#include "files/journal_file.h"
#include "screen/terminal.h"

namespace {

zan::JournalFile journal_of(const EditorState& editor) {
  zan::JournalFile journal{editor.journal_path(), editor.journal_file && !editor.journal_file->empty(), {}};
  journal.protected_paths = editor.files;
  if (editor.output_file) journal.protected_paths.push_back(*editor.output_file);
  return journal;
}

} // namespace

std::string EditorState::journal_path() const {
  if (journal_file && !journal_file->empty()) return *journal_file;
  return input_file.empty() ? ".zan.jou" : input_file + ".jou";
}

void Editor::append_journal_line(const std::string& line) {
  if (is_comment_or_blank(line)) return;
  if (zan::append_journal_line(journal_of(*this), line)) {
    journal_unsynced = true;
  } else if (!journal_failure_said && !g_curses_active) {
    journal_failure_said = true;
    notify("?Unable to write journal " + journal_path());
  }
}

void Editor::sync_journal() {
  if (!journal_unsynced) return;
  console.flush();
  if (!console.waits_for_input()) return;
  zan::sync_journal(journal_of(*this));
  journal_unsynced = false;
}

void Editor::try_recover_journal() {
  const std::string path = journal_path();
  if (!zan::journal_may_be_replayed(journal_of(*this))) {
    say(true, "?No journal file: ", path, "\n");
    return;
  }
  say(true, "Recovering from ", path, "\n");
  run_command_file(path, true);
}

void Editor::delete_journal_file() { zan::delete_journal(journal_of(*this)); }
