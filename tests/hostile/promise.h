#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/sessions/run_program.h"

// What the tests of this folder share: each runs many cases of one promise, and prints at its end how many
// there were and how many were broken.

// The long form, with ZAN_PROMISES=full in the environment, takes hours where the short one takes seconds.
std::size_t long_or_short(std::size_t full, std::size_t brief);

// The program came to its end: no signal, deadline or sanitizer ended it, and it did not give up.
bool answered(const RunResult& result);

class Promise {
 public:
  explicit Promise(int row) : row_(row) {}
  ~Promise(); // prints
  Promise(const Promise&) = delete;
  Promise& operator=(const Promise&) = delete;

  // One case. One that does not hold is a failure of the test, told as `what`.
  void expect(bool holds, const std::string& what);
  void expect_answer(const RunResult& result, const std::string& what);

 private:
  int row_;
  std::size_t runs_ = 0;
  std::size_t failed_ = 0;
};

// Runs of the program in a directory of their own.
class Sandbox {
 public:
  Sandbox();
  std::string path(const std::string& name) const { return home_.path() + "/work/" + name; }
  void write(const std::string& name, std::string_view bytes) const;
  std::string read(const std::string& name) const { return read_whole_file(path(name)); }
  void clear() const; // removes all files

  // The program started by a shell, after `preparation`, such as a limit.
  RunResult run(const std::vector<std::string>& arguments, std::string_view input,
                const std::string& preparation = ":") const;

 private:
  TemporaryDirectory home_;
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
