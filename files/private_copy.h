#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "files/place.h"

// Copies of texts that their owner alone may read, whatever the umask is.
namespace zan {

// Writes all bytes of a copy to the descriptor; false when that failed.
using CopyWriter = std::function<bool(int descriptor)>;

// A whole, synced copy under a temporary name beside `leaf`, or nothing.
std::optional<TemporaryFile> make_private_copy(int directory, const std::string& leaf,
                                               const CopyWriter& write);

// Calls `take` with `name`, name.1, name.2 and so on for as long as it fails with EEXIST. The name taken.
std::optional<std::string> take_free_name(const std::string& name,
                                          const std::function<bool(const std::string& name)>& take);

// Makes a private copy in the directory as `name`, or the next free name (see take_free_name); an incomplete
// copy never has that name. Returns the copy's path once it has reached the disk; otherwise no file is left.
// Takes little memory.
std::optional<std::string> write_private_copy(const std::string& directory, const std::string& name,
                                              const CopyWriter& write);

// The places for a copy in their order, each once: the given ones, home, $TMPDIR and /tmp.
std::vector<std::string> and_spare_directories(std::initializer_list<std::string> directories);

std::string directory_of(std::string_view path);                            // "." for a bare name
std::string path_in(const std::string& directory, const std::string& name); // the bare name in "."

} // namespace zan
