#include "host/abort.h"

volatile std::sig_atomic_t g_zan_abort_requested = 0;

void zan_sigint_handler(int) { g_zan_abort_requested = 1; }
