#include "command/spellings.h"

#include <algorithm>
#include <array>

namespace zan {

namespace {

// Sorted, for the lookup.
constexpr auto kAliases = std::to_array<ExactForm>({
    {"ADV", "ADVANCE"},
    {"BACK", "BACKUP"},
    {"C", "CHANGE"},
    {"D", "DELETE"},
    {"DC", "DEL-C"},
    {"DELETE CHARACTER", "DEL-C"},
    {"DELETE EOL", "DEL-EOL"},
    {"DELETE LINE", "DEL-L"},
    {"DELETE TO END OF LINE", "DEL-EOL"},
    {"DELETE WORD", "DEL-W"},
    {"DL", "DEL-L"},
    {"DW", "DEL-W"},
    {"EX", "EXIT"},
    {"FIND NEXT", "FNDNXT"},
    {"H", "HELP"},
    {"I", "INSERT"},
    {"PREV", "PREVIOUS"},
    {"Q", "QUIT"},
    {"RESEQ", "RESEQUENCE"},
    {"SEL", "SELECT"},
    {"SET CASE LOWER", "SET-CASE", "LOWER"},
    {"SET CASE NONE", "SET-CASE", "NONE"},
    {"SET CASE UPPER", "SET-CASE", "UPPER"},
    {"SET KEYPAD NOKEYPAD", "SET-KEYPAD", "NOKEYPAD"},
    {"SET KEYPAD PC", "SET-KEYPAD", "PC"},
    {"SET KEYPAD WPS", "SET-KEYPAD", "WPS"},
    {"SET KEYPAD ZAN", "SET-KEYPAD", "ZAN"},
    {"SET NOKEYPAD", "SET-KEYPAD", "NOKEYPAD"},
    {"SET NONUMBER", "SET-NONUMBERS"},
    {"SET NOOVERSTRIKE", "SET-INSERT"},
    {"SET NOTAB", "SET-TAB", "0"},
    {"SET NOVERSIONING", "SET-VERSIONING", "OFF"},
    {"SET NUMBER", "SET-NUMBERS"},
    {"SET OVERTYPE", "SET-OVERSTRIKE"},
    {"SET PARAGRAPH NOWPS", "SET-PARAGRAPH", "NOWPS"},
    {"SET PARAGRAPH WPS", "SET-PARAGRAPH", "WPS"},
    {"SET TAB", "SET-TAB", "8"},
    {"SET VERSIONING", "SET-VERSIONING", "ON"},
    {"SET WORD DELIMITER", "SET-WORD-DELIM", "ON"},
    {"SET WORD DELIMITERS", "SET-WORD-DELIM", "ON"},
    {"SET WORD NODELIMITER", "SET-WORD-DELIM", "OFF"},
    {"SET WORD NODELIMITERS", "SET-WORD-DELIM", "OFF"},
    {"SHOW BUFFERS", "SHOW-BUFFER"},
    {"SHOW FILE", "SHOW-FILES"},
    {"SHOW KEYS", "SHOW-KEY"},
    {"SHOW MACROS", "SHOW-MACRO"},
    {"SHOW NUMBER", "SHOW-NUMBERS"},
    {"SHOW WORD", "SHOW-ENTITY"},
    {"STORE TEXT", "RETAIN"},
    {"SUBS", "SUBSTITUTE"},
    {"SUBSTITUTE NEXT", "SUBSTITUTE"},
    {"T", "TYPE"},
    {"U", "UNDO"},
    {"UNDELETE CHARACTER", "UND-C"},
    {"UNDELETE LINE", "UND-L"},
    {"UNDELETE WORD", "UND-W"},
    {"VERSION", "SHOW-VERSION"},
});

// The order is meaning: the first prefix that fits decides.
constexpr auto kPrefixes = std::to_array<PrefixForm>({
    {"T ", "TYPE"},
    {"D ", "DELETE"},
    {"F ", "FIND"},
    {"I ", "INSERT"},
    {"H ", "HELP"},
    {"C ", "CHANGE"},
    {"RESEQ ", "RESEQUENCE"},
    {"XLATE", "XLATE"},
    {"STORE TEXT ", "RETAIN"},
    {"SUBSTITUTE", "SUBSTITUTE"},
    {"SUBS", "SUBSTITUTE"},
    {"TAB ADJUST", "TAB-ADJUST"},
    {"SET ENTITY WORD ", "SET-ENTITY"},
    {"SET WORD ", "SET-ENTITY"},
});

static_assert(std::ranges::is_sorted(kAliases, {}, &ExactForm::line));
static_assert(std::ranges::all_of(kAliases, [](auto row) { return row.line.size() <= kLongestForm; }));
static_assert(std::ranges::all_of(kPrefixes, [](auto row) { return row.prefix.size() <= kLongestForm; }));

} // namespace

std::span<const ExactForm> exact_forms() { return kAliases; }
std::span<const PrefixForm> prefix_forms() { return kPrefixes; }

} // namespace zan
