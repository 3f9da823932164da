// The kernel's memory monitor: its report, the commands it takes and a probe for it.

#define LOG_TAG "PerformanceService"

#include "MemoryMonitor.h"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>

#include <cerrno>
#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr NodePair kMemoryMonitor = {"/proc/memory_monitor", "/proc/vyren_mem/memory_monitor"};

// The report is opened for reading and writing; a monitor that will not open says so in the text.
constexpr WholeNodeRead kMonitorReport = {LineOpen::kReadWrite, kOpenFileError};

}  // namespace

std::string MemoryMonitor::getMemMonitor() const {
    return mNodes.readWholeNode(mNodes.choose(kMemoryMonitor), kMonitorReport);
}

int32_t MemoryMonitor::writeMemMonitor(const std::string& cmd) const {
    return mNodes.valueWrite(mNodes.choose(kMemoryMonitor), cmd, WriteCheck::kNegative, "");
}

int32_t MemoryMonitor::existMemMonitor() const {
    const char* path = mNodes.choose(kMemoryMonitor);
    // Probes with the truncating open a writer would use, so a monitor the service may only read
    // counts as absent.
    android::base::unique_fd probe(
        mNodes.open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (probe < 0) {
        const int err = errno;
        ALOGE("Failed to enable %s (%d): %s", path, err, strerror(err));
        return 0;
    }
    probe.reset();
    // Log readers match "memmonitor is exist" as it stands.
    ALOGD("memmonitor is exist");
    return 1;
}

}  // namespace aidl::vendor::vyren::hardware::performance
