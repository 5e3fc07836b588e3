#include "files/version_name.h"

#include "text/bytes.h"

namespace zan {

namespace {

constexpr int kVersionLimit = 10000; // versions are looked for below this
constexpr int kVersionGap = 50;      // missing numbers that the probe steps over

std::string with_version(const std::string& base, int version) {
  return base + ";" + std::to_string(version);
}

} // namespace

std::string_view strip_vms_version(std::string_view path) {
  const std::size_t mark = path.rfind(';');
  if (mark == std::string_view::npos || !all_digits(path.substr(mark + 1))) return path;
  return path.substr(0, mark);
}

int highest_vms_version(const std::string& base, const ExistsTest& exists) {
  int highest = 0;
  for (int version = 1; version < kVersionLimit; ++version) {
    if (exists(with_version(base, version))) {
      highest = version;
    } else if (version > highest + kVersionGap) {
      break;
    }
  }
  return highest;
}

std::string next_vms_version(const std::string& base, const ExistsTest& exists) {
  return with_version(base, highest_vms_version(base, exists) + 1);
}

std::string resolve_write_path(const std::string& name, bool versioning, const ExistsTest& exists) {
  if (name.empty()) return name;
  const std::string base(strip_vms_version(name));
  const int highest = highest_vms_version(base, exists);
  if (!versioning && base == name && highest == 0) return name;
  return with_version(base, highest + 1);
}

} // namespace zan
