// The kernel's memory monitor: its report, the commands it takes and a probe for it.

#define LOG_TAG "PerformanceService"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>

#include <cerrno>
#include <cstring>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr NodePair kMemoryMonitor = {"/proc/memory_monitor", "/proc/vyren_mem/memory_monitor"};

// The report is opened for reading and writing; a monitor that will not open says so in the text.
constexpr Performance::WholeNodeRead kMonitorReport = {Performance::LineOpen::kReadWrite,
                                                       kOpenFileError};

}  // namespace

::ndk::ScopedAStatus Performance::getMemMonitor(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(choose(kMemoryMonitor), kMonitorReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeMemMonitor(const std::string& cmd, int32_t* _aidl_return) {
    *_aidl_return = valueWrite(choose(kMemoryMonitor), cmd, WriteCheck::kNegative, "");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::existMemMonitor(int32_t* _aidl_return) {
    const char* path = choose(kMemoryMonitor);
    // Probes with the truncating open a writer would use, so a monitor the service may only read
    // counts as absent.
    android::base::unique_fd probe(
        open(nodePath(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (probe < 0) {
        const int err = errno;
        ALOGE("Failed to enable %s (%d): %s", path, err, strerror(err));
        *_aidl_return = 0;
        return ::ndk::ScopedAStatus::ok();
    }
    probe.reset();
    ALOGD("memmonitor is exist");
    *_aidl_return = 1;
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
