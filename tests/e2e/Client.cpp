// A client process for the end-to-end tests: `e2e-client INSTANCE` calls getVmallocDebug from as
// many threads as the daemon has binder threads until killed, so that at almost any moment one of
// them waits for a reply. Prints a line for each answer; exits 1 as soon as a call fails.

#include <aidl/vendor/vyren/hardware/performance/IPerformance.h>
#include <android/binder_manager.h>
#include <unistd.h>

#include <cstdio>
#include <thread>
#include <vector>

using ::aidl::vendor::vyren::hardware::performance::IPerformance;

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::shared_ptr<IPerformance> service =
        IPerformance::fromBinder(ndk::SpAIBinder(AServiceManager_getService(argv[1])));
    if (service == nullptr) return 2;
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&service] {
            std::string report;
            // Other callers are still inside calls: leave without running destructors.
            for (;;) {
                if (!service->getVmallocDebug(&report).isOk()) _exit(1);
                printf("%zu\n", report.size());
                fflush(stdout);
            }
        });
    }
    for (auto& caller : callers) caller.join();
}
