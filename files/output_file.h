#pragma once

#include <string>

#include "files/block_writer.h"

namespace zan {

// Saves the bytes of `source` as the file `path`. A path with a version suffix is a new version and
// overwrites nothing: when another process has just taken its number, `path` becomes the next free one. Only
// where no other number comes out (the last one that is looked for, a dangling link of that name) is the name
// itself written. False when nothing could be saved.
bool save_output(std::string& path, const ByteSource& source);

} // namespace zan
