#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace zan::test {

// A directory of its own for one test, removed with all it holds. Its path is free of symbolic links.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "zan-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    path_ = std::filesystem::canonical(name);
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

  std::set<std::string> names() const { // of everything in it
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      names.insert(entry.path().filename());
    return names;
  }

 private:
  std::string path_;
};

inline void write_file(const std::string& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string read_file(const std::string& path) { // "(none)" when there is nothing to read
  std::ifstream in(path, std::ios::binary);
  if (!in) return "(none)";
  return {std::istreambuf_iterator<char>(in), {}};
}

inline struct stat stat_of(const std::string& path) { // all zero when it does not exist; links not followed
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return {};
  return status;
}

} // namespace zan::test
