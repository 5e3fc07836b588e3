#include "files/others_text.h"

#include <array>
#include <fcntl.h>

#include "files/private_copy.h"
#include "files/stat.h"
#include "host/write_bytes.h"

namespace zan {

namespace {

constexpr std::size_t kCopyBlock = 64 * 1024;

bool must_be_kept(const struct stat& file, const Guard& guard) {
  return S_ISREG(file.st_mode) && guard.may_replace && !guard.may_replace(state_of(file));
}

bool copy_bytes(int from, int to) {
  std::array<char, kCopyBlock> block;
  for (;;) {
    const ssize_t count = retry([&] { return ::read(from, block.data(), block.size()); });
    if (count <= 0) return count == 0;
    const auto size = static_cast<std::size_t>(count);
    if (write_bytes(to, {block.data(), size}) < size) return false;
  }
}

} // namespace

OthersText::~OthersText() {
  if (!path_.empty() && !stays_) ::unlink(path_.c_str());
}

bool OthersText::keep_entry(const Place& place, const Guard& guard) {
  struct stat file {};
  if (::fstatat(place.directory.get(), place.leaf.c_str(), &file, AT_SYMLINK_NOFOLLOW) != 0)
    return errno == ENOENT;
  if (!must_be_kept(file, guard)) return true;
  // Beside the file only: a link elsewhere might show it to more people.
  const std::string& beside = guard.directories.front();
  if (link_into(beside, guard.copy_name, place, file)) return true;
  for (const std::string& directory : guard.directories) {
    if (copy_into(directory, guard.copy_name, open_in(place, O_RDONLY | O_NOFOLLOW), file)) return true;
  }
  return false;
}

bool OthersText::keep_bytes(int target, const std::string& path, const Guard& guard) {
  struct stat file {};
  if (::fstat(target, &file) != 0) return false;
  if (!must_be_kept(file, guard)) return true;
  for (const std::string& directory : guard.directories) {
    if (!copy_into(directory, guard.copy_name, open_file(path, O_RDONLY), file)) continue;
    struct stat after {}; // another program may be writing to it
    return ::fstat(target, &after) == 0 && state_of(after) == state_of(file);
  }
  return false;
}

// The link is checked afterwards: the name may stand for yet another file by then.
bool OthersText::link_into(const std::string& directory, const std::string& name, const Place& from,
                           const struct stat& file) {
  const UniqueFd to = open_directory(directory);
  const auto link = [&](const std::string& free) {
    path_ = path_in(directory, free);
    return ::linkat(from.directory.get(), from.leaf.c_str(), to.get(), free.c_str(), 0) == 0;
  };
  struct stat linked {};
  if (!to || !take_free_name(name, link)) {
    path_.clear();
    return false;
  }
  if (::lstat(path_.c_str(), &linked) == 0 && same_file(linked, file) && sync_directory(to.get()))
    return true;
  ::unlink(path_.c_str());
  path_.clear();
  return false;
}

bool OthersText::copy_into(const std::string& directory, const std::string& name, UniqueFd from,
                           const struct stat& file) {
  struct stat opened {};
  if (!from || ::fstat(from.get(), &opened) != 0 || !same_file(opened, file)) return false;
  path_ =
      write_private_copy(directory, name, [&](int to) { return copy_bytes(from.get(), to); }).value_or("");
  return !path_.empty();
}

} // namespace zan
