#pragma once

#include <string>

#include "files/block_writer.h"
#include "files/others_text.h"
#include "text/file_state.h"

namespace zan {

enum class SaveMode {
  replace,           // the file of that name, or a new one
  create_exclusively // a new file only
};

enum class SaveResult {
  saved,
  failed, // for whatever reason: the file cannot be written, no room, an error of the disk
  exists  // create_exclusively only: the name is taken, nothing was written
};

struct Saved {
  SaveResult result = SaveResult::failed;
  // Of the file with the new text, or with part of it. missing: nothing was written, or it was a device;
  // unreadable: something was, but the file cannot be looked at.
  FileState state = {};
  std::string kept = {};    // where the guard has kept the text that the file held; "": it has not
  std::string unsaved = {}; // the private copy that has become the only whole text; "": there is none

  explicit operator bool() const { return result == SaveResult::saved; }
};

// Writes the bytes of `source` as the file `path`, such that the old text or the new one, whole, survives a
// full disk, a crash or a kill at any instant, and that the file stays what it was.
//
// The file is opened for writing first, as a plain overwrite would do: that decides whether it may be
// written, and waits for the reader of a FIFO. Symbolic links are followed, also to a missing file, and stay
// links.
//
// A regular file whose owner, mode, access lists and attributes can be carried over is replaced: the text is
// written beside it under a temporary name, synced and renamed. Anything else is written in place. For a
// regular file (with several links, in a directory that cannot be written, of another owner ...) the space is
// reserved before the first byte is touched, and a private synced copy of the new text, ".NAME.zan-XXXXXX"
// beside the file, at home, in $TMPDIR or /tmp, exists until the last byte is on the disk. If the disk fails
// after old bytes have been overwritten, that copy is the only whole text left and stays there. In every
// other case a failed save leaves the file as it was and no temporary file.
//
// The text of a regular file that the guard does not let be replaced is kept first. If it cannot be kept, the
// save fails.
Saved save_file(const std::string& path, const ByteSource& source, SaveMode mode, const Guard& guard = {});

} // namespace zan
