#pragma once

#include <string>

namespace zan {

// What the words behind slashes on a command line ask for.
struct Qualifiers {
  bool query = false;
  bool notype = false;
  bool brief = false;
  int brief_width = 40; // bytes of a line shown by /BRIEF; at least 1
  bool save = false;
  bool global = false;
  bool stay = false;
  bool duplicate = false;
  bool sequence = false;
  int seq_start = 100;
  int seq_step = 100;
  bool operator==(const Qualifiers&) const = default;
};

// Takes every known qualifier and its value out of `line`, wherever it stands (inside quotes too), and trims
// what is left. Unknown words behind a slash stay. A value that is no number leaves its field as it was. One
// pass.
Qualifiers extract_qualifiers(std::string& line);

} // namespace zan
