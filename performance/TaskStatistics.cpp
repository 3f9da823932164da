// Per-task CPU statistics, the task-load monitor and the I/O monitor reports.

#include <android/log.h>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

using WholeNodeRead = Performance::WholeNodeRead;
using LineOpen = Performance::LineOpen;
using OpenFailureLog = Performance::OpenFailureLog;

constexpr NodePair kCpustatsEnable = {"/proc/sys/kernel/task_cpustats_enable",
                                      "/proc/task_info/task_cpustats/task_cpustats_enable"};
constexpr char kCpustatsOpenFailure[] = "Failed to open %s (%d): %s, Linux version %d.%d.%d";
constexpr size_t kCpustatsEnableSize = 16;
constexpr char kCpuTaskstats[] = "/proc/task_cpustats";
constexpr size_t kCpuTaskstatsSize = 4096;

struct SgeReport {
    NodePair node;
    WholeNodeRead read;
};
constexpr SgeReport kSgeInfo = {{"/proc/sgeinfo", "/proc/task_info/task_cpustats/sgeinfo"},
                                {LineOpen::kRead, "", OpenFailureLog::kKernelVersion,
                                 ANDROID_LOG_DEBUG, "open sge_info failed! Linux version %d.%d.%d"}};
constexpr SgeReport kSgeFreqInfo = {
    {"/proc/sgefreqinfo", "/proc/task_info/task_cpustats/sgefreqinfo"},
    {LineOpen::kRead, "", OpenFailureLog::kKernelVersion, ANDROID_LOG_DEBUG,
     "open sge_freq_info failed! Linux version %d.%d.%d"}};

constexpr char kMonitorStatus[] = "/proc/task_info/task_load_info/monitor_status";
constexpr char kRealTime[] = "/proc/task_info/task_load_info/real_time";
constexpr char kNormalizeRealTime[] = "/proc/task_info/task_load_info/normalize_real_time";
constexpr char kRunningTime[] = "/proc/task_info/task_load_info/running_time";
constexpr char kNormalizeRunningTime[] = "/proc/task_info/task_load_info/normalize_running_time";
constexpr char kTargetProcess[] = "/proc/task_info/task_load_info/target_process";
// A task-load node that will not open reads as "0".
constexpr WholeNodeRead kTaskLoadRead = {LineOpen::kReadWrite, "0", OpenFailureLog::kPath,
                                         ANDROID_LOG_ERROR, "Failed to open %s"};

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

::ndk::ScopedAStatus Performance::enableTaskCpustats(int32_t* _aidl_return) {
    *_aidl_return =
        switchWrite(choose(kCpustatsEnable), true, kCpustatsOpenFailure, "enable task cpustats");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::disableTaskCpustats(int32_t* _aidl_return) {
    *_aidl_return =
        switchWrite(choose(kCpustatsEnable), false, kCpustatsOpenFailure, "disable task cpustats");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readTaskCpustatsEnable(std::string* _aidl_return) {
    *_aidl_return = readNode(choose(kCpustatsEnable), kCpustatsEnableSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readCpuTaskstats(std::string* _aidl_return) {
    *_aidl_return = readNode(kCpuTaskstats, kCpuTaskstatsSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readSgeInfo(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(choose(kSgeInfo.node), kSgeInfo.read);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readSgeFreqInfo(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(choose(kSgeFreqInfo.node), kSgeFreqInfo.read);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeMonitorStatus(const std::string& status,
                                                     int32_t* _aidl_return) {
    // Unlike the other writers this one answers 1 for done and 0 for failed.
    *_aidl_return = valueWrite(kMonitorStatus, status, WriteCheck::kNegative, "") >= 0 ? 1 : 0;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readRealTime(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kRealTime, kTaskLoadRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readNormalizeRealTime(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kNormalizeRealTime, kTaskLoadRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readRunningTime(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kRunningTime, kTaskLoadRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readNormalizeRunningTime(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kNormalizeRunningTime, kTaskLoadRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readTargetProcess(const std::string& process,
                                                    std::string* _aidl_return) {
    // The kernel answers for the process last written; a refused write still leaves the last
    // answer to read.
    (void)valueWrite(kTargetProcess, process, WriteCheck::kNegative, "");
    *_aidl_return = readWholeNode(kTargetProcess, kTaskLoadRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readIomonitorInfo(const std::string& report,
                                                    std::string* _aidl_return) {
    *_aidl_return = "NULL, NO SUCH PROC...";
    for (const auto& known : kIoReports) {
        if (report == known.name) {
            *_aidl_return = readWholeNode(known.node, kIoReportRead);
            break;
        }
    }
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
