#include "files/stat.h"

int zan_stat(const char* path, struct stat* buffer) { return ::stat(path, buffer); }

namespace zan {

bool is_usable_path(const std::string& path) { return !path.empty() && path.find('\0') == std::string::npos; }

bool file_exists(const std::string& path) {
  struct stat status {};
  return is_usable_path(path) && zan_stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace zan
