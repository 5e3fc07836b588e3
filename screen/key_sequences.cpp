#include "screen/key_sequences.h"

#include <array>
#include <cstdlib>
#include <string>

#include "screen/curses.h"
#include "screen/keys.h"

namespace zan {

namespace {

struct Sequence {
  const char* bytes;
  int key;
};

// The keypad in application mode.
constexpr auto kKeypad = std::to_array<Sequence>({
    {"\033Op", kKp0},
    {"\033Oq", kKp1},
    {"\033Or", kKp2},
    {"\033Os", kKp3},
    {"\033Ot", kKp4},
    {"\033Ou", kKp5},
    {"\033Ov", kKp6},
    {"\033Ow", kKp7},
    {"\033Ox", kKp8},
    {"\033Oy", kKp9},
    {"\033Om", kKpMinus},
    {"\033Ol", kKpComma},
    {"\033On", kKpPeriod},
    {"\033OM", kKpEnter},
});

// The upper row of a PC's keypad, for SET KEYPAD PC; "-" loses its meaning of KP-.
constexpr auto kPcKeypad = std::to_array<Sequence>({
    {"\033Oo", kPf2},
    {"\033Oj", kPf3},
    {"\033Om", kPf4},
    {"\033Ok", kKpMinus},
});

// PF1 to PF4 as the usual keyboards send them, whatever the terminal's description says.
constexpr auto kFunctionKeys = std::to_array<Sequence>({
    {"\033OP", kPf1},
    {"\033OQ", kPf2},
    {"\033OR", kPf3},
    {"\033OS", kPf4},
    {"\033[11~", kPf1},
    {"\033[12~", kPf2},
    {"\033[13~", kPf3},
    {"\033[14~", kPf4},
    {"\033[[A", kPf1},
    {"\033[[B", kPf2},
    {"\033[[C", kPf3},
    {"\033[[D", kPf4},
});

// Only where the terminal's description gives the sequence no meaning, so that no key types junk into the
// text.
constexpr auto kSpareKeys = std::to_array<Sequence>({
    {"\033[A", kUp},         {"\033[B", kDown},       {"\033[C", kRight},   {"\033[D", kLeft},
    {"\033OA", kUp},         {"\033OB", kDown},       {"\033OC", kRight},   {"\033OD", kLeft},
    {"\033[H", kHome},       {"\033[F", kEnd},        {"\033OH", kHome},    {"\033OF", kEnd},
    {"\033[1~", kHome},      {"\033[4~", kEnd},       {"\033[7~", kHome},   {"\033[8~", kEnd},
    {"\033[2~", kInsert},    {"\033[3~", kRemove},    {"\033[5~", kPageUp}, {"\033[6~", kPageDown},
    {"\033OX", kIgnored},    {"\033[I", kIgnored},    {"\033[O", kIgnored}, {"\033[Z", kIgnored},
    {"\033[200~", kIgnored}, {"\033[201~", kIgnored},
});

void bind(const char* bytes, int key) { define_key(bytes, key); }

void bind_spare(const char* bytes, int key) {
  if (key_defined(bytes) == 0) bind(bytes, key);
}

// Keys that no function belongs to: function keys, the centre of the keypad, and keys with Shift, Alt or
// Ctrl, as "ESC [ 1 ; 5 A" and "ESC [ 3 ; 2 ~" or, in another tradition, "ESC O a" and "ESC [ 3 ^".
void ignore_other_keys() {
  const auto ignore = [](const std::string& bytes) { bind_spare(bytes.c_str(), kIgnored); };
  for (int number = 1; number <= 34; ++number) {
    const std::string start = "\033[" + std::to_string(number);
    for (const char* const last : {"~", "^", "$", "@"}) ignore(start + last);
    for (int modifier = 2; modifier <= 16; ++modifier) ignore(start + ';' + std::to_string(modifier) + '~');
  }
  for (int modifier = 2; modifier <= 16; ++modifier)
    for (const char last : std::string("ABCDEFHPQRS")) ignore("\033[1;" + std::to_string(modifier) + last);
  for (const char last : std::string("EI abcd")) ignore(std::string("\033O") + last);
  for (int modifier = 2; modifier <= 16; ++modifier)
    for (char last = 'A'; last <= 'y'; ++last)
      if (last <= 'Z' || last >= 'j') ignore("\033O" + std::to_string(modifier) + last);
  for (const char last : std::string("EGLabcd")) ignore(std::string("\033[") + last);
  ignore("\033[[E");
}

// Ctrl/Z is the suspend key of some descriptions, Return the Enter key of others. Arrows and Backspace that
// are control characters stay: such a terminal has no other ones.
void free_control_characters() {
  for (char c = 1; c < ' '; ++c) {
    const char bytes[] = {c, '\0'};
    const int key = key_defined(bytes);
    if (key > 0 && (key < KEY_DOWN || key > KEY_BACKSPACE)) bind(bytes, 0);
  }
}

} // namespace

void repair_key_sequences() {
  // The library numbers the extended keys of a description upwards from 511, over the keypad's codes.
  for (int key = kKp0; key <= kKpEnter; ++key) {
    while (char* bytes = keybound(key, 0)) {
      const bool moved = define_key(bytes, kIgnored) == OK;
      std::free(bytes);
      if (!moved) break;
    }
  }
  free_control_characters();
  for (const auto& [bytes, key] : kFunctionKeys) bind(bytes, key);
  for (const auto& [bytes, key] : kSpareKeys) bind_spare(bytes, key);
  ignore_other_keys();
}

void register_key_sequences(bool pc_keypad) {
  for (const auto& [bytes, key] : kPcKeypad)
    if (const int old = key_defined(bytes); old == 0 || old == key) bind(bytes, kIgnored);
  for (const auto& [bytes, key] : kKeypad) bind(bytes, key);
  if (!pc_keypad) return;
  for (const auto& [bytes, key] : kPcKeypad) bind(bytes, key);
}

} // namespace zan
