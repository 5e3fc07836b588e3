#pragma once

#include <string_view>

#include "screen/key_decoder.h"

namespace zan {

// Teach ncurses the escape sequences of the keyboard, once its keypad mode is on. repair_key_sequences is
// called once, register_key_sequences at every visit, because `pc_keypad` may have changed.
void repair_key_sequences();
void register_key_sequences(bool pc_keypad);

// Says whether the sequence that begins a marked paste is kPasted or has no function, as it has at first.
void bind_paste(bool exact);
inline constexpr std::string_view kPasteEnd = "\033[201~";

// What ncurses has been taught, or kIgnored for a key without a function.
SequenceMeaning key_meaning(std::string_view sequence);

} // namespace zan
