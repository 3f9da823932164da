// The tag keeps the first version's name: log readers match it as it stands.
#define LOG_TAG "vendor.vyren.hardware.performance-V1-service"

#include <android-base/logging.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <log/log.h>

#include <memory>
#include <string>

#include "Performance.h"
#ifdef PERFORMANCE_HOST
#include "host_service_options.h"
#endif

using aidl::vendor::vyren::hardware::performance::Performance;

int main([[maybe_unused]] int argc, [[maybe_unused]] char** argv) {
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();

#ifdef PERFORMANCE_HOST
    // A host serves a simulated device tree, named on the command line.
    std::shared_ptr<Performance> performance =
        ndk::SharedRefBase::make<Performance>(ApplyHostServiceOptions(argc, argv));
#else
    std::shared_ptr<Performance> performance = ndk::SharedRefBase::make<Performance>();
#endif

    const std::string instance = std::string() + Performance::descriptor + "/default";
    binder_status_t status =
        AServiceManager_addService(performance->asBinder().get(), instance.c_str());
    // Failing to register is fatal: init sees the crash and restarts the service under its own
    // rules.
    CHECK(status == STATUS_OK);

    ABinderProcess_joinThreadPool();
    ALOGE("Service performance exited!");
    return 1;
}
