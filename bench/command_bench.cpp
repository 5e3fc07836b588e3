#include <array>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "app/editor.h"

// Commands that rewrite many lines, as the user gives them, on a text of about 50 MB: bytes per second.
namespace {

constexpr std::size_t kLines = 1'000'000;

TextBuffer text_of(const char* last_part) {
  static constexpr std::array kParts{"the quick brown fox ", "jumps\tover a lazy dog, ",
                                     "and int main(void) "};
  std::string bytes;
  for (std::size_t i = 0; i < kLines; ++i) {
    bytes += std::to_string(100000 + i % 900000);
    bytes += i % 40 == 39 ? "" : kParts[i % 3];
    bytes += kParts[(i / 3) % 3];
    bytes += last_part;
  }
  TextBuffer buffer;
  buffer.set_text(bytes);
  return buffer;
}

const TextBuffer& lines() {
  static const TextBuffer buffer = text_of("\n");
  return buffer;
}

const TextBuffer& one_line() {
  static const TextBuffer buffer = text_of("");
  return buffer;
}

// A directory for what the commands write, and where no startup file is.
const std::string& scratch() {
  static const std::string path = [] {
    const auto directory = std::filesystem::temp_directory_path() / "zan-command-bench";
    std::filesystem::create_directories(directory);
    setenv("HOME", directory.c_str(), 1);
    return directory.string();
  }();
  return path;
}

void run(benchmark::State& state, const TextBuffer& text, const std::string& before,
         const std::string& command) {
  Editor editor({scratch() + "/input"}, {}, {}, false, false, {});
  editor.current = text;
  editor.execute_command(before, false);
  for (auto _ : state) {
    state.PauseTiming();
    editor.current = text;
    editor.cursor_row = 0;
    editor.cursor_col = 0;
    state.ResumeTiming();
    editor.execute_command(command, false);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.lines().byte_count()));
}

void add(const std::string& name, const std::string& command, const std::string& before = "",
         const TextBuffer& (*text)() = lines) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    run(state, text(), before, command);
  })->Unit(benchmark::kMillisecond);
}

const bool added = [] {
  const std::string written = "WRITE " + scratch() + "/written ";
  add("substitute_global", "SUBSTITUTE/quick/slow and steady/ /GLOBAL");
  add("substitute_general", "SUBSTITUTE/QUICK/slow/ /GLOBAL", "SET SEARCH GENERAL");
  add("substitute_wildcard", "SUBSTITUTE/q%ick*fox/cat/ /GLOBAL");
  add("substitute_counted", "SUBSTITUTE/o/0/2000000000");
  add("substitute_long_line", "SUBSTITUTE/quick/slow/ /GLOBAL", "", one_line);
  add("fill", "FILL WHOLE");
  add("resequence", "RESEQUENCE");
  add("xlate", "XLATE o 0 WHOLE");
  add("chgu", "CHGU WHOLE");
  add("tab_adjust", "TAB ADJUST WHOLE");
  add("copy", "COPY WHOLE TO =OTHER", "CLEAR =OTHER");
  add("delete_half", "DELETE 1 THRU 500000");
  add("include", "INCLUDE " + scratch() + "/written", written);
  add("write_range", written + "2 THRU 999999");
  add("write_fixed", written, "SET RMS FIXED 80");
  return true;
}();

} // namespace
