#pragma once

namespace zan {

// Teaches the screen library the byte sequences of the keyboard, after its keypad has been turned on.
// repair_key_sequences is needed once, register_key_sequences at every visit: `pc_keypad` may have changed.
void repair_key_sequences();
void register_key_sequences(bool pc_keypad);

// As KeyDecoder::Meaning: what the library has been taught, or that no function belongs to the key.
int key_meaning(const char* sequence);

} // namespace zan
