#include "files/version_name.h"

#include <gtest/gtest.h>
#include <set>

namespace {

using Names = std::set<std::string>;

zan::ExistsTest among(const Names& names) {
  return [names](const std::string& path) { return names.contains(path); };
}

TEST(VersionName, Strip) {
  const struct {
    const char* path;
    const char* base;
  } rows[] = {
      {"name", "name"},
      {"name;7", "name"},
      {"name;", "name;"},
      {"name;7a", "name;7a"},
      {"name;-1", "name;-1"},
      {"name;1;2", "name;1"},
      {"d;1/name", "d;1/name"},
      {"name;99999999999999999999", "name"},
      {";3", ""},
      {"", ""},
  };
  for (const auto& row : rows) EXPECT_EQ(zan::strip_vms_version(row.path), row.base) << row.path;
}

TEST(VersionName, Resolve) {
  const struct {
    const char* name;
    bool versioning;
    Names on_disk;
    const char* path;
  } rows[] = {
      {"", true, {}, ""},
      {"f", false, {"f"}, "f"},
      {"f", false, {"f", "f;2"}, "f;3"},
      {"f", true, {}, "f;1"},
      {"f", true, {"f"}, "f;1"},
      {"f;9", false, {}, "f;1"},
      {"FILE.TXT;7", false, {"FILE.TXT;1", "FILE.TXT;2", "FILE.TXT;3"}, "FILE.TXT;4"},
      {"f;", false, {}, "f;"},
      {"f;", false, {"f;;3"}, "f;;4"},
      {"f", false, {"f;1", "f;40"}, "f;41"},
      {"f", false, {"f;1", "f;52"}, "f;53"}, // the last number that the probe reaches
      {"f", false, {"f;1", "f;60"}, "f;2"},
      {"f", false, {"f;51"}, "f;52"},
      {"f", false, {"f;52"}, "f"},
      {"f", false, {"f;01"}, "f"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(zan::resolve_write_path(row.name, row.versioning, among(row.on_disk)), row.path)
        << row.name << (row.versioning ? " versioning, " : ", ") << row.on_disk.size() << " names, expected "
        << row.path;
  }
}

TEST(VersionName, TheProbeEnds) {
  int probes = 0;
  EXPECT_EQ(zan::highest_vms_version("f", [&](const std::string&) { return ++probes > 0; }), 9999);
  EXPECT_EQ(probes, 9999);
  probes = 0;
  EXPECT_EQ(zan::highest_vms_version("f", [&](const std::string&) { return ++probes < 0; }), 0);
  EXPECT_EQ(probes, 51);
}

} // namespace
