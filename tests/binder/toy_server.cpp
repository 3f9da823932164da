/*
 * Serves the toy interface from its own process for the cross-process binder tests.
 *
 * usage: binder_toy_server <instance> <max threads> [<uid or first-last uids allowed to call>]
 * Exits with status 2 when the name cannot be registered.
 */
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <cstdlib>

#include "host_binder.h"
#include "toy_service.h"

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) return 1;
    if (argc == 4) {
        char* last = nullptr;
        const auto first = static_cast<uid_t>(strtoul(argv[3], &last, 10));
        host_binder::allowCallerUids(first, *last == '-' ? strtoul(last + 1, nullptr, 10) : first);
    }
    ABinderProcess_setThreadPoolMaxThreadCount(static_cast<uint32_t>(atoi(argv[2])));
    ABinderProcess_startThreadPool();
    auto service = ndk::SharedRefBase::make<toy::ToyService>();
    if (AServiceManager_addService(service->asBinder().get(), argv[1]) != EX_NONE) return 2;
    ABinderProcess_joinThreadPool();
    return 1;
}
