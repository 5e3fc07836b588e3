#pragma once

#include <string>
#include <string_view>

#include "text/line_store.h"

// Copies of texts that would be lost with the program.
namespace zan {

// The name of the copy for a buffer of the file `path`: "notes.txt.save", with a buffer's name
// "notes.txt.OTHER.save"; a file without a name counts as ".zan". Bytes of the buffer's name that do not
// belong into a file name become "_", and what is too long for one is cut off.
std::string rescue_name(std::string_view path, std::string_view buffer);

std::string directory_of(std::string_view path); // "." for a bare name

// Writes the lines to a new file in the directory, which its owner alone may read whatever the umask is:
// `name`, or if that is taken, be it by a link that leads nowhere, name.1, name.2 and so on. True when they
// have reached the disk; otherwise no file is left behind. Takes next to no memory, and never throws.
bool write_rescue_copy(const std::string& directory, const std::string& name, const LineStore& text) noexcept;

} // namespace zan
