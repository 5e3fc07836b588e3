#pragma once

#include <string>
#include <string_view>

namespace zan {

// What WRITE is to write where. Empty: not given.
struct WriteArguments {
  std::string file;
  std::string buffer;
  std::string range; // as typed
  bool operator==(const WriteArguments&) const = default;
};

// A file name, in double quotes or not, then a range and "BUFFER name" in either order.
WriteArguments parse_write_arguments(std::string_view arg);

} // namespace zan
