#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace zan {

// What stat says about a file. Two equal states are taken for the same text.
struct FileState {
  enum class Kind { missing, unreadable, present };
  Kind kind = Kind::missing;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t seconds = 0; // of the last change of its bytes
  std::int64_t nanoseconds = 0;
  auto operator<=>(const FileState&) const = default;
};

FileState state_of(const struct stat& file); // present

// Where a text came from. Two texts that share this object came from the same file.
struct FileOrigin {
  std::string path;
  FileState state; // just before its bytes were read
};
using OriginRef = std::shared_ptr<const FileOrigin>;

} // namespace zan
