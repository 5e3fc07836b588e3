#include "screen/key_sequences.h"

#include <array>
#include <cstdlib>
#include <string_view>

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
// Ctrl, as "ESC [ 1 ; 5 A" and "ESC [ 3 ; 2 ~" or, in another tradition, "ESC O a" and "ESC [ 3 ^". There are
// about a thousand, too many to teach the library at every start.
struct OtherKeys {
  std::string_view start;
  std::string_view last; // one of these bytes ends the sequence
};
constexpr char kNumber = 'N';   // in `start`: a number from 1 to 34
constexpr char kModifier = 'M'; // a number from 2 to 16
constexpr auto kOtherKeys = std::to_array<OtherKeys>({
    {"\033[N", "~^$@"},
    {"\033[N;M", "~"},
    {"\033[1;M", "ABCDEFHPQRS"},
    {"\033OM", "ABCDEFGHIJKLMNOPQRSTUVWXYZjklmnopqrstuvwxy"},
    {"\033O", "EI abcd"},
    {"\033[", "EGLabcd"},
    {"\033[[", "E"},
});

// As KeyDecoder::Meaning.
int meaning_among(const OtherKeys& keys, std::string_view sequence) {
  for (const char part : keys.start) {
    if (sequence.empty()) return -1;
    if (part != kNumber && part != kModifier) {
      if (sequence.front() != part) return 0;
      sequence.remove_prefix(1);
      continue;
    }
    const int lowest = part == kNumber ? 1 : 2;
    const int highest = part == kNumber ? 34 : 16;
    int number = 0;
    while (!sequence.empty() && sequence.front() >= '0' && sequence.front() <= '9') {
      number = number * 10 + (sequence.front() - '0');
      if (number == 0 || number > highest) return 0;
      sequence.remove_prefix(1);
    }
    if (number < lowest && !(sequence.empty() && number > 0)) return 0; // "1" may become "16"
  }
  if (sequence.empty()) return -1;
  return sequence.size() == 1 && keys.last.find(sequence.front()) != std::string_view::npos ? kIgnored : 0;
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
}

void register_key_sequences(bool pc_keypad) {
  for (const auto& [bytes, key] : kPcKeypad)
    if (const int old = key_defined(bytes); old == 0 || old == key) bind(bytes, kIgnored);
  for (const auto& [bytes, key] : kKeypad) bind(bytes, key);
  if (!pc_keypad) return;
  for (const auto& [bytes, key] : kPcKeypad) bind(bytes, key);
}

int key_meaning(const char* sequence) {
  if (const int meaning = key_defined(sequence); meaning != 0) return meaning;
  for (const OtherKeys& keys : kOtherKeys)
    if (const int meaning = meaning_among(keys, sequence); meaning != 0) return meaning;
  return 0;
}

} // namespace zan
