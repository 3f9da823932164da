/*
 * Serving local binders to other processes.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>

namespace host_binder {

// Starts serving binder on a listening socket. Connections are accepted and their requests
// run by the threads that called serveForever.
void serveOnSocket(android::base::unique_fd listener, AIBinder* binder);

// Caps how many threads run transactions at once.
void setMaxConcurrentTransactions(uint32_t count);

// Runs the calling thread as a binder thread. Returns only if the event loop fails.
void serveForever();

}  // namespace host_binder
