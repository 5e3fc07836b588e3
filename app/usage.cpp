#include "app/usage.h"

#include <unistd.h>

#include "app/console.h"
#include "app/version.h"

namespace zan {

std::string usage_text(const std::string& program) {
  const std::string version = zan_version_string();
  std::string text;
  text += "usage: " + program + " file [file2 ...] [options]\n\n";
  text += "OpenVMS ZAN-compatible editor (" + version + ").\n\n";
  text += "Arguments:\n"
          "  file [file2 ...]     File(s) to edit. NEXT / PREVIOUS walk the list.\n\n"
          "Options:\n"
          "  -command file        Replay line-mode commands from file after ZAN.INI\n"
          "  -command=file        Same as -command file\n"
          "  -output=file         Write MAIN to file on EXIT (/OUTPUT=file)\n"
          "  -readonly            Disallow mutating commands (/READ_ONLY)\n"
          "  -recover             Replay journal if present (/RECOVER)\n"
          "  -journal=path        Journal file path (/JOURNAL=path); host text journal\n"
          "  -d, -k               Debug: show last key's name + code on the status line\n\n"
          "Environment:\n"
          "  ZAN_INI              Startup command file (else $HOME/ZAN.INI, zan.ini)\n"
          "  ZAN_VMS_VERSIONS     If set/non-0, enable ;n sibling versioning on save\n"
          "  KR_TTY               Redirect stdin/stdout/stderr to this tty (POSIX)\n"
          "  TERM                 Must not be 'dumb' (ncurses screen mode)\n\n"
          "Line-mode tips:\n"
          "  HELP                 Command summary\n";
  text += "  VERSION              Show " + version + " and copyright\n";
  text += "  CHANGE / C           Enter screen / keypad mode (Ctrl/Z returns)\n\n"
          "Screen-mode GOLD key: PF1 or F1 (sends Esc O P). Num Lock is not GOLD;\n"
          "map Num Lock to that sequence in your terminal emulator if desired.\n";
  return text;
}

} // namespace zan

void print_usage(const char* program) {
  const bool named = program != nullptr && *program != '\0';
  zan::write_fully(STDERR_FILENO, zan::usage_text(named ? program : "zan"));
}
