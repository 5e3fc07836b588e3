#include "tests/hostile/sandbox.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

std::size_t long_or_short(std::size_t full, std::size_t brief) {
  return zan::test::long_form() ? full : zan::test::has_form("few") ? (brief + 3) / 4 : brief;
}

bool answered(const RunResult& result) {
  const auto said = [&](const char* text) { return result.errors.find(text) != std::string::npos; };
  const bool ended = result.status == 0 || result.status == 2; // 2: EXIT could not write
  return ended && !said("fatal:") && !said("runtime error") && !said("Sanitizer");
}

void expect_answer(Promise& promise, const RunResult& result, const std::string& what) {
  promise.expect(answered(result),
                 what + "\nstatus " + std::to_string(result.status) + "\n" + result.errors.substr(0, 2000));
}

Sandbox::Sandbox() { fs::create_directory(home_.path() + "/work"); }

void Sandbox::write(const std::string& name, std::string_view bytes) const {
  zan::test::write_file(path(name), bytes);
}

void Sandbox::clear() const {
  for (const auto& entry : fs::directory_iterator(path(""))) fs::remove_all(entry);
}

RunResult Sandbox::run(const std::vector<std::string>& arguments, std::string_view input,
                       const std::string& preparation) const {
  std::vector<std::string> words{"-c", preparation + "; exec \"$0\" \"$@\"", ZAN_PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const std::string work = home_.path() + "/work";
  // Allocations that nothing needs fail at once, rather than to take the machine with them.
  return run_program(
      "/bin/sh", words,
      {{"TERM", "unknown"},
       {"HOME", work},
       {"PATH", work + ":/usr/bin:/bin"},
       {"ASAN_OPTIONS", "detect_leaks=0:allocator_may_return_null=1:max_allocation_size_mb=1000"}},
      home_.path(), input);
}

std::string limited_memory() {
  return std::string_view(ZAN_SANITIZERS).empty() ? "ulimit -v 600000 2>/dev/null" : ":";
}

std::string replaced(std::string text, std::string_view mark, std::string_view by) {
  for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += by.size())
    text.replace(at, mark.size(), by);
  return text;
}
