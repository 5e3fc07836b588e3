#include "files/output_file.h"

#include "files/safe_save.h"
#include "files/stat.h"
#include "files/version_name.h"

namespace zan {

namespace {

constexpr int kAttempts = 100; // each costs another process a new version in the meantime

} // namespace

bool save_output(std::string& path, const ByteSource& source) {
  if (!has_vms_version(path)) return save_file(path, source, SaveMode::replace) == SaveResult::saved;
  const std::string base(strip_vms_version(path));
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const SaveResult result = save_file(path, source, SaveMode::create_exclusively);
    if (result != SaveResult::exists) return result == SaveResult::saved;
    const std::string next = next_vms_version(base, file_exists);
    if (next == path) return save_file(path, source, SaveMode::replace) == SaveResult::saved;
    path = next;
  }
  return false;
}

} // namespace zan
