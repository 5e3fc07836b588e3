// The line store against a plain list of bytes, through edits and copies of several texts; the input's bytes
// are the choices.

#include "fuzz/input.h"
#include "tests/text/store_play.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zan::fuzz::Input input(data, size);
  zan::test::Play play([&]() -> std::uint64_t { return input.byte() + std::uint64_t{256} * input.byte(); });
  while (!input.empty()) play.step();
  play.check_all();
  return 0;
}
