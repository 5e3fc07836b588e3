#pragma once

#include <functional>
#include <string>
#include <string_view>

// Version suffixes: ";" and decimal digits at the end of a path. The plain file counts as version 0.
namespace zan {

using ExistsTest = std::function<bool(const std::string& path)>; // is there a regular file of that name?

// `path` without its version suffix; all of it when it has none ("name;" and "name;2a" have none).
std::string_view strip_vms_version(std::string_view path);
inline bool has_vms_version(std::string_view path) { return strip_vms_version(path).size() != path.size(); }

// The highest version of `base` that exists, 0 when there is none. Probes the names one by one, from 1 to
// 9999 at most, and gives up 51 numbers past the highest one found. Never lists the directory.
int highest_vms_version(const std::string& base, const ExistsTest& exists);

// The next free version of `base`, as a path: base;1 when there is none yet.
std::string next_vms_version(const std::string& base, const ExistsTest& exists);

// The path to write for `name`. A name without a version of which no version exists stays as it is when
// `versioning` is off; any other gives the next version, whatever number the name carries. "" stays "".
std::string resolve_write_path(const std::string& name, bool versioning, const ExistsTest& exists);

} // namespace zan
