#pragma once

namespace zan {

// Teaches the screen library the byte sequences of the keyboard, after its keypad has been turned on.
// repair_key_sequences is needed once, register_key_sequences at every visit: `pc_keypad` may have changed.
void repair_key_sequences();
void register_key_sequences(bool pc_keypad);

} // namespace zan
