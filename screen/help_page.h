#pragma once

#include <array>
#include <string_view>

namespace zan {

// The help page of PF2 without its heading, one text a row.
inline constexpr auto kHelpPage = std::to_array<std::string_view>({
    "",
    "GOLD = PF1 or F1 (Esc O P). Not Num Lock - map Num Lock->PF1 in the terminal if desired.",
    "PF1/F1        GOLD prefix            GOLD+PF2   BOTTOM",
    "PF2/F2        HELP                   GOLD+PF3   FIND prompt",
    "PF3/F3        FNDNXT                 GOLD+PF4   Undelete line",
    "PF4/F4        Delete line",
    "",
    "Ctrl/A        Toggle insert/overstrike   Ctrl/E   End of line",
    "Ctrl/B        Beginning of line          Ctrl/F   FNDNXT",
    "Ctrl/D        Toggle ADVANCE/BACKUP      Ctrl/T   Toggle char case",
    "Ctrl/K        DEFINE KEY (interactive)  GOLD+Ctrl/K  DEL EOL",
    "Ctrl/C        Abort GOLD/select         Ctrl/Z   Return to line mode",
    "Ctrl/U        Delete to BOL (to PASTE)",
    "Ctrl/J        LINEFEED (del word left)  Ctrl/W/L/R Refresh screen",
    "PgUp/PgDn     PAGE back/forward         Ins PASTE  Find FNDNXT",
    "",
    "Keypad . SELECT   Keypad 6 CUT   GOLD+6 PASTE   Keypad 9 APPEND",
    "GOLD+9 REPLACE    GOLD+.  RESET  Keypad - DEL W  Keypad , DEL C",
    "GOLD+- UND W      GOLD+,  UND C  GOLD+2  DEL EOL GOLD+1  toggle case",
    "KP0 LINE          GOLD+0  OPEN LINE     GOLD+8  FILL paragraph",
    "GOLD+3 SPECINS    GOLD+4  BOTTOM        GOLD+5  TOP",
    "GOLD+7 Command    GOLD+Enter SUBS (search->PASTE)",
    "GOLD+digits N     repeat next GOLD cmd N times",
    "GOLD+Up TOP       GOLD+Dn BOTTOM GOLD+N  toggle line numbers",
    "GOLD+Q  QUIT      GOLD+Left/Right shift line",
    "",
    "Keypad 0 LINE  1 WORD  2 EOL  3 CHAR  4 ADVANCE  5 BACKUP",
    "Keypad 7 PAGE  8 SECTION (16 lines)",
    "",
    "Press any key to continue",
});

} // namespace zan
