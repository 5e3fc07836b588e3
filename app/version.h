#pragma once

#include <string>

std::string zan_version_string(); // "V1.05-0"
std::string zan_version_banner(); // two lines: the version and the release date
