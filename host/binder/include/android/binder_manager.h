/*
 * Service registration and lookup by instance name.
 */
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#ifdef __cplusplus
extern "C" {
#endif

// EX_NONE on success.
binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance);
// A new strong reference, or null when nothing is registered under the name. Does not wait.
AIBinder* AServiceManager_checkService(const char* instance);
// Like checkService, but waits a few seconds for the service to appear.
AIBinder* AServiceManager_getService(const char* instance);
AIBinder* AServiceManager_waitForService(const char* instance);

#ifdef __cplusplus
}  // extern "C"
#endif
