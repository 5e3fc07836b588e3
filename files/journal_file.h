#pragma once

#include <string>
#include <string_view>
#include <vector>

// The file that typed lines are appended to. A command runs whether or not it could be noted.
namespace zan {

struct JournalFile {
  std::string path;
  // A path that the user gave may lead anywhere, as long as a regular file is at its end. One that was made
  // up beside the input may have been planted there: if it is a symbolic link, or another user's file, it is
  // neither written, replayed nor deleted. Nor is any file that has another name, when root would do it.
  bool named_by_user = false;
  // Files that are something else: the inputs, the output. A journal that is the same file as one of them,
  // by whatever name, is neither written nor deleted.
  std::vector<std::string> protected_paths;
};

// Appends `line` and a line feed, in one write, to a file that is created for its owner only. A line feed
// goes before them when the file does not end in one, so that a line cut off by a crash is not joined to the
// next. What was only partly written is taken back. False when the line is not in the file then.
bool append_journal_line(const JournalFile& journal, std::string_view line);

bool journal_may_be_replayed(const JournalFile& journal); // is there one, and is it to be trusted?

// Takes what was appended beyond a crash of the system.
void sync_journal(const JournalFile& journal);

// A journal without other names is emptied on the disk first: should the removal be lost in a crash, the
// lines do not come back to be run once more.
void delete_journal(const JournalFile& journal);

} // namespace zan
