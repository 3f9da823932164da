// Task statistics: the per-task CPU statistics, the task-load monitor and the I/O monitor reports.

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using namespace testing;

constexpr NodePair kCpustats = {"/proc/sys/kernel/task_cpustats_enable",
                                "/proc/task_info/task_cpustats/task_cpustats_enable"};
constexpr NodePair kRealTime = same("/proc/task_info/task_load_info/real_time");
constexpr NodePair kTarget = same("/proc/task_info/task_load_info/target_process");
const std::string kNoOpen = "Failed to open {node} (2): No such file or directory";
const std::string kCpustatsFailure = kNoOpen + ", Linux version {version}";
const Outcome kOpenError = {"NULL, OPEN FILE ERROR...", {}}, kNoProc = {"NULL, NO SUCH PROC...", {}};
const Outcome kNoLoad = {"0", {Error("Failed to open {node}")}};

// Answers 1 for done and 0 for failed, with the same lines logged.
OperationRow doneOrFailed(OperationRow r) {
    r.absent.result = r.refused->result = "0";
    return r.whenPresent({"1", {}}).whenTakingNoBytes({"1", {}});
}

const OperationRow kRows[] = {
    // The UFS signal record goes through the same line reader.
    linesRow(OP(getUfsSignalRecordUpload), same("/proc/ufs_signalShow/record_upload"), kOpenError),
    switchRow(OP(enableTaskCpustats), kCpustats, "enable task cpustats", kCpustatsFailure),
    switchRow(OP(disableTaskCpustats), kCpustats, "disable task cpustats", kCpustatsFailure),
    // /dev/full reads as NULs, which end the text.
    reportRow(OP(readTaskCpustatsEnable), kCpustats, 16).whenRefused({"", {}}),
    reportRow(OP(readCpuTaskstats), same("/proc/task_cpustats"), 4096),
    linesRow(OP(readSgeInfo), {"/proc/sgeinfo", "/proc/task_info/task_cpustats/sgeinfo"},
             {"", {Debug("open sge_info failed! Linux version {version}")}}),
    linesRow(OP(readSgeFreqInfo), {"/proc/sgefreqinfo", "/proc/task_info/task_cpustats/sgefreqinfo"},
             {"", {Debug("open sge_freq_info failed! Linux version {version}")}}),
    doneOrFailed(putRow(OP(writeMonitorStatus, kPut),
                        same("/proc/task_info/task_load_info/monitor_status"))),
    // The process is written before the read; a failed write still reads.
    linesRow(OP(readTargetProcess, kPut), kTarget, {"0", {Error(kNoOpen), kNoLoad.logs[0]}})
        .holding("")
        .leaves(kPut)
        .whenPresent({std::string(kPut) + "\n", {}}),
    // Reports are chosen by their exact names.
    linesRow("flow_" OP(readIomonitorInfo, "flow"), same("/proc/IoMonitor/flow"), kOpenError),
    linesRow("daily_" OP(readIomonitorInfo, "daily"), same("/proc/IoMonitor/daily"), kOpenError),
    linesRow(OP(readIomonitorInfo, "uid_io_show"), same("/proc/IoMonitor/uid_io_show"), kOpenError),
    unreached("Flow_" OP(readIomonitorInfo, "Flow"), "/proc/IoMonitor/flow", kNoProc),
    unreached("spaced_" OP(readIomonitorInfo, "flow "), "/proc/IoMonitor/flow", kNoProc),
    linesRow(OP(readRealTime), kRealTime, kNoLoad),
    // An empty node reads as empty, unlike one that will not open.
    linesRow("empty_" OP(readRealTime), kRealTime, kNoLoad).holding("").whenPresent({"", {}}),
    linesRow(OP(readNormalizeRealTime), same("/proc/task_info/task_load_info/normalize_real_time"),
             kNoLoad),
    linesRow(OP(readRunningTime), same("/proc/task_info/task_load_info/running_time"), kNoLoad),
    linesRow(OP(readNormalizeRunningTime),
             same("/proc/task_info/task_load_info/normalize_running_time"), kNoLoad),
};
INSTANTIATE_OPERATION_ROWS(TaskStatistics, kRows);

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
