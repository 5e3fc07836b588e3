#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zan {

// The commands of a one-line macro definition: cut at each ";" or line feed that stands outside quotes (" or
// '), trimmed, empty ones left out. Quotes stay in the commands; one that is not closed runs to the end.
std::vector<std::string> split_macro_commands(std::string_view definition);

} // namespace zan
