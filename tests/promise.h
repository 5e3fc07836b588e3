#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

// What tests share that run many cases of one promise; scripts/promises counts them for docs/promises.md.
namespace zan::test {

// With ZAN_PROMISES=full in the environment all cases are run, otherwise a part, chosen evenly: one in so
// many. With ZAN_PROMISES=few, where each takes long, it is a quarter of that part.
inline bool has_form(std::string_view form) {
  const char* wanted = std::getenv("ZAN_PROMISES");
  return wanted != nullptr && form == wanted;
}
inline bool long_form() { return has_form("full"); }
inline long one_in(long cases) { return long_form() ? 1 : has_form("few") ? 4 * cases : cases; }

// The rows of the table, from 1.
enum class Promised {
  failing_save = 1,
  killed_save,
  full_disk,
  streams,
  places,
  journals,
  killed_sessions,
  hostile_journals,
  signals,
  end_of_input,
  no_cursor,
  patterns,
  nesting,
  numbers,
  round_trips,
  memory,
  print,
  two_billion,
  killed_typing,
};

// The runs of one promise. Prints "PROMISE row=1 runs=200 failed=0" at its end.
class Promise {
 public:
  explicit Promise(Promised row) : row_(row) {}
  ~Promise() {
    std::printf("PROMISE row=%d runs=%zu failed=%zu\n", static_cast<int>(row_), runs_, failed_);
    std::fflush(stdout);
  }
  Promise(const Promise&) = delete;
  Promise& operator=(const Promise&) = delete;

  // One run. What does not hold is a failure of the test, told as `what`; many would only hide the first.
  void expect(bool holds, const std::string& what) {
    ++runs_;
    if (holds) return;
    if (++failed_ <= kShownFailures) ADD_FAILURE() << what;
  }
  // The same, where `wrong` says what did not hold; "": everything did.
  void ran(const std::string& what, const std::string& wrong) { expect(wrong.empty(), what + ": " + wrong); }

 private:
  static constexpr std::size_t kShownFailures = 20;
  Promised row_;
  std::size_t runs_ = 0;
  std::size_t failed_ = 0;
};

} // namespace zan::test
