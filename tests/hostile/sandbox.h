#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/promise.h"
#include "tests/sessions/run_program.h"
#include "tests/sessions/text_forms.h"

// What the tests of this folder share.

std::size_t long_or_short(std::size_t full, std::size_t brief);

// The program came to its end: no signal, deadline or sanitizer ended it, and it did not give up.
bool answered(const RunResult& result);

using zan::test::Promise;
using zan::test::Promised;
void expect_answer(Promise& promise, const RunResult& result, const std::string& what);

// Runs of the program in a directory of their own.
class Sandbox {
 public:
  Sandbox();
  std::string path(const std::string& name) const { return home_.path() + "/work/" + name; }
  void write(const std::string& name, std::string_view bytes) const;
  std::string read(const std::string& name) const { return zan::test::read_file(path(name)); }
  void clear() const; // removes all files

  // The program started by a shell, after `preparation`, such as a limit.
  RunResult run(const std::vector<std::string>& arguments, std::string_view input,
                const std::string& preparation = ":") const;

 private:
  zan::test::ScratchDirectory home_;
};

// Little memory, where the sanitizers leave it to the shell to say so.
std::string limited_memory();

// The same numbers in every run and with every library.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::size_t below(std::size_t limit) { return engine_() % limit; }
  template <typename Table> const auto& one_of(const Table& table) { return table[below(std::size(table))]; }

 private:
  std::mt19937 engine_;
};

// `text` with every `mark` in it replaced.
std::string replaced(std::string text, std::string_view mark, std::string_view by);
