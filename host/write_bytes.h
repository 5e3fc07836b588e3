#pragma once

#include <cstddef>
#include <string_view>

#include "host/abort.h"

namespace zan {

// Writes the bytes to a descriptor, however many calls that takes. The number written is smaller only after
// an error, and once `abort` is set and the rest would have to wait.
std::size_t write_bytes(int descriptor, std::string_view bytes, Abort& abort = kNeverAborted);

} // namespace zan
