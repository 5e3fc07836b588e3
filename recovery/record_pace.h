#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace zan {

// When a record is due: soon after a change when nothing follows it, and now and then while changes go on.
class RecordPace {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kPause{800};
  static constexpr std::chrono::milliseconds kLongest{1800};

  void hurry() { begun_ = Clock::time_point(); } // a record is due at once, if there is anything to record
  // Called before every wait: `changed` says whether there is something to record, `moved` whether there is
  // more than at the last call. The time until a record is due, not below 0; nothing: none is.
  std::optional<std::chrono::milliseconds> due_in(bool changed, bool moved, Clock::time_point now) {
    if (!changed) {
      begun_.reset();
      return std::nullopt;
    }
    if (!begun_) begun_ = now;
    if (moved) moved_ = now;
    const auto due = std::min(moved_ + kPause, *begun_ + kLongest);
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(due - now), std::chrono::milliseconds(0));
  }

 private:
  std::optional<Clock::time_point> begun_; // the first change that has not been recorded
  Clock::time_point moved_;                // the last one
};

} // namespace zan
