#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace zan {

// Waits for a disk in a thread that does nothing else and takes no signal.
class BackgroundSync {
 public:
  BackgroundSync() = default;
  BackgroundSync(const BackgroundSync&) = delete;
  BackgroundSync& operator=(const BackgroundSync&) = delete;
  ~BackgroundSync() { finish(); }

  void start(std::function<bool()> sync); // what it uses must live until finish(); one at a time
  bool done() const { return done_; }
  bool finish(); // waits; what the last one returned, true when there was none

 private:
  std::thread thread_;
  std::atomic<bool> done_ = false;
  std::atomic<bool> result_ = true;
};

} // namespace zan
