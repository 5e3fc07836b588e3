#include "screen/keys.h"

#include <cstdio>

#include "text/bytes.h"

namespace zan {

namespace {

std::string plain_identifier(int key) {
  if (key >= kPf1 && key <= kPf4) return "PF" + std::to_string(key - kPf1 + 1);
  if (key == kBackspace || key == kDelete || key == kBackspaceByte) return "DELETE";
  if (key >= 1 && key <= 26) return std::string("CTRL+") + static_cast<char>(key + 64);
  if (is_printable(key)) return std::string(1, to_upper(static_cast<char>(key)));
  return "";
}

} // namespace

std::string key_identifier(int key, bool gold) {
  const std::string base = plain_identifier(key);
  return gold && !base.empty() ? "GOLD+" + base : base;
}

std::string key_description(std::string_view name, int key) {
  char text[64];
  std::snprintf(text, sizeof text, "%s  (code %d / 0x%X)", std::string(name).c_str(), key,
                static_cast<unsigned>(key));
  return text;
}

} // namespace zan
