#include "files/journal_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/uio.h>

#include "files/block_writer.h"
#include "files/file_attributes.h"
#include "files/place.h"
#include "files/stat.h"

namespace zan {

namespace {

bool is_trusted(const JournalFile& journal, const struct stat& file) {
  const uid_t user = ::geteuid();
  return S_ISREG(file.st_mode) && (journal.named_by_user || file.st_uid == user) &&
         (user != 0 || file.st_nlink <= 1);
}

// The user cannot have opened such a path. After any other error the path may still be the journal.
bool leads_nowhere(int error) {
  return error == ENOENT || error == ENOTDIR || error == EACCES || error == ELOOP || error == ENAMETOOLONG;
}

bool is_protected(const JournalFile& journal, const struct stat& file) {
  return std::ranges::any_of(journal.protected_paths, [&](const std::string& path) {
    struct stat other {};
    if (!is_usable_path(path) || path == journal.path) return path == journal.path;
    return zan_stat(path.c_str(), &other) == 0 ? same_file(other, file) : !leads_nowhere(errno);
  });
}

// Looks up the journal. False when there is none that may be trusted.
bool find_journal(const JournalFile& journal, struct stat& file) {
  if (!is_usable_path(journal.path)) return false;
  const auto look = journal.named_by_user ? zan_stat : ::lstat;
  return look(journal.path.c_str(), &file) == 0 && is_trusted(journal, file);
}

struct OpenJournal {
  UniqueFd file;
  bool created = false;
};

OpenJournal open_journal(const JournalFile& journal) {
  // Without O_NONBLOCK, a FIFO or a modem in the journal's place would hold the editor up.
  const int common = O_APPEND | O_NONBLOCK | (journal.named_by_user ? 0 : O_NOFOLLOW);
  OpenJournal opened{open_file(journal.path, O_RDWR | common)};
  if (!opened.file && errno == EACCES) opened.file = open_file(journal.path, O_WRONLY | common);
  if (opened.file || errno != ENOENT) return opened;
  opened.file = open_file(journal.path, O_RDWR | O_CREAT | common, kOwnerOnly);
  opened.created = true;
  return opened;
}

// Also false when the file cannot be read: one more empty line does no harm.
bool ends_in_line_feed(int file, off_t size) {
  char last = '\0';
  return size == 0 || (retry([&] { return ::pread(file, &last, 1, size - 1); }) == 1 && last == '\n');
}

bool append_line(int file, off_t size, std::string_view line) {
  char line_feed = '\n';
  const std::size_t before = ends_in_line_feed(file, size) ? 0 : 1;
  const std::array<struct iovec, 3> parts = {
      {{&line_feed, before}, {const_cast<char*>(line.data()), line.size()}, {&line_feed, 1}}};
  const ssize_t count = retry([&] { return ::writev(file, parts.data(), static_cast<int>(parts.size())); });
  if (count <= 0 || static_cast<std::size_t>(count) == before + line.size() + 1) return count > 0;
  // If this fails too, the next line will begin with a line feed.
  [[maybe_unused]] const int result = retry([&] { return ::ftruncate(file, size); });
  return false;
}

// Also on the disk. A file behind a symbolic link is spared: its own name stays.
void empty_if_only_name(const JournalFile& journal) {
  const UniqueFd opened = open_file(journal.path, O_WRONLY | O_NONBLOCK | O_NOFOLLOW);
  struct stat file {};
  if (!opened || ::fstat(opened.get(), &file) != 0 || file.st_nlink != 1) return;
  if (!is_trusted(journal, file) || is_protected(journal, file)) return;
  if (retry([&] { return ::ftruncate(opened.get(), 0); }) == 0) sync_fully(opened.get());
}

// Removes the file that opening the journal has created: the output must not exist before it is saved. A
// symbolic link to it stays.
void remove_created(const std::string& path) {
  const auto place = find_place(path);
  if (place) ::unlinkat(place->directory.get(), place->leaf.c_str(), 0);
}

} // namespace

bool append_journal_line(const JournalFile& journal, std::string_view line) {
  if (!is_usable_path(journal.path)) return false;
  const OpenJournal opened = open_journal(journal);
  struct stat file {};
  if (!opened.file || ::fstat(opened.file.get(), &file) != 0 || !is_trusted(journal, file)) return false;
  const bool is_new = opened.created && file.st_size == 0;
  if (is_protected(journal, file)) {
    if (is_new) remove_created(journal.path);
    return false;
  }
  if (is_new) set_mode_bits(opened.file.get(), kOwnerOnly); // what the umask took from the owner
  return append_line(opened.file.get(), file.st_size, line);
}

bool journal_may_be_replayed(const JournalFile& journal) {
  struct stat file {};
  return find_journal(journal, file);
}

void sync_journal(const JournalFile& journal) {
  struct stat file {};
  if (!find_journal(journal, file)) return;
  if (const UniqueFd opened = open_file(journal.path, O_WRONLY | O_NONBLOCK)) sync_fully(opened.get());
  if (const auto place = find_place(journal.path)) sync_directory(place->directory.get());
}

void delete_journal(const JournalFile& journal) {
  struct stat file {};
  if (!find_journal(journal, file) || is_protected(journal, file)) return;
  empty_if_only_name(journal);
  ::unlink(journal.path.c_str());
}

} // namespace zan
