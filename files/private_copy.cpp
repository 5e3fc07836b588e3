#include "files/private_copy.h"

#include <algorithm>
#include <cstdlib>
#include <sys/stat.h>

#include "files/block_writer.h"

namespace zan {

namespace {

constexpr int kLastNumber = 99999;

} // namespace

std::optional<TemporaryFile> make_private_copy(int directory, const std::string& leaf,
                                               const CopyWriter& write) {
  TemporaryFile file(directory, leaf, kOwnerOnly);
  if (!file || !write(file.descriptor())) return std::nullopt;
  ::fchmod(file.descriptor(), kOwnerOnly); // the umask may have cleared the owner's bits
  if (!sync_fully(file.descriptor()) || !file.close()) return std::nullopt;
  return file;
}

std::optional<std::string> take_free_name(const std::string& name,
                                          const std::function<bool(const std::string& name)>& take) {
  for (int number = 0; number <= kLastNumber; ++number) {
    std::string numbered = number == 0 ? name : name + "." + std::to_string(number);
    if (take(numbered)) return numbered;
    if (errno != EEXIST) break;
  }
  return std::nullopt;
}

std::optional<std::string> write_private_copy(const std::string& directory, const std::string& name,
                                              const CopyWriter& write) {
  const UniqueFd place = open_directory(directory);
  if (!place) return std::nullopt;
  std::optional<TemporaryFile> copy = make_private_copy(place.get(), name, write);
  if (!copy) return std::nullopt;
  std::string path;
  const bool named = take_free_name(name, [&](const std::string& free) {
                       path =
                           path_in(directory, free); // first: no memory may be needed once the name is taken
                       return copy->rename_to_new(free);
                     }).has_value();
  if (!named) return std::nullopt;
  sync_directory(place.get());
  return path;
}

std::vector<std::string> and_spare_directories(std::initializer_list<std::string> directories) {
  std::vector<std::string> all;
  const auto add = [&](const std::string& directory) {
    if (std::ranges::find(all, directory) == all.end()) all.push_back(directory);
  };
  for (const std::string& directory : directories) add(directory);
  const char* const spares[] = {std::getenv("HOME"), std::getenv("TMPDIR"), "/tmp"};
  for (const char* spare : spares)
    if (spare != nullptr) add(spare);
  return all;
}

std::string directory_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? "." : std::string(path.substr(0, slash + 1));
}

std::string path_in(const std::string& directory, const std::string& name) {
  if (directory == ".") return name;
  return directory.ends_with('/') ? directory + name : directory + "/" + name;
}

} // namespace zan
