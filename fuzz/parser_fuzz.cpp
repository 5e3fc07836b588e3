// What holds for every command line, its qualifiers and the range that it may be. The input is the line.
#include "app/editor.h"
#include "command/macro_text.h"
#include "command/parser.h"
#include "fuzz/input.h"
#include "text/bytes.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zan::fuzz::Input input(data, size);
  const zan::LineContext context{50, input.byte()};
  std::string line(input.rest());
  zan::extract_qualifiers(line);
  zan::fuzz::check(line == zan::trim(line));
  const auto range = zan::parse_line_range(line, context);
  const auto numbers = zan::parse_number_range(line, context.line_count);
  const bool to_the_end = zan::upper(zan::strip_qualifiers_for_range(line)) == "REST";
  zan::fuzz::check(!range ||
                   (range->last < context.line_count && (to_the_end || range->first <= range->last)));
  zan::fuzz::check(!numbers || numbers == range);

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
