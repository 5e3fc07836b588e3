#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "text/line_store.h"

namespace zan {

using ByteSet = std::array<bool, 256>;

ByteSet byte_set(std::string_view bytes);

// The first offset in [begin, end) whose byte is in `set` (or is not, when `member` is false), or end. Reads
// no byte beyond it.
std::uint64_t scan_forward(const LineStore& text, std::uint64_t begin, std::uint64_t end, const ByteSet& set,
                           bool member);
// The offset after the last such byte, or begin.
std::uint64_t scan_backward(const LineStore& text, std::uint64_t begin, std::uint64_t end, const ByteSet& set,
                            bool member);

} // namespace zan
