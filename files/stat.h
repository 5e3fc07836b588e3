#pragma once

#include <string>
#include <sys/stat.h>

// The system's stat. Every test for existence goes through it.
int zan_stat(const char* path, struct stat* buffer);

namespace zan {

// True only for an existing regular file, symbolic links followed: not for "", directories, devices, dangling
// links, nor for a path with a NUL byte, which would name some other file.
bool file_exists(const std::string& path);

// False for "" and for a path with a NUL byte, which the system would cut short.
bool is_usable_path(const std::string& path);

inline bool same_file(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace zan
