// A file loaded and saved again, in both record formats. The input: a line with the record length as letters,
// the bytes of the file.
#include <fstream>

#include "files/records.h"
#include "files/safe_save.h"
#include "fuzz/input.h"
#include "tests/files/scratch_directory.h"
#include "text/load_file.h"

namespace {

using zan::fuzz::check;

std::vector<std::string> lines_of(std::string bytes) {
  if (bytes.ends_with('\n')) bytes.pop_back();
  std::vector<std::string> lines = zan::fuzz::split_lines(bytes);
  for (std::string& line : lines)
    if (line.ends_with('\r')) line.pop_back();
  return lines;
}

std::string file_of(const std::vector<std::string>& lines, std::size_t record_length) {
  std::string bytes;
  for (std::string line : lines) {
    if (record_length == 0) {
      bytes += line + '\n';
      continue;
    }
    do {
      std::string record = line.substr(0, record_length);
      line.erase(0, record.size());
      record.resize(record_length, ' ');
      bytes += record + '\n';
    } while (!line.empty());
  }
  return bytes == "\n" ? "" : bytes;
}

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
  const std::vector<std::string> lines = lines_of(bytes);
  check(loaded->empty_file == bytes.empty());
  check(loaded->final_newline == (bytes.empty() || bytes.back() == '\n'));
  check(loaded->lines.line_count() == lines.size());
  zan::LineWalker walker(loaded->lines, 0);
  std::string_view line;
  for (const std::string& expected : lines) check(walker.next(line) && line == expected);

  const zan::RowStretch whole{0, loaded->lines.line_count()};
  for (const std::size_t length : {std::size_t{0}, record_length}) {
    const auto source = zan::record_source(loaded->lines, whole, length);
    check(zan::save_file(scratch / "in", source, zan::SaveMode::replace) == zan::SaveResult::saved);
    check(zan::test::read_file(scratch / "in") == file_of(lines, length));
  }
  check(scratch.names() == std::set<std::string>{"in"});
  return 0;
}
