#include "recovery/session_file.h"

#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>

#include "files/block_writer.h"
#include "files/private_copy.h"
#include "files/stat.h"
#include "host/write_bytes.h"
#include "recovery/entries.h"

namespace zan {

namespace {

constexpr std::string_view kMark = ".zan-recovery-";
constexpr std::size_t kLongestLeaf = 200; // bytes; leaves room for the rest of a name

std::string stem_beside(const std::string& path) {
  const std::string leaf = path.substr(path.rfind('/') + 1);
  return "." + leaf.substr(0, kLongestLeaf) + std::string(kMark);
}

std::string stem_at_home(const std::string& path) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string stem(kMark);
  for (std::uint64_t digest = checksum(absolute_path(path)), i = 0; i < 16; ++i, digest >>= 4)
    stem += kDigits[digest & 15];
  return stem + "-";
}

bool is_own_file(int descriptor) {
  struct stat file {};
  return ::fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode) && file.st_nlink == 1 &&
         file.st_uid == ::geteuid();
}

UniqueFd open_found(int directory, const std::string& name) {
  return UniqueFd(::openat(directory, name.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
}

// What follows `stem` in a name, but for what makes it unique; "" for other names, temporary ones too.
std::string process_in(std::string_view name, std::string_view stem) {
  if (!name.starts_with(stem)) return "";
  name.remove_prefix(stem.size());
  const std::string_view digits = name.substr(0, name.find_first_not_of("0123456789"));
  const std::string_view rest = name.substr(digits.size());
  const bool numbered = rest.size() > 1 && rest.find_first_not_of("0123456789", 1) == std::string_view::npos;
  return rest.empty() || (rest.front() == '.' && numbered) ? std::string(digits) : "";
}

std::vector<std::string> names_in(int directory) {
  std::vector<std::string> names;
  UniqueFd readable(::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  DIR* const listing = readable ? ::fdopendir(readable.get()) : nullptr;
  if (listing == nullptr) return names;
  static_cast<void>(readable.release());
  while (const dirent* const entry = ::readdir(listing)) names.emplace_back(entry->d_name);
  ::closedir(listing);
  return names;
}

// A session may have been killed before its file got its name. A file that is still to be locked is younger.
void remove_if_abandoned(int directory, const std::string& name) {
  constexpr std::time_t kLongAgo = 60; // seconds
  const UniqueFd file = open_found(directory, name);
  struct stat status {};
  if (!file || !is_own_file(file.get()) || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return;
  if (::fstat(file.get(), &status) == 0 && status.st_mtime + kLongAgo < std::time(nullptr))
    ::unlinkat(directory, name.c_str(), 0);
}

void find_in(const std::string& path, const std::string& stem, std::vector<FoundSession>& found) {
  const UniqueFd directory = open_directory(path);
  if (!directory) return;
  for (const std::string& name : names_in(directory.get())) {
    if (name.starts_with("." + stem)) remove_if_abandoned(directory.get(), name);
    std::string process = process_in(name, stem);
    if (process.empty()) continue;
    UniqueFd file = open_found(directory.get(), name);
    if (!file || !is_own_file(file.get())) continue;
    const bool locked = ::flock(file.get(), LOCK_EX | LOCK_NB) == 0;
    if (!locked && errno != EWOULDBLOCK) continue;
    if (locked && !is_own_file(file.get())) continue; // somebody has just restored and removed it
    found.push_back({open_directory(path), name, locked ? std::move(file) : UniqueFd(), std::move(process)});
  }
}

} // namespace

std::string absolute_path(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> directory(::realpath(directory_of(path).c_str(), nullptr),
                                                              &std::free);
  if (directory == nullptr) return path;
  return path_in(directory.get(), path.substr(path.rfind('/') + 1));
}

std::string session_name_beside(const std::string& path, long process) {
  return stem_beside(path) + std::to_string(process);
}

std::string session_name_at_home(const std::string& path, long process) {
  return stem_at_home(path) + std::to_string(process);
}

std::optional<SessionFile> SessionFile::create(const std::string& directory, const std::string& name) {
  UniqueFd place = open_directory(directory);
  if (!place) return std::nullopt;
  TemporaryFile file(place.get(), name, kOwnerOnly);
  if (!file || ::flock(file.descriptor(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  ::fchmod(file.descriptor(), kOwnerOnly); // what the umask took from the owner
  return SessionFile(std::move(place), std::move(file), name);
}

bool SessionFile::append(std::string_view bytes) {
  const std::size_t written = write_bytes(file_.descriptor(), bytes);
  size_ += written;
  return written == bytes.size();
}

bool SessionFile::take_name() {
  const auto taken =
      take_free_name(name_, [&](const std::string& free) { return file_.rename_to_new(free); });
  if (taken) name_ = *taken;
  return named_ = taken.has_value();
}

bool SessionFile::take_place_of(SessionFile& older) {
  struct stat here {};
  struct stat there {};
  const bool together = ::fstat(directory_.get(), &here) == 0 &&
                        ::fstat(older.directory_.get(), &there) == 0 && same_file(here, there) &&
                        older.name_.starts_with(name_);
  if (!together) {
    if (!take_name()) return false;
    older.remove();
    return true;
  }
  name_ = older.name_;
  named_ = file_.rename_over(name_);
  if (named_) older.named_ = false;
  return named_;
}

bool SessionFile::sync() const { return sync_fully(file_.descriptor()) && sync_directory(directory_.get()); }

void SessionFile::remove() {
  if (std::exchange(named_, false)) ::unlinkat(directory_.get(), name_.c_str(), 0);
}

std::vector<FoundSession> find_sessions(const std::string& path) {
  std::vector<FoundSession> found;
  find_in(directory_of(path), stem_beside(path), found);
  if (const char* home = std::getenv("HOME")) find_in(home, stem_at_home(path), found);
  return found;
}

} // namespace zan
