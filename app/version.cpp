#include "app/version.h"

#include <cstdio>

namespace {

constexpr int kMajor = 1;
constexpr int kMinor = 5;
constexpr int kBuild = 0;
constexpr const char* kReleaseDate = "2026-07-17";

} // namespace

std::string zan_version_string() {
  char text[32] = "";
  std::snprintf(text, sizeof text, "V%d.%02d-%d", kMajor, kMinor, kBuild);
  return text;
}

std::string zan_version_banner() { return zan_version_string() + "\nRelease date: " + kReleaseDate + "\n"; }
