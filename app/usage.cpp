#include "app/usage.h"

#include <string_view>
#include <unistd.h>

#include "app/command_line.h"
#include "app/version.h"
#include "host/console.h"

namespace zan {

namespace {

// "  -output=file         Write ...": the dash forms, and the meaning in a column of its own.
std::string usage_line(const Option& option) {
  constexpr std::size_t kMeaningColumn = 23;
  if (option.meaning.empty()) return "";
  std::string text;
  for (const std::string_view spelling : option.spellings)
    if (spelling.starts_with('-')) text.append(text.empty() ? "  " : ", ").append(spelling);
  if (!option.value.empty() && !text.ends_with('=')) text += ' ';
  text += option.value;
  text.resize(kMeaningColumn, ' ');
  return text.append(option.meaning) += '\n';
}

} // namespace

std::string usage_text(const std::string& program) {
  const std::string version = zan_version_string();
  std::string text;
  text += "usage: " + program + " file [file2 ...] [options]\n\n";
  text += "OpenVMS ZAN-compatible editor (" + version + ").\n\n";
  text += "Arguments:\n"
          "  file [file2 ...]     File(s) to edit. NEXT / PREVIOUS walk the list.\n\n"
          "Options:\n";
  for (const Option& option : command_line_options()) text += usage_line(option);
  text += "\nEnvironment:\n"
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
