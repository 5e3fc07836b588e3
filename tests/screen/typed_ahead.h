#pragma once

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace zan::test {

// While one lives, the bytes are the standard input, and nobody sees the standard output.
class TypedAhead {
 public:
  explicit TypedAhead(std::string_view bytes) {
    std::fflush(stdout);
    const bool ready = pipe(ends_) == 0 && dup2(ends_[0], STDIN_FILENO) == STDIN_FILENO &&
                       dup2(nowhere_, STDOUT_FILENO) == STDOUT_FILENO &&
                       write(ends_[1], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    if (!ready) std::abort();
  }
  ~TypedAhead() {
    std::fflush(stdout);
    dup2(input_, STDIN_FILENO);
    dup2(output_, STDOUT_FILENO);
    for (const int file : {input_, output_, nowhere_, ends_[0], ends_[1]}) close(file);
  }
  TypedAhead(const TypedAhead&) = delete;
  TypedAhead& operator=(const TypedAhead&) = delete;

 private:
  int input_ = dup(STDIN_FILENO), output_ = dup(STDOUT_FILENO), nowhere_ = open("/dev/null", O_WRONLY);
  int ends_[2] = {};
};

} // namespace zan::test
