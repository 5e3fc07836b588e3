#pragma once

#include <string>

#include "files/safe_save.h"

namespace zan {

// Saves the bytes of `source` as the file `path`. A path with a version suffix is a new version and
// overwrites nothing: when another process has just taken its number, `path` becomes the next free one. If
// probing yields the same number again (the highest one that is probed, or a dangling link), that name is
// overwritten.
Saved save_output(std::string& path, const ByteSource& source, const Guard& guard = {});

} // namespace zan
