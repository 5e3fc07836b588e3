#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

// A key by the name that stands between braces in what tests type, such as {KP7}.
struct NamedKey {
  std::string_view name;
  std::string_view bytes; // that an xterm sends
  int code;
};

std::span<const NamedKey> named_keys();

// What an xterm sends for a text in which keys stand by their names; {CTRL+A} to {CTRL+Z} and {DELETE} are
// names too.
std::string key_bytes(std::string_view text);

// The codes of those keys.
std::vector<int> key_codes(std::string_view text);
