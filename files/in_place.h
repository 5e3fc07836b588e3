#pragma once

#include "files/block_writer.h"
#include "files/place.h"

namespace zan {

// Overwrites the regular file `target`, open for writing at its start, keeping its inode. Before the first
// byte is touched, the new text lies whole and synced in a private copy (beside the file when `place` is
// known and its directory can be written, else in $TMPDIR or /tmp) and the space for it is reserved; the file
// gets its new length last. When that fails after old bytes were overwritten, the copy stays; otherwise it is
// removed.
bool write_in_place(UniqueFd target, const Place* place, const ByteSource& source);

} // namespace zan
