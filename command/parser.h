#pragma once

#include <string>
#include <string_view>

#include "command/line_range.h"
#include "command/qualifiers.h"
#include "command/spellings.h"

namespace zan {

// One command line. `key` names the command, whatever spelling was typed: "DEL-L", "SET-NUMBERS",
// "GOTO-LINE".
struct ParsedCommand {
  std::string key;  // upper case; empty for an empty line
  std::string arg;  // trimmed, in the case it was typed
  std::string text; // the whole line, trimmed: what messages show
  Qualifiers quals; // for the caller to fill in
  bool operator==(const ParsedCommand&) const = default;
};

// Parses a line without qualifiers. Never fails: a line of no known form gets its first word as key. A line
// number becomes GOTO-LINE with the number as argument, without leading zeros unless it is beyond 64 bits.
// `form_of` says which keys may be typed as their own words.
ParsedCommand parse_command(std::string_view line, const LineContext& context, KeyFormLookup form_of);

} // namespace zan
