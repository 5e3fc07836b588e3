#include "files/rescue_copy.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

#include "files/block_writer.h"
#include "files/place.h"
#include "files/records.h"

namespace zan {

namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
constexpr std::size_t kLongestStem = 240; // leaves room for what follows in a name of 255 bytes
constexpr int kLastNumber = 99999;
constexpr std::size_t kLargestWrite = 1U << 30; // some systems refuse a count of 2 GiB or more

bool fits_file_name(char byte) {
  return static_cast<unsigned char>(byte) >= ' ' && byte != '/' && byte != 127;
}

// A file that did not exist before, and is removed again unless it was finished.
class NewFile {
 public:
  NewFile(int directory, const std::string& name) : directory_(directory) {
    for (int number = 0; number <= kLastNumber; ++number) {
      name_ = number == 0 ? name : name + "." + std::to_string(number);
      constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
      file_ = UniqueFd(retry([&] { return ::openat(directory, name_.c_str(), kFlags, kOwnerOnly); }));
      if (file_) return;
      if (errno != EEXIST) break;
    }
    name_.clear();
  }
  ~NewFile() {
    if (*this && !finished_) ::unlinkat(directory_, name_.c_str(), 0);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  explicit operator bool() const { return !name_.empty(); }

  bool write(std::string_view bytes) {
    while (!bytes.empty()) {
      const std::size_t size = std::min(bytes.size(), kLargestWrite);
      const ssize_t count = retry([&] { return ::write(file_.get(), bytes.data(), size); });
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  bool finish() {
    ::fchmod(file_.get(), kOwnerOnly); // what the umask took from the owner
    return finished_ = sync_fully(file_.get()) && file_.close();
  }

 private:
  int directory_;
  std::string name_; // empty: there is no file
  UniqueFd file_;
  bool finished_ = false;
};

} // namespace

std::string rescue_name(std::string_view path, std::string_view buffer) {
  std::string name(path.substr(path.rfind('/') + 1));
  if (name.empty()) name = ".zan";
  if (!buffer.empty()) name += '.';
  for (const char byte : buffer) name += fits_file_name(byte) ? byte : '_';
  return name.substr(0, kLongestStem) + ".save";
}

std::string directory_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? "." : std::string(path.substr(0, slash + 1));
}

bool write_rescue_copy(const std::string& directory, const std::string& name,
                       const LineStore& text) noexcept {
  try {
    const UniqueFd place = open_directory(directory);
    if (!place) return false;
    NewFile file(place.get(), name);
    const auto write = [&](std::string_view bytes) { return file.write(bytes); };
    if (!file || !each_file_piece(text, {0, text.line_count()}, 0, write) || !file.finish()) return false;
    sync_directory(place.get());
    return true;
  } catch (...) { // no memory
    return false;
  }
}

} // namespace zan
