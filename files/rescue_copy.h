#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "files/private_copy.h" // directory_of
#include "text/line_store.h"

// Copies of texts that would be lost with the program.
namespace zan {

// The name of the copy for a buffer of the file `path`: "notes.txt.save", with a buffer's name
// "notes.txt.OTHER.save"; a file without a name counts as ".zan". Bytes of the buffer's name that a file name
// cannot hold become "_", and a name that is too long is cut.
std::string rescue_name(std::string_view path, std::string_view buffer);

// Writes the lines to a new file in the directory, which its owner alone may read whatever the umask is:
// `name`, or if that is taken, even by a dangling link, name.1, name.2 and so on. Returns the path of the
// copy once it has reached the disk; otherwise no file is left. Takes next to no memory, and never throws.
std::optional<std::string> write_rescue_copy(const std::string& directory, const std::string& name,
                                             const LineStore& text) noexcept;

} // namespace zan
