#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

#include "host/unique_fd.h"

// A directory descriptor and a leaf name, so that what is checked and what is then done concern the same
// directory, even if the path to it changes meanwhile.
namespace zan {

inline constexpr mode_t kOwnerOnly = 0600; // read and written by its owner

// open, repeated after interrupts; never makes a terminal the controlling one. After a failure see errno.
UniqueFd open_file(const std::string& path, int flags, mode_t mode = 0);
// The same for writing, but Ctrl/C also ends the wait for a FIFO's reader, with EINTR.
UniqueFd open_target(const std::string& path);
UniqueFd open_directory(const std::string& path); // to look names up in; it may be unreadable

// Where the file of a path really lies.
struct Place {
  UniqueFd directory;
  std::string leaf; // never a symbolic link when it was found, possibly missing
  std::string path; // of the directory, such that path + leaf names the file
};

UniqueFd open_in(const Place& place, int flags); // the file itself

// Follows the symbolic links at the end of `path`, also to a file that does not exist. Nothing for a path
// that ends in a slash, a link loop or a missing directory.
std::optional<Place> find_place(const std::string& path);

// Syncs the directory, so that a new name or a rename in it survives a crash. True where directories cannot
// be synced.
bool sync_directory(int directory);

// A file under a name of its own beside `leaf`, removed again unless it was published or kept.
class TemporaryFile {
 public:
  TemporaryFile() = default;                                        // none
  TemporaryFile(int directory, std::string_view leaf, mode_t mode); // none when it cannot be created
  TemporaryFile(TemporaryFile&& other) noexcept = default;
  TemporaryFile& operator=(TemporaryFile&&) = delete;
  ~TemporaryFile();

  explicit operator bool() const { return !name_.empty(); }
  int descriptor() const { return file_.get(); }
  bool close() { return file_.close(); }
  const std::string& name() const { return name_; }
  void keep(bool kept) { kept_ = kept; }

  bool rename_over(const std::string& leaf); // takes the place of `leaf`, whole and at once
  // Becomes `leaf`, which must not exist: errno is EEXIST if it does.
  bool rename_to_new(const std::string& leaf);

 private:
  bool create(const std::string& name, mode_t mode);
  bool rename_to_reserved(const std::string& leaf);

  UniqueFd directory_;
  UniqueFd file_;
  std::string name_; // empty: there is nothing to remove
  bool kept_ = false;
};

} // namespace zan
