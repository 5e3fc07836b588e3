#pragma once

#include <string>

void print_usage(const char* program); // on standard error; null or "" stands for "zan"

namespace zan {
std::string usage_text(const std::string& program);
}
