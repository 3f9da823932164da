// Per-task CPU statistics, the task-load monitor and the I/O monitor reports.

#define LOG_TAG "PerformanceService"

#include "TaskStatistics.h"

#include <log/log.h>

#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr NodePair kCpustatsEnable = {"/proc/sys/kernel/task_cpustats_enable",
                                      "/proc/task_info/task_cpustats/task_cpustats_enable"};
constexpr size_t kCpustatsEnableSize = 16;
constexpr char kCpuTaskstats[] = "/proc/task_cpustats";
constexpr size_t kCpuTaskstatsSize = 4096;

constexpr NodePair kSgeInfo = {"/proc/sgeinfo", "/proc/task_info/task_cpustats/sgeinfo"};
constexpr NodePair kSgeFreqInfo = {"/proc/sgefreqinfo",
                                   "/proc/task_info/task_cpustats/sgefreqinfo"};
constexpr WholeNodeRead kSgeRead = {LineOpen::kRead, ""};

constexpr char kMonitorStatus[] = "/proc/task_info/task_load_info/monitor_status";
constexpr char kRealTime[] = "/proc/task_info/task_load_info/real_time";
constexpr char kNormalizeRealTime[] = "/proc/task_info/task_load_info/normalize_real_time";
constexpr char kRunningTime[] = "/proc/task_info/task_load_info/running_time";
constexpr char kNormalizeRunningTime[] = "/proc/task_info/task_load_info/normalize_running_time";
constexpr char kTargetProcess[] = "/proc/task_info/task_load_info/target_process";
// A task-load node that will not open reads as "0".
constexpr WholeNodeRead kTaskLoadRead = {LineOpen::kReadWrite, "0"};

void LogTaskLoadOpenFailure(const char* path, int) {
    ALOGE("Failed to open %s", path);
}

// I/O monitor reports by name, matched exactly in this order.
struct IoReport {
    const char* name;
    const char* node;
};
constexpr IoReport kIoReports[] = {{"flow", "/proc/IoMonitor/flow"},
                                   {"daily", "/proc/IoMonitor/daily"},
                                   {"uid_io_show", "/proc/IoMonitor/uid_io_show"}};
constexpr WholeNodeRead kIoReportRead = {LineOpen::kReadWrite, kOpenFileError};

}  // namespace

int32_t TaskStatistics::switchCpustats(bool on, const char* message) const {
    return mNodes.switchWrite(mNodes.choose(kCpustatsEnable), on, mNodes.openFailureOnKernel(),
                              message);
}

int32_t TaskStatistics::enableTaskCpustats() const {
    return switchCpustats(true, "enable task cpustats");
}

int32_t TaskStatistics::disableTaskCpustats() const {
    return switchCpustats(false, "disable task cpustats");
}

std::string TaskStatistics::readTaskCpustatsEnable() const {
    return mNodes.readNode(mNodes.choose(kCpustatsEnable), kCpustatsEnableSize);
}

std::string TaskStatistics::readCpuTaskstats() const {
    return mNodes.readNode(kCpuTaskstats, kCpuTaskstatsSize);
}

std::string TaskStatistics::readSgeInfo() const {
    return mNodes.readWholeNode(mNodes.choose(kSgeInfo), kSgeRead, [this](const char*, int) {
        const KernelVersion& v = mNodes.version();
        ALOGD("open sge_info failed! Linux version %d.%d.%d", v.major, v.minor, v.patch);
    });
}

std::string TaskStatistics::readSgeFreqInfo() const {
    return mNodes.readWholeNode(mNodes.choose(kSgeFreqInfo), kSgeRead, [this](const char*, int) {
        const KernelVersion& v = mNodes.version();
        ALOGD("open sge_freq_info failed! Linux version %d.%d.%d", v.major, v.minor, v.patch);
    });
}

int32_t TaskStatistics::writeMonitorStatus(const std::string& status) const {
    // Unlike the other writers this one answers 1 for done and 0 for failed.
    return mNodes.valueWrite(kMonitorStatus, status, WriteCheck::kNegative, "") >= 0 ? 1 : 0;
}

std::string TaskStatistics::readRealTime() const {
    return mNodes.readWholeNode(kRealTime, kTaskLoadRead, LogTaskLoadOpenFailure);
}

std::string TaskStatistics::readNormalizeRealTime() const {
    return mNodes.readWholeNode(kNormalizeRealTime, kTaskLoadRead, LogTaskLoadOpenFailure);
}

std::string TaskStatistics::readRunningTime() const {
    return mNodes.readWholeNode(kRunningTime, kTaskLoadRead, LogTaskLoadOpenFailure);
}

std::string TaskStatistics::readNormalizeRunningTime() const {
    return mNodes.readWholeNode(kNormalizeRunningTime, kTaskLoadRead, LogTaskLoadOpenFailure);
}

std::string TaskStatistics::readTargetProcess(const std::string& process) const {
    // The kernel answers for the process last written; a refused write still leaves the last
    // answer to read.
    (void)mNodes.valueWrite(kTargetProcess, process, WriteCheck::kNegative, "");
    return mNodes.readWholeNode(kTargetProcess, kTaskLoadRead, LogTaskLoadOpenFailure);
}

std::string TaskStatistics::readIomonitorInfo(const std::string& report) const {
    for (const auto& known : kIoReports) {
        if (report == known.name) return mNodes.readWholeNode(known.node, kIoReportRead);
    }
    return "NULL, NO SUCH PROC...";
}

}  // namespace aidl::vendor::vyren::hardware::performance
