#include "host/stack.h"

#include <algorithm>
#include <sys/resource.h>

namespace zan {

namespace {

// The system keeps at least 128 MiB of address space free below a main stack, so the limit can be raised to
// this much while the program runs.
constexpr rlim_t kWantedStack = 120u * 1024 * 1024;
constexpr rlim_t kBytesPerLevel = 9 * 1024; // with room to spare, also under the sanitizers
constexpr rlim_t kMaxNesting = 12000;

} // namespace

void raise_stack_limit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur >= kWantedStack) return;
  limit.rlim_cur = std::min(kWantedStack, limit.rlim_max);
  setrlimit(RLIMIT_STACK, &limit);
}

int nesting_limit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return 500;
  return static_cast<int>(std::min(kMaxNesting, limit.rlim_cur / kBytesPerLevel));
}

} // namespace zan
