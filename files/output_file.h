#pragma once

#include <string>

#include "files/safe_save.h"

namespace zan {

// Saves the bytes of `source` as the file `path`. A path with a version suffix is a new version and
// overwrites nothing: when another process has just taken its number, `path` becomes the next free one. Only
// where no other number comes out (the last one that is looked for, a dangling link of that name) is the name
// itself written.
Saved save_output(std::string& path, const ByteSource& source, const Guard& guard = {});

} // namespace zan
