#include "command/help_text.h"

#include <algorithm>
#include <array>

#include "text/bytes.h"

namespace zan {

namespace {

constexpr std::string_view kSetText =
    "HELP SET — settings:\n"
    "  SET NUMBERS / NONUMBERS / SEARCH EXACT|GENERAL|BEGIN|END|WILD|WORD|NOWORD\n"
    "  SET MODE CHANGE|LINE / SET KEYPAD ZAN|NOKEYPAD|WPS\n"
    "  SET CURSOR top bottom / SET TAB n / SET CASE NONE|LOWER|UPPER\n"
    "  SET LINES n / SET TRUNCATE / SET TERMINAL type / SET TEXT FORMFEED\n"
    "  SET PARAGRAPH WPS|NOWPS / SET RMS FIXED n|VARIABLE / SET VERSIONING ON|OFF\n"
    "  SET HELP file / SET OVERSTRIKE / INSERT / QUIET / VERIFY / WRAP / ...\n";

constexpr std::string_view kShowText = "HELP SHOW — status:\n"
                                       "  SHOW VERSION / FILES / MODE / BUFFER / NUMBERS / SEARCH / KEYPAD\n"
                                       "  SHOW CURSOR / TAB / CASE / KEY / MACRO / ENTITY / TERMINAL / RMS\n"
                                       "  SHOW LINES / TRUNCATE / PARAGRAPH / VERSIONING / HELP\n";

constexpr std::string_view kChangeText =
    "HELP CHANGE — screen editing:\n"
    "  CHANGE / C (or SET MODE CHANGE) enters screen/keypad mode.\n"
    "  Ctrl/Z returns to line mode. GOLD=PF1/F1. See HELP KEYPAD.\n"
    "  With SET KEYPAD NOKEYPAD, CHANGE enters nokeypad command line.\n"
    "  SET KEYPAD WPS keeps ZAN GOLD bindings; SHOW KEYPAD reports WPS.\n"
    "  Inline: CHANGE ;5W  (run nokeypad cmds without interactive mode).\n";

constexpr std::string_view kKeypadText =
    "HELP KEYPAD — ZAN keypad CHANGE mode:\n"
    "  SET KEYPAD ZAN|WPS restores keypad CHANGE mode (WPS uses ZAN map).\n"
    "  KP0 LINE  KP1 WORD  KP3 CHAR  KP4 ADV  KP5 BACK  KP6 CUT\n"
    "  KP7 PAGE  KP. SELECT  PF3 FNDNXT  GOLD+PF3 FIND\n"
    "  LK201: PgUp/PgDn=PAGE, Insert=PASTE, Find=FNDNXT, Select=SELECT\n";

constexpr std::string_view kNokeypadText =
    "HELP NOKEYPAD — command language (no spaces):\n"
    "  ADVANCE/ADV/A  BACKUP/BACK/B  CHAR/C  WORD/W  LINE/L  EOL  BOL/BL\n"
    "  PAGE/V  TOP  BOTTOM  SEL/SELECT  CUT  PASTE  APPEND\n"
    "  DCHAR/DC  DWORD/DW  DLINE/DL  CHGC/CHNGCASE  CLSS/RESET\n"
    "  FIND/F\"text\" or F/text/   INSERT/Itext<ESC>\n"
    "  EX/EXIT/EXT  Ctrl/Z   (counts: 5W 3DW 2CHGC)\n"
    "  SET KEYPAD NOKEYPAD then CHANGE, or CHANGE ;cmds\n";

constexpr std::string_view kXlateText = "HELP XLATE — character translation:\n"
                                        "  XLATE           show the current translation map\n"
                                        "  XLATE a b       map character a to b on the current line\n"
                                        "  XLATE a b range apply over a line range\n";

constexpr std::string_view kRetainText =
    "HELP RETAIN / STORE TEXT — copy into a named buffer:\n"
    "  RETAIN =name          copy select range or current line to =name\n"
    "  STORE TEXT =name      alias of RETAIN\n";

constexpr std::string_view kRangeText = "HELP RANGE — sticky line range:\n"
                                        "  RANGE n THRU m   set sticky range used by bare TYPE/DELETE/WRITE\n"
                                        "  RANGE            show the sticky range\n";

constexpr std::string_view kFilesText = "HELP FILES — list argv files (also SHOW FILES):\n"
                                        "  FILES / SHOW FILES   input, output, and multi-file list\n";

constexpr std::string_view kJournalText = "HELP JOURNAL — host text journal (not binary OVMS):\n"
                                          "  -journal=path / /JOURNAL=path   journal file location\n"
                                          "  -recover / /RECOVER             replay journal\n"
                                          "  Clean EXIT deletes the journal file when present.\n"
                                          "  CHANGE enter/leave are recorded; keystrokes are not.\n";

constexpr std::string_view kSummaryText =
    "  =========================\n"
    "  EDIT line-mode commands:\n"
    "  CHANGE / C            enter screen mode (HELP CHANGE / HELP NOKEYPAD)\n"
    "  VERSION              show editor version (also SHOW VERSION)\n"
    "  TYPE [range]          e.g. TYPE 10 THRU 20, TYPE 1:5 /BRIEF, TYPE .+1\n"
    "  DELETE [range]        e.g. DELETE 3, DELETE 10 THRU END\n"
    "  FIND text             search (FIND =name switches buffer); /BRIEF\n"
    "  FNDNXT / FIND NEXT    repeat search in current direction\n"
    "  INSERT [text]         single-arg insert; bare INSERT reads until ^Z or .\n"
    "  TAB                   insert spaces to next tab stop\n"
    "  SUBSTITUTE [repl]     replace next match; repl defaults to PASTE\n"
    "  SUBSTITUTE/old/new/N  set search/replace; N = max replacements\n"
    "  XLATE / RETAIN|=buf / STORE TEXT =buf / RANGE / FILES\n"
    "  BELL / DATE / TAB ADJUST [range] / RESEQUENCE [/SEQUENCE=n:i|/DUPLICATE]\n"
    "  ADVANCE / BACKUP      set search direction\n"
    "  SELECT / CUT / APPEND / REPLACE / PASTE / RESET\n"
    "  UNDO / U              undo last change\n"
    "  REDO                  redo last undone change\n"
    "  FILL                  reformat paragraph (SET PARAGRAPH WPS|NOWPS)\n"
    "  PRINT [range]         send lines to printer via lpr/lp\n"
    "  COPY range TO =name / MOVE range TO =name / CLEAR name\n"
    "  INCLUDE file / WRITE file [range] [BUFFER name]\n"
    "  SHOW BUFFER / SHOW FILES / SHOW MODE / SHOW VERSION\n"
    "  SET NUMBERS / SET NONUMBERS / SET SEARCH EXACT|GENERAL|WORD|...\n"
    "  SET MODE CHANGE / SET MODE LINE / SET CASE NONE|LOWER|UPPER\n"
    "  SET KEYPAD ZAN|NOKEYPAD|WPS / SET OVERSTRIKE / SET INSERT\n"
    "  SET RMS FIXED n|VARIABLE / SET VERSIONING ON|OFF\n"
    "  DEFINE KEY [GOLD] key AS \"cmd\" / DEFINE MACRO name AS \"cmd;cmd\"\n"
    "  EXIT / EX   save and exit\n"
    "  QUIT / Q    exit without saving\n"
    "Qualifiers: /QUERY /GLOBAL /NOTYPE /BRIEF[:n] /SAVE /STAY /SEQUENCE=n:i /DUPLICATE\n"
    "Topics: HELP SET|SHOW|CHANGE|KEYPAD|NOKEYPAD|VERSION|XLATE|RETAIN|RANGE|FILES|JOURNAL\n"
    "Screen GOLD key: PF1 or F1 (see HELP in CHANGE mode for keypad tips)\n"
    "INSERT multiline: end with a line that is Ctrl/Z, ^Z, or .\n";

constexpr auto kTopics = std::to_array<HelpTopic>({
    {"SET", kSetText},
    {"SHOW", kShowText},
    {"CHANGE", kChangeText},
    {"KEYPAD", kKeypadText},
    {"NOKEYPAD", kNokeypadText},
    {"XLATE", kXlateText},
    {"RETAIN", kRetainText},
    {"RANGE", kRangeText},
    {"FILES", kFilesText},
    {"JOURNAL", kJournalText},
});

} // namespace

std::span<const HelpTopic> help_topics() { return kTopics; }

std::string help_text(std::string_view topic, std::string_view version, std::string_view version_banner) {
  const std::string name = upper(trim(topic));
  if (name == "VERSION") return std::string(version_banner);
  const auto row = std::ranges::find(kTopics, name, &HelpTopic::name);
  if (row != kTopics.end()) return std::string(row->text);
  return "  " + std::string(version) + "\n" + std::string(kSummaryText);
}

} // namespace zan
