/*
 * Serving local binders to other processes.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>
#include <sys/types.h>

namespace host_binder {

// Starts serving binder on a listening socket. Connections are accepted and their requests
// run by the threads that called serveForever.
void serveOnSocket(android::base::unique_fd listener, AIBinder* binder);

// Caps how many threads run transactions at once.
void setMaxConcurrentTransactions(uint32_t count);

// Whether a process of uid may call the services of this process.
bool callerAllowed(uid_t uid);
// Whether any uid other than this process's own and root is allowed.
bool otherUidsAllowed();

// Runs the calling thread as a binder thread. Returns only if the event loop fails.
void serveForever();

}  // namespace host_binder
