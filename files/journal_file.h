#pragma once

#include <string>
#include <string_view>
#include <vector>

// The file that typed lines are appended to. A command runs even if its line could not be appended.
namespace zan {

struct JournalFile {
  std::string path;
  // A path that the user gave may lead through symbolic links, as long as it leads to a regular file. A file
  // at the default path may have been planted there: a symbolic link and another user's file are neither
  // written, replayed nor deleted. Root spares any file with several hard links as well.
  bool named_by_user = false;
  // The inputs and the output. A journal that is the same file as one of them, by whatever name, is neither
  // written nor deleted.
  std::vector<std::string> protected_paths;
};

// Appends `line` and a line feed in one write; a new journal is its owner's alone. A line feed goes before
// them when the file does not end in one, so that a line that a crash cut off is not joined to this one. A
// partial write is undone. False when the line is not in the file then.
bool append_journal_line(const JournalFile& journal, std::string_view line);

bool journal_may_be_replayed(const JournalFile& journal); // it exists and may be trusted

// Syncs what was appended, so that it survives a crash of the system.
void sync_journal(const JournalFile& journal);

// Truncates and syncs the journal first, if it has no other name: should a crash undo the removal, no line of
// it is run again.
void delete_journal(const JournalFile& journal);

} // namespace zan
