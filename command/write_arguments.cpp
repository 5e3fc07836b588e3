#include "command/write_arguments.h"

#include "text/bytes.h"

namespace zan {

WriteArguments parse_write_arguments(std::string_view arg) {
  WriteArguments wanted;
  wanted.file = strip_optional_quotes(take_word(arg));
  const std::string_view rest = trim(arg);
  const auto sides = cut_at(rest, "BUFFER ");
  if (!sides) {
    wanted.range = rest;
    return wanted;
  }
  std::string_view after = sides->after;
  wanted.buffer = take_word(after);
  wanted.range = trim(std::string(trim(sides->before)).append(" ").append(trim(after)));
  return wanted;
}

} // namespace zan
