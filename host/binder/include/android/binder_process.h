/*
 * The process's binder thread pool, which serves incoming transactions.
 */
#pragma once

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Starts the pool's threads; later calls do nothing.
void ABinderProcess_startThreadPool(void);
// Caps the number of threads running transactions at once (joined threads included).
// Must be called before the pool starts; returns false afterwards or for 0.
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
// The calling thread serves transactions; returns only if the pool cannot run.
void ABinderProcess_joinThreadPool(void);

#ifdef __cplusplus
}  // extern "C"
#endif
