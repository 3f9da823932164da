// A second daemon for the end-to-end tests: the real service object on a device tree, registered
// under its own instance name, with the record-returning operations answering the fixed records of
// FixedRecords.h.

#include <android-base/logging.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <memory>

#include "FixedRecords.h"
#include "Performance.h"
#include "host_service_options.h"

namespace {

using ::aidl::vendor::vyren::hardware::performance::Performance;
namespace performance = ::aidl::vendor::vyren::hardware::performance;

class RecordingPerformance : public Performance {
  public:
    using Performance::Performance;

    ::ndk::ScopedAStatus getHIIowaitHung(performance::ProcReqHal* out) override {
        *out = e2e::IowaitHungRecord();
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus getWakeThreadsAffinityOrdered(const std::string& handle, int32_t count,
                                                       performance::TaskWakeInfo* out) override {
        *out = e2e::WakeRecord(handle, count);
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus readMemoryByPids(const std::vector<int32_t>& pids, int32_t flags,
                                          performance::ProcMemStatRet* out) override {
        *out = e2e::MemoryRecord(pids, flags);
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus readQuilbexVersion(performance::QuilbexVersionRet* out) override {
        *out = e2e::QuilbexRecord();
        return ::ndk::ScopedAStatus::ok();
    }
};

}  // namespace

int main(int argc, char** argv) {
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();
    auto service =
        ndk::SharedRefBase::make<RecordingPerformance>(ApplyHostServiceOptions(argc, argv));
    const binder_status_t status =
        AServiceManager_addService(service->asBinder().get(), e2e::kTestInstance);
    CHECK(status == STATUS_OK);
    ABinderProcess_joinThreadPool();
    return 1;
}
