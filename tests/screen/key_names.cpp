#include "tests/screen/key_names.h"

#include <algorithm>
#include <stdexcept>

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

std::string bytes_of(std::string_view name) {
  if (name.starts_with("CTRL+") && name.size() == 6) return {static_cast<char>(name[5] - '@')};
  if (name == "DELETE") return "\177"; // of which some terminals make another key
  const auto key = std::ranges::find(kKeys, name, &NamedKey::name);
  if (key == std::end(kKeys)) throw std::runtime_error("no key " + std::string(name));
  return std::string(key->bytes);
}

} // namespace

std::span<const NamedKey> named_keys() { return kKeys; }

std::string key_bytes(std::string_view text) {
  std::string bytes;
  for (auto open = text.find('{'); open != std::string_view::npos; open = text.find('{')) {
    const auto close = text.find('}', open);
    bytes.append(text.substr(0, open)).append(bytes_of(text.substr(open + 1, close - open - 1)));
    text.remove_prefix(close + 1);
  }
  return bytes.append(text);
}
