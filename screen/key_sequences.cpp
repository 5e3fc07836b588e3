#include "screen/key_sequences.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "screen/curses.h"
#include "screen/keys.h"
#include "text/bytes.h"

namespace zan {

namespace {

using Kind = SequenceMeaning::Kind;

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

// PF1 to PF4 as common terminals send them, whatever the terminal's description says.
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

// Used where the terminal's description has no meaning for the sequence, so that no key types junk.
constexpr auto kSpareKeys = std::to_array<Sequence>({
    {"\033[A", kUp},         {"\033[B", kDown},       {"\033[C", kRight},    {"\033[D", kLeft},
    {"\033OA", kUp},         {"\033OB", kDown},       {"\033OC", kRight},    {"\033OD", kLeft},
    {"\033[H", kHome},       {"\033[F", kEnd},        {"\033OH", kHome},     {"\033OF", kEnd},
    {"\033[1~", kHome},      {"\033[4~", kEnd},       {"\033[7~", kHome},    {"\033[8~", kEnd},
    {"\033[2~", kInsert},    {"\033[3~", kRemove},    {"\033[5~", kPageUp},  {"\033[6~", kPageDown},
    {"\033OX", kIgnored},    {"\033[I", kIgnored},    {"\033[O", kIgnored},  {"\033[Z", kIgnored},
    {"\033[200~", kIgnored}, {"\033[201~", kIgnored}, {"\033[[E", kIgnored},
});

constexpr const char* kPasteBegin = "\033[200~"; // one of them

void bind(const char* bytes, int key) { define_key(bytes, key); }

void bind_spare(const char* bytes, int key) {
  if (key_defined(bytes) == 0) bind(bytes, key);
}

// An escape sequence of a key, as far as it has come: ESC, "[" or "O", numbers with a ";" between them, and
// the byte that ends it.
struct EscapeSequence {
  char introducer = '\0'; // "[" (CSI) or "O" (SS3)
  std::string_view first; // digits
  std::optional<std::string_view> second;
  std::string_view end; // empty: it goes on
};

std::string_view cut_digits(std::string_view& text) {
  const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
  const std::string_view digits = text.substr(0, length);
  text.remove_prefix(length);
  return digits;
}

std::optional<EscapeSequence> parse_sequence(std::string_view bytes) {
  if (!bytes.starts_with("\033[") && !bytes.starts_with("\033O")) return std::nullopt;
  EscapeSequence sequence{bytes[1], {}, {}, {}};
  bytes.remove_prefix(2);
  sequence.first = cut_digits(bytes);
  if (bytes.starts_with(';')) {
    bytes.remove_prefix(1);
    sequence.second = cut_digits(bytes);
  }
  sequence.end = bytes;
  return sequence;
}

// `complete`: no digits follow, which could still make it large enough.
bool is_number(std::string_view digits, std::uint64_t lowest, std::uint64_t highest, bool complete) {
  const std::uint64_t number = digits.empty() ? 0 : parse_digits(digits).value_or(highest + 1);
  return number <= highest && !digits.starts_with('0') && (!complete || number >= lowest);
}

bool is_key_number(std::string_view digits, bool complete) { return is_number(digits, 1, 34, complete); }
bool is_modifier(std::string_view digits, bool complete) { return is_number(digits, 2, 16, complete); }

// The bytes that may end the sequence of a key without a function; none when its numbers are no key's. Such
// are function keys, the centre of the keypad, and keys with Shift, Alt or Ctrl: "ESC [ 1 ; 5 A" and
// "ESC [ 3 ; 2 ~" or, in another tradition, "ESC O a" and "ESC [ 3 ^". There are about a thousand, too many
// to teach ncurses at every start.
std::string_view ends_of_unused_keys(const EscapeSequence& sequence) {
  const auto& [introducer, first, second, end] = sequence;
  const bool complete = !end.empty();
  if (introducer == 'O') {
    if (second || !(first.empty() || is_modifier(first, complete))) return "";
    return first.empty() ? "EI abcd" : "ABCDEFGHIJKLMNOPQRSTUVWXYZjklmnopqrstuvwxy";
  }
  if (second) {
    if (!is_key_number(first, true) || !is_modifier(*second, complete)) return "";
    return first == "1" ? "~ABCDEFHPQRS" : "~";
  }
  if (first.empty()) return "EGLabcd";
  return is_key_number(first, complete) ? "~^$@" : "";
}

SequenceMeaning meaning_of_unused_key(std::string_view bytes) {
  const auto sequence = parse_sequence(bytes);
  const std::string_view ends = sequence ? ends_of_unused_keys(*sequence) : "";
  if (ends.empty()) return {};
  if (sequence->end.empty()) return {Kind::begins};
  if (sequence->end.size() > 1 || ends.find(sequence->end) == std::string_view::npos) return {};
  return {Kind::key, kIgnored};
}

// Some descriptions call Ctrl/Z the suspend key or Return the Enter key: both stay control characters here.
// Arrows and Backspace that are control characters keep their meaning: such a terminal sends nothing else.
void free_control_characters() {
  for (char c = 1; c < ' '; ++c) {
    const char bytes[] = {c, '\0'};
    const int key = key_defined(bytes);
    if (key > 0 && (key < KEY_DOWN || key > KEY_BACKSPACE)) bind(bytes, 0);
  }
}

} // namespace

void repair_key_sequences() {
  // ncurses numbers the extended keys of a description from 511 upwards; these would collide with the
  // keypad's codes.
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

void bind_paste(bool exact) {
  const int meaning = key_defined(kPasteBegin);
  if (meaning == kIgnored || meaning == kPasted) bind(kPasteBegin, exact ? kPasted : kIgnored);
}

SequenceMeaning key_meaning(std::string_view sequence) {
  if (sequence.find('\0') != std::string_view::npos) return {}; // ncurses would look up what is before it
  const int known = key_defined(std::string(sequence).c_str());
  if (known > 0) return {Kind::key, known};
  return known < 0 ? SequenceMeaning{Kind::begins} : meaning_of_unused_key(sequence);
}

} // namespace zan
