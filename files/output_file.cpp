#include "files/output_file.h"

#include "files/stat.h"
#include "files/version_name.h"

namespace zan {

namespace {

constexpr int kVersionAttempts = 100; // each costs another process a new version in the meantime

} // namespace

Saved save_output(std::string& path, const ByteSource& source, const Guard& guard) {
  if (!has_vms_version(path)) return save_file(path, source, SaveMode::replace, guard);
  const std::string base(strip_vms_version(path));
  for (int attempt = 0; attempt < kVersionAttempts; ++attempt) {
    Saved saved = save_file(path, source, SaveMode::create_exclusively);
    if (saved.result != SaveResult::exists) return saved;
    const std::string next = next_vms_version(base, file_exists);
    if (next == path) return save_file(path, source, SaveMode::replace, guard);
    path = next;
  }
  return {};
}

} // namespace zan
