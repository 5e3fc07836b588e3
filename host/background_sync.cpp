#include "host/background_sync.h"

#include <signal.h> // <csignal> need not declare the masks
#include <system_error>
#include <utility>

namespace zan {

void BackgroundSync::start(std::function<bool()> sync) {
  finish();
  auto run = [this, sync = std::move(sync)] {
    result_ = sync();
    done_ = true;
  };
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before); // a thread begins with its maker's mask
  try {
    thread_ = std::thread(run);
  } catch (const std::system_error&) { // no more threads
    run();
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

bool BackgroundSync::finish() {
  if (thread_.joinable()) thread_.join();
  done_ = false;
  return result_.exchange(true);
}

} // namespace zan
