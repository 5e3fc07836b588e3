#pragma once

#include <string>
#include <string_view>

// Codes of keys: a byte, a code of ncurses, or one of the fourteen codes defined here for the keypad.
namespace zan {

inline constexpr int kCtrlC = 3;
inline constexpr int kBackspaceByte = 8;
inline constexpr int kTab = 9;
inline constexpr int kLinefeed = 10;
inline constexpr int kReturn = 13;
inline constexpr int kCtrlU = 21;
inline constexpr int kCtrlZ = 26;
inline constexpr int kEscapeKey = 27;
inline constexpr int kDelete = 127;
inline constexpr int kDown = 258;
inline constexpr int kUp = 259;
inline constexpr int kLeft = 260;
inline constexpr int kRight = 261;
inline constexpr int kHome = 262;
inline constexpr int kBackspace = 263;
inline constexpr int kPf1 = 265;
inline constexpr int kPf2 = 266;
inline constexpr int kPf3 = 267;
inline constexpr int kPf4 = 268;
inline constexpr int kRemove = 330;
inline constexpr int kInsert = 331;
inline constexpr int kPageDown = 338;
inline constexpr int kPageUp = 339;
inline constexpr int kEnter = 343;
inline constexpr int kA1 = 348; // to kC3: the keypad's corners and centre in some terminal descriptions
inline constexpr int kA3 = 349;
inline constexpr int kB2 = 350;
inline constexpr int kC1 = 351;
inline constexpr int kC3 = 352;
inline constexpr int kDo = 357;
inline constexpr int kEnd = 360;
inline constexpr int kFind = 362;
inline constexpr int kSelect = 385;
inline constexpr int kKp0 = 512; // to kKpEnter: the keypad in application mode
inline constexpr int kKp1 = 513;
inline constexpr int kKp2 = 514;
inline constexpr int kKp3 = 515;
inline constexpr int kKp4 = 516;
inline constexpr int kKp5 = 517;
inline constexpr int kKp6 = 518;
inline constexpr int kKp7 = 519;
inline constexpr int kKp8 = 520;
inline constexpr int kKp9 = 521;
inline constexpr int kKpMinus = 522;
inline constexpr int kKpComma = 523;
inline constexpr int kKpPeriod = 524;
inline constexpr int kKpEnter = 525;
// Above every code of ncurses.
inline constexpr int kIgnored = 4000; // a recognised sequence without a function
inline constexpr int kPasted = 4001;  // a whole paste, whose text take_pasted() returns

constexpr bool is_printable(int key) { return key >= 32 && key <= 126; }

// The name by which DEFINE KEY refers to the key; "" for a key that cannot be defined.
std::string key_identifier(int key, bool gold);

// "name  (code 265 / 0x109)", at most 63 bytes.
std::string key_description(std::string_view name, int key);

} // namespace zan
