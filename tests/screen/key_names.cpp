#include "tests/screen/key_names.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "screen/keys.h"

namespace {

constexpr NamedKey kKeys[] = {
    {"GOLD", "\033OP", zan::kPf1},       {"PF2", "\033OQ", zan::kPf2},
    {"PF3", "\033OR", zan::kPf3},        {"PF4", "\033OS", zan::kPf4},
    {"KP0", "\033Op", zan::kKp0},        {"KP1", "\033Oq", zan::kKp1},
    {"KP2", "\033Or", zan::kKp2},        {"KP3", "\033Os", zan::kKp3},
    {"KP4", "\033Ot", zan::kKp4},        {"KP5", "\033Ou", zan::kKp5},
    {"KP6", "\033Ov", zan::kKp6},        {"KP7", "\033Ow", zan::kKp7},
    {"KP8", "\033Ox", zan::kKp8},        {"KP9", "\033Oy", zan::kKp9},
    {"KP-", "\033Om", zan::kKpMinus},    {"KP,", "\033Ol", zan::kKpComma},
    {"KP.", "\033On", zan::kKpPeriod},   {"KPENTER", "\033OM", zan::kKpEnter},
    {"UP", "\033OA", zan::kUp},          {"DOWN", "\033OB", zan::kDown},
    {"RIGHT", "\033OC", zan::kRight},    {"LEFT", "\033OD", zan::kLeft},
    {"HOME", "\033OH", zan::kHome},      {"END", "\033OF", zan::kEnd},
    {"INSERT", "\033[2~", zan::kInsert}, {"REMOVE", "\033[3~", zan::kRemove},
    {"PAGEUP", "\033[5~", zan::kPageUp}, {"PAGEDOWN", "\033[6~", zan::kPageDown},
};

// A key in braces, or a byte: what it sends, and its code.
std::pair<std::string, int> sent_and_code(std::string_view key) {
  const auto byte = [](int code) { return std::pair(std::string(1, static_cast<char>(code)), code); };
  if (key.size() == 1) return byte(static_cast<unsigned char>(key[0]));
  const std::string_view name = key.substr(1, key.size() - 2);
  if (name.starts_with("CTRL+") && name.size() == 6) return byte(name[5] - '@');
  if (name == "DELETE") return byte(zan::kDelete); // of which some terminals make another key
  const auto known = std::ranges::find(kKeys, name, &NamedKey::name);
  if (known == std::end(kKeys)) throw std::runtime_error("no key " + std::string(name));
  return {std::string(known->bytes), known->code};
}

std::vector<std::pair<std::string, int>> keys_of(std::string_view text) {
  std::vector<std::pair<std::string, int>> keys;
  while (!text.empty()) {
    const std::size_t length = text[0] == '{' ? text.find('}') + 1 : 1;
    keys.push_back(sent_and_code(text.substr(0, length)));
    text.remove_prefix(length);
  }
  return keys;
}

} // namespace

std::span<const NamedKey> named_keys() { return kKeys; }

std::string key_bytes(std::string_view text) {
  std::string bytes;
  for (const auto& key : keys_of(text)) bytes += key.first;
  return bytes;
}

std::vector<int> key_codes(std::string_view text) {
  std::vector<int> codes;
  for (const auto& key : keys_of(text)) codes.push_back(key.second);
  return codes;
}
