// A command line: its qualifiers against a model, and what holds for every parsed line. The input is the
// line.
#include <charconv>

#include "app/editor.h"
#include "command/macro_text.h"
#include "command/parser.h"
#include "fuzz/input.h"
#include "text/bytes.h"

namespace {

// As a decimal number is read from the start of a text: blanks, a sign, digits, whatever follows.
bool read_int(std::string_view text, int& into) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  if (text.starts_with("+-")) return false;
  if (text.starts_with('+')) text.remove_prefix(1);
  return std::from_chars(text.data(), text.data() + text.size(), into).ec == std::errc();
}

// The qualifiers, taken out of the line one byte after the other.
zan::Qualifiers take_qualifiers(std::string& line) {
  zan::Qualifiers taken;
  std::string kept;
  std::string_view rest = line;
  const auto take_run = [&](auto belongs) {
    const auto end = std::find_if_not(rest.begin(), rest.end(), belongs);
    const std::string_view run = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    rest.remove_prefix(run.size());
    return run;
  };
  const auto is_value = [](char c) { return c != '/' && !zan::is_space(c); };
  while (!rest.empty()) {
    const std::string_view here = rest;
    rest.remove_prefix(1);
    const std::string name = here[0] == '/' ? zan::upper(take_run(zan::is_alpha)) : "";
    if (name == "QUERY") taken.query = true;
    else if (name == "NOTYPE") taken.notype = true;
    else if (name == "SAVE") taken.save = true;
    else if (name == "GLOBAL" || name == "G") taken.global = true;
    else if (name == "STAY") taken.stay = true;
    else if (name == "DUPLICATE") taken.duplicate = true;
    else if (name == "BRIEF") {
      taken.brief = true;
      if (!rest.starts_with(':')) continue;
      rest.remove_prefix(1);
      if (int width = 0; read_int(take_run(zan::is_digit), width)) taken.brief_width = std::max(1, width);
    } else if (name == "SEQUENCE") {
      taken.sequence = true;
      if (!rest.starts_with('=')) continue;
      rest.remove_prefix(1);
      const std::string_view value = take_run(is_value);
      const std::size_t colon = value.find(':');
      if (read_int(value.substr(0, colon), taken.seq_start) && colon != std::string_view::npos)
        read_int(value.substr(colon + 1), taken.seq_step);
    } else {
      kept += here[0];
      rest = here.substr(1);
    }
  }
  line = zan::trim(kept);
  return taken;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zan::fuzz::Input input(data, size);
  const zan::LineContext context{50, input.byte()};
  std::string line(input.rest());
  std::string expected = line;
  const zan::Qualifiers qualifiers = take_qualifiers(expected);
  zan::fuzz::check(zan::extract_qualifiers(line) == qualifiers && line == expected);

  const zan::ParsedCommand command = zan::parse_command(line, context, Editor::key_form);
  zan::fuzz::check(command.text == zan::trim(line));
  zan::fuzz::check(command.key.empty() == command.text.empty());
  zan::fuzz::check(command.key == zan::upper(command.key));
  zan::fuzz::check(command.arg == zan::trim(command.arg));
  // Neither case nor blanks around a line tell commands apart.
  const zan::ParsedCommand upper =
      zan::parse_command(" " + zan::upper(line) + "\t", context, Editor::key_form);
  zan::fuzz::check(upper.key == command.key && upper.arg == zan::upper(command.arg));
  // The longest argument is the line's end, but for what is spelled out in the tables.
  if (command.key == "GOTO-LINE" && zan::all_digits(command.text))
    zan::fuzz::check(zan::parse_digits(command.arg) == zan::parse_digits(command.text));
  for (const std::string& part : zan::split_macro_commands(line)) zan::fuzz::check(part == zan::trim(part));
  return 0;
}
