#pragma once

#include "files/block_writer.h"
#include "files/others_text.h"
#include "files/place.h"

namespace zan {

struct InPlace {
  bool saved = false;
  FileState state = {};     // as in Saved: files/safe_save.h
  std::string kept = {};    // where the guard has its old text
  std::string unsaved = {}; // the private copy, if the file holds only part of its text
};

// Overwrites the regular file `target`, which is open for writing as `path`, and keeps its inode. Fails when
// another process has locked the file. Before the first byte is touched, a private copy holds the new text,
// whole and synced (beside the file when `place` is known and its directory can be written, else at home, in
// $TMPDIR or /tmp), and the space for it is reserved. The file gets its new length last. When that fails
// after old bytes were overwritten, the copy stays; otherwise it is removed.
InPlace write_in_place(UniqueFd target, const std::string& path, const Place* place, const ByteSource& source,
                       const Guard& guard);

} // namespace zan
