#include "files/file_attributes.h"

#include <cerrno>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#if defined(__linux__)
#include <sys/xattr.h>
#elif defined(__APPLE__)
#include <copyfile.h>
#include <sys/xattr.h>
#endif

namespace zan {

namespace {

constexpr mode_t kAllModeBits = 07777;

bool copy_owner(int from, int to) {
  struct stat wanted {};
  struct stat present {};
  if (::fstat(from, &wanted) != 0 || ::fstat(to, &present) != 0) return false;
  if (wanted.st_uid == present.st_uid && wanted.st_gid == present.st_gid) return true;
  const uid_t owner = wanted.st_uid == present.st_uid ? static_cast<uid_t>(-1) : wanted.st_uid;
  return ::fchown(to, owner, wanted.st_gid) == 0;
}

#if defined(__linux__) || defined(__APPLE__)

#if defined(__APPLE__)
// Here these calls also take a position and options.
ssize_t list_attributes(int file, char* buffer, std::size_t size) {
  return ::flistxattr(file, buffer, size, 0);
}
ssize_t read_attribute(int file, const char* name, char* buffer, std::size_t size) {
  return ::fgetxattr(file, name, buffer, size, 0, 0);
}
bool remove_attribute(int file, const char* name) {
  // The system gives new files some attributes that nobody may remove.
  return ::fremovexattr(file, name, 0) == 0 || errno == ENOATTR || errno == EPERM;
}
constexpr int kNoAttribute = ENOATTR;
#else
// Access lists are extended attributes here as well.
ssize_t list_attributes(int file, char* buffer, std::size_t size) { return ::flistxattr(file, buffer, size); }
ssize_t read_attribute(int file, const char* name, char* buffer, std::size_t size) {
  return ::fgetxattr(file, name, buffer, size);
}
bool remove_attribute(int file, const char* name) {
  return ::fremovexattr(file, name) == 0 || errno == ENODATA;
}
constexpr int kNoAttribute = ENODATA;
#endif

constexpr int kSizeAttempts = 8; // a value may grow between asking for its size and reading it

// The bytes that `read(buffer, size)` reads; called with size 0, it returns how many there are.
template <typename Read> std::optional<std::string> read_sized(Read&& read) {
  std::string bytes;
  for (int attempt = 0; attempt < kSizeAttempts; ++attempt) {
    const ssize_t needed = read(bytes.data(), std::size_t{0});
    if (needed < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(needed));
    if (needed == 0) return bytes;
    const ssize_t size = read(bytes.data(), bytes.size());
    if (size < 0 && errno == ERANGE) continue;
    if (size < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
  }
  return std::nullopt;
}

std::optional<std::vector<std::string>> attribute_names(int file) {
  const auto list =
      read_sized([&](char* buffer, std::size_t size) { return list_attributes(file, buffer, size); });
  if (!list && errno != ENOTSUP) return std::nullopt;
  std::vector<std::string> names;
  if (!list) return names;
  for (std::size_t begin = 0; begin < list->size(); begin += names.back().size() + 1) {
    names.emplace_back(list->c_str() + begin); // each name ends in a NUL
  }
  return names;
}

std::optional<std::string> attribute_value(int file, const std::string& name) {
  return read_sized(
      [&](char* buffer, std::size_t size) { return read_attribute(file, name.c_str(), buffer, size); });
}

// A new file may have been given an access list by its directory that the old one did not have.
bool remove_other_attributes(int from, int to) {
  const auto present = attribute_names(to);
  if (!present) return false;
  for (const std::string& name : *present) {
    if (attribute_value(from, name)) continue;
    if (errno != kNoAttribute) return false; // it may exist all the same
    if (!remove_attribute(to, name.c_str())) return false;
  }
  return true;
}

#endif

#if defined(__linux__)

// Does not set an attribute that is right already: many can be read by everybody and set by few.
bool copy_attribute(int from, int to, const std::string& name) {
  const std::optional<std::string> value = attribute_value(from, name);
  if (!value) return false;
  if (attribute_value(to, name) == value) return true;
  return ::fsetxattr(to, name.c_str(), value->data(), value->size(), 0) == 0;
}

bool copy_attributes(int from, int to) {
  const auto wanted = attribute_names(from);
  if (!wanted) return false;
  for (const std::string& name : *wanted) {
    if (!copy_attribute(from, to, name)) return false;
  }
  return remove_other_attributes(from, to);
}

#elif defined(__APPLE__)

bool copy_attributes(int from, int to) {
  return ::fcopyfile(from, to, nullptr, COPYFILE_ACL | COPYFILE_XATTR) == 0 &&
         remove_other_attributes(from, to);
}

#else

bool copy_attributes(int, int) { return true; }

#endif

} // namespace

bool copy_owner_and_attributes(int from, int to) { return copy_owner(from, to) && copy_attributes(from, to); }

bool set_mode_bits(int file, mode_t mode) {
  struct stat present {};
  const auto is_set = [&] {
    return ::fstat(file, &present) == 0 && ((mode ^ present.st_mode) & kAllModeBits) == 0;
  };
  // Checked afterwards: the system may drop a bit silently.
  return is_set() || (::fchmod(file, mode & kAllModeBits) == 0 && is_set());
}

} // namespace zan
