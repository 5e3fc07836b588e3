#include "files/place.h"

#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

#include "files/block_writer.h"
#include "host/abort.h"

namespace zan {

namespace {

#if defined(O_PATH)
constexpr int kLookUp = O_PATH;
#elif defined(O_SEARCH)
constexpr int kLookUp = O_SEARCH;
#else
constexpr int kLookUp = O_RDONLY;
#endif

constexpr int kLinkHops = 40;             // more count as a loop, as they do for the system
constexpr std::size_t kLongestHint = 100; // bytes of a file's name that show in the temporary one
constexpr int kNameAttempts = 100;

UniqueFd open_at(int directory, const std::string& path, int flags, mode_t mode) {
  return UniqueFd(
      retry([&] { return ::openat(directory, path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode); }));
}

// A new file; EEXIST when the name is taken, be it by a link that leads nowhere.
UniqueFd open_new(int directory, const std::string& name, mode_t mode) {
  return open_at(directory, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
}

// The target of the symbolic link; "" when it is none.
std::string read_link(int directory, const std::string& leaf) {
  std::vector<char> target(4096); // no system allows longer ones
  const ssize_t size = ::readlinkat(directory, leaf.c_str(), target.data(), target.size());
  return size > 0 ? std::string(target.data(), static_cast<std::size_t>(size)) : std::string();
}

// Differs from call to call and from process to process: O_EXCL does the rest.
std::string unlikely_suffix() {
  static constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
  struct timespec now {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  auto value = static_cast<std::uint64_t>(now.tv_nsec) * 2654435761U + static_cast<std::uint64_t>(::getpid());
  std::string suffix;
  for (int i = 0; i < 6; ++i, value /= kLetters.size())
    suffix += kLetters[static_cast<std::size_t>(value % kLetters.size())];
  return suffix;
}

// rename that never replaces anything. ENOTSUP where system or file system have no such thing.
int rename_exclusively(int directory, const std::string& from, const std::string& to) {
#if defined(__linux__) && defined(RENAME_NOREPLACE)
  const int result = ::renameat2(directory, from.c_str(), directory, to.c_str(), RENAME_NOREPLACE);
  if (result != 0 && (errno == EINVAL || errno == ENOSYS)) errno = ENOTSUP;
  return result;
#elif defined(__APPLE__)
  return ::renameatx_np(directory, from.c_str(), directory, to.c_str(), RENAME_EXCL);
#else
  (void)directory, (void)from, (void)to;
  errno = ENOTSUP;
  return -1;
#endif
}

} // namespace

UniqueFd open_file(const std::string& path, int flags, mode_t mode) {
  return open_at(AT_FDCWD, path, flags, mode);
}

UniqueFd open_target(const std::string& path) {
  for (;;) {
    UniqueFd file(::openat(AT_FDCWD, path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (file || errno != EINTR || g_zan_abort_requested != 0) return file;
  }
}

UniqueFd open_directory(const std::string& path) { return open_file(path, kLookUp | O_DIRECTORY); }

std::optional<Place> find_place(const std::string& path) {
  UniqueFd base; // what a relative path starts from; none: the current directory
  std::string base_path;
  std::string rest = path;
  for (int hop = 0; hop <= kLinkHops; ++hop) {
    const std::size_t slash = rest.rfind('/');
    const std::string parent = slash == std::string::npos ? "" : rest.substr(0, slash + 1);
    std::string leaf = rest.substr(slash == std::string::npos ? 0 : slash + 1);
    if (leaf.empty()) return std::nullopt;
    base = open_at(base ? base.get() : AT_FDCWD, parent.empty() ? "." : parent, kLookUp | O_DIRECTORY, 0);
    if (!base) return std::nullopt;
    if (parent.starts_with('/')) base_path.clear();
    base_path += parent;
    rest = read_link(base.get(), leaf);
    if (rest.empty()) return Place{std::move(base), std::move(leaf), std::move(base_path)};
  }
  return std::nullopt;
}

UniqueFd open_in(const Place& place, int flags) {
  return open_at(place.directory.get(), place.leaf, flags, 0);
}

bool sync_directory(int directory) {
  const UniqueFd readable = open_at(directory, ".", O_RDONLY | O_DIRECTORY, 0);
  return !readable || sync_fully(readable.get());
}

TemporaryFile::TemporaryFile(int directory, std::string_view leaf, mode_t mode)
    : directory_(open_at(directory, ".", kLookUp | O_DIRECTORY, 0)) {
  const std::string hint = "." + std::string(leaf.substr(0, kLongestHint));
  for (int attempt = 0; directory_ && attempt < kNameAttempts; ++attempt) {
    const std::string suffix = ".zan-" + unlikely_suffix();
    if (create(hint + suffix, mode)) return;
    if (errno == EEXIST) continue;
    // The file system may refuse long names, or the name that the cut has made.
    if (create(suffix, mode) || errno != EEXIST) return;
  }
}

bool TemporaryFile::create(const std::string& name, mode_t mode) {
  std::string kept = name; // copied first: nothing may fail between creating the file and setting name_
  file_ = open_new(directory_.get(), name, mode);
  if (file_) name_.swap(kept);
  return static_cast<bool>(file_);
}

TemporaryFile::~TemporaryFile() {
  if (!name_.empty() && !kept_) ::unlinkat(directory_.get(), name_.c_str(), 0);
}

bool TemporaryFile::rename_over(const std::string& leaf) {
  if (::renameat(directory_.get(), name_.c_str(), directory_.get(), leaf.c_str()) != 0) return false;
  name_.clear();
  return true;
}

bool TemporaryFile::rename_to_new(const std::string& leaf) {
  if (rename_exclusively(directory_.get(), name_, leaf) == 0) {
    name_.clear();
    return true;
  }
  if (errno != ENOTSUP) return false;
  // A link refuses an existing name as well. The file keeps both names until this object ends.
  if (::linkat(directory_.get(), name_.c_str(), directory_.get(), leaf.c_str(), 0) == 0) return true;
  return errno != EEXIST && rename_to_reserved(leaf);
}

// For file systems without links: an empty file reserves the name first. A crash in between leaves that empty
// file, but no text is lost.
bool TemporaryFile::rename_to_reserved(const std::string& leaf) {
  if (!open_new(directory_.get(), leaf, kOwnerOnly)) return false;
  if (rename_over(leaf)) return true;
  const int error = errno;
  ::unlinkat(directory_.get(), leaf.c_str(), 0);
  errno = error;
  return false;
}

} // namespace zan
