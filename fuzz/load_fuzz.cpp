// A file loaded and saved again, in both record formats. The input: a line with the record length as letters,
// the bytes of the file.
#include <fstream>

#include "files/records.h"
#include "files/safe_save.h"
#include "fuzz/naive_file.h"
#include "tests/files/scratch_directory.h"
#include "text/load_file.h"

namespace {

using zan::fuzz::check;

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const zan::test::ScratchDirectory scratch;
  zan::fuzz::Input input(data, size);
  const std::size_t record_length = input.below(40);
  input.line();
  const std::string bytes(input.rest());
  zan::test::write_file(scratch / "in", bytes);

  const auto loaded = zan::load_file(scratch / "in");
  check(loaded.has_value());
  const std::vector<std::string> lines = zan::fuzz::lines_of_file(bytes);
  check(loaded->empty_file == bytes.empty());
  check(loaded->final_newline == (bytes.empty() || bytes.back() == '\n'));
  check(loaded->lines.line_count() == lines.size());
  zan::LineWalker walker(loaded->lines, 0);
  std::string_view line;
  for (const std::string& expected : lines) check(walker.next(line) && line == expected);

  const zan::RowStretch whole{0, loaded->lines.line_count()};
  for (const std::size_t length : {std::size_t{0}, record_length}) {
    const auto source = zan::record_source(loaded->lines, whole, length);
    check(static_cast<bool>(zan::save_file(scratch / "in", source, zan::SaveMode::replace)));
    check(zan::test::read_file(scratch / "in") == zan::fuzz::file_of(lines, length));
  }
  check(scratch.names() == std::set<std::string>{"in"});
  return 0;
}
