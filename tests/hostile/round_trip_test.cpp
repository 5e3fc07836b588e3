// Files that are loaded and saved unchanged.
#include <gtest/gtest.h>

#include "files/output_file.h"
#include "files/records.h"
#include "fuzz/naive_file.h"
#include "tests/hostile/sandbox.h"
#include "text/text_buffer.h"

namespace {

std::string random_file(Random& random) {
  constexpr std::size_t kLargest = 1000000;
  // Half of the files are below 64 bytes; each further one in two is up to four times as long.
  std::size_t limit = 64;
  while (limit < kLargest && random.below(2) == 0) limit *= 4;
  std::string bytes(random.below(std::min(limit, kLargest) + 1), ' ');
  const std::size_t ends = random.below(4); // how many of the bytes end a line
  for (char& c : bytes)
    c = random.below(10) < ends ? (random.below(2) == 0 ? '\r' : '\n') : static_cast<char>(random.below(256));
  return bytes;
}

// What a save may change: one carriage return before a line feed or at the end goes, a final line feed comes,
// a single empty line becomes an empty file.
std::string saved_form(const std::string& bytes) {
  return zan::fuzz::file_of(zan::fuzz::lines_of_file(bytes), 0);
}

} // namespace

TEST(Hostile, RoundTripsOfRandomFiles) {
  Promise promise(Promised::round_trips);
  const Sandbox box;
  Random random(15);
  for (std::size_t i = 0, files = long_or_short(100000, 500); i < files; ++i) {
    const std::string bytes = random_file(random);
    box.write("a.txt", bytes);
    std::string path = box.path("a.txt");
    TextBuffer buffer;
    const bool loaded = buffer.load(path);
    const auto source = zan::record_source(buffer.lines(), {0, buffer.line_count()}, 0);
    bool held = loaded && zan::save_output(path, source) && box.read("a.txt") == saved_form(bytes);
    if (i % 50 == 0) { // and by the program itself
      box.write("a.txt", bytes);
      held = held && answered(box.run({"a.txt"}, "EXIT\n")) && box.read("a.txt") == saved_form(bytes);
    }
    promise.expect(held, "file " + std::to_string(i));
  }
}
