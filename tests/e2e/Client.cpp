// A client process for the end-to-end tests, started by them after fork (so that it opens its own
// connection, possibly under another uid).
//   e2e-client INSTANCE loop   calls getVmallocDebug from 4 threads until killed, printing the
//                              size of each report
// Exits 1 when a call fails, 2 on bad usage.

#include <aidl/vendor/vyren/hardware/performance/IPerformance.h>
#include <android/binder_manager.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using ::aidl::vendor::vyren::hardware::performance::IPerformance;

constexpr int kCallers = 4;

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: %s INSTANCE loop\n", argv[0]);
        return 2;
    }
    std::shared_ptr<IPerformance> service =
        IPerformance::fromBinder(ndk::SpAIBinder(AServiceManager_getService(argv[1])));
    if (service == nullptr) {
        fprintf(stderr, "%s: no service\n", argv[1]);
        return 1;
    }
    if (strcmp(argv[2], "loop") == 0) {
        // As many callers as the daemon has binder threads, so that at almost any moment one of
        // them is waiting for a reply.
        std::mutex printLock;
        std::vector<std::thread> callers;
        for (int i = 0; i < kCallers; ++i) {
            callers.emplace_back([&service, &printLock] {
                for (;;) {
                    std::string report;
                    const ndk::ScopedAStatus status = service->getVmallocDebug(&report);
                    std::lock_guard<std::mutex> lock(printLock);
                    if (!status.isOk()) {
                        fprintf(stderr, "getVmallocDebug: %s\n", status.getDescription().c_str());
                        // Other callers are still inside calls: leave without running destructors.
                        _exit(1);
                    }
                    printf("%zu\n", report.size());
                    fflush(stdout);
                }
            });
        }
        for (auto& caller : callers) caller.join();
    }
    fprintf(stderr, "unknown mode %s\n", argv[2]);
    return 2;
}
