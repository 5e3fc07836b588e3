#include "files/rescue_copy.h"

#include "files/private_copy.h"
#include "files/records.h"
#include "host/write_bytes.h"

namespace zan {

namespace {

constexpr std::size_t kLongestStem = 240; // leaves room for what follows in a name of 255 bytes

bool fits_file_name(char byte) {
  return static_cast<unsigned char>(byte) >= ' ' && byte != '/' && byte != 127;
}

} // namespace

std::string rescue_name(std::string_view path, std::string_view buffer) {
  std::string name(path.substr(path.rfind('/') + 1));
  if (name.empty()) name = ".zan";
  if (!buffer.empty()) name += '.';
  for (const char byte : buffer) name += fits_file_name(byte) ? byte : '_';
  return name.substr(0, kLongestStem) + ".save";
}

std::optional<std::string> write_rescue_copy(const std::string& directory, const std::string& name,
                                             const LineStore& text) noexcept {
  try {
    return write_private_copy(directory, name, [&](int file) { // piece by piece: a block might find no room
      const auto write = [&](std::string_view bytes) { return write_bytes(file, bytes) == bytes.size(); };
      return each_file_piece(text, {0, text.line_count()}, 0, write);
    });
  } catch (...) { // no memory
    return std::nullopt;
  }
}

} // namespace zan
