#include "files/version_name.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

TEST(VersionName, OfAName) {
  expect_rows("files/version_name", [](const Fields& row) {
    if (row[0] == "base") return std::string(zan::strip_vms_version(row[1]));
    const Fields names = split_arguments(row[2]);
    const auto exists = [&](const std::string& path) { return std::ranges::count(names, path) > 0; };
    return zan::resolve_write_path(row[1], row[0] == "versions", exists);
  });
}

TEST(VersionName, TheProbeEnds) {
  int probes = 0;
  EXPECT_EQ(zan::highest_vms_version("f", [&](const std::string&) { return ++probes > 0; }), 9999);
  EXPECT_EQ(probes, 9999);
  probes = 0;
  EXPECT_EQ(zan::highest_vms_version("f", [&](const std::string&) { return ++probes < 0; }), 0);
  EXPECT_EQ(probes, 51);
}
