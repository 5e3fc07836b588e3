#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace zan {

// Owns a file descriptor. Negative: none.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int descriptor) : descriptor_(descriptor) {}
  UniqueFd(UniqueFd&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
      close();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { close(); }

  int get() const { return descriptor_; }
  int release() { return std::exchange(descriptor_, -1); } // the caller owns it
  explicit operator bool() const { return descriptor_ >= 0; }

  // False when the system reports an error: some file systems report only here that a write had no room. Not
  // repeated after an interrupt, because the descriptor is gone even then.
  bool close() {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor < 0 || ::close(descriptor) == 0 || errno == EINTR;
  }

 private:
  int descriptor_ = -1;
};

// Repeats a system call for as long as a signal interrupts it.
template <typename Call> auto retry(Call&& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

} // namespace zan
