// The memory monitor, reclaim switches and version queries, and the task statistics, task-load
// and task-scheduling nodes; with the whole-node line reader they share.

#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <fcntl.h>

#include <array>
#include <filesystem>

#include "OperationNodes.h"

#define LOAD "/proc/task_info/task_load_info/"
#define SCHED(node) same("/proc/task_info/task_sched_info/" node)
// A scheduling-information node with its reader and its writer.
#define SCHED_RW(read, write, node) \
    lines(OP(read), SCHED(node), {}), put(OP(write, "2041 3120"), SCHED(node), kSchedPut)

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Call, testing::Debug, testing::Error, testing::Kernels, testing::OperationRow,
    testing::Outcome, testing::Row, testing::same, testing::switchRow, testing::unreached;

constexpr NodePair kMonitor = {"/proc/memory_monitor", "/proc/vyren_mem/memory_monitor"};
constexpr NodePair kCpustats = {"/proc/sys/kernel/task_cpustats_enable",
                                "/proc/task_info/task_cpustats/task_cpustats_enable"};
constexpr NodePair kReclaim = same("/proc/vyren_healthinfo/process_reclaim_enable");
constexpr NodePair kMultiThread = same("/proc/sys/kernel/cpu_multi_thread");
const std::string kNoFile = " {node} (2): No such file or directory";
const std::string kNoOpen = "Failed to open" + kNoFile;
const LogLine kNoRead =
    Debug("open {node} failed! err:No such file or directory, Linux version {version}");
const std::string kOpenError = "NULL, OPEN FILE ERROR...";
// Lines longer than any read chunk, a blank line, and a last line without its newline.
const std::string kLines = std::string(5000, 'x') + "\n\nlast";

// Every line comes back newline-ended. A read of /dev/full would never end, so no refusing case.
OperationRow lines(std::string name, Call op, NodePair node, Outcome absent) {
    return Row(name, op, node, kLines, {}, {kLines + "\n", {}}, absent);
}
// Writes "2041 3120" as it stands. The results with the node present, absent and refusing
// writes, and how the refused write is logged.
using PutResults = std::array<const char*, 4>;
constexpr PutResults kCounted = {"9", "-2", "-1", "Failed to write"};
// A scheduling-information write answers nothing; a refused one is logged with the open message.
constexpr PutResults kSchedPut = {"", "", "", "Failed to open"};

OperationRow put(std::string name, Call op, NodePair node, PutResults results,
                 Kernels kernels = Kernels::kAll) {
    const LogLine refused =
        Error(results[3] + std::string(" {node} (28): No space left on device"));
    return Row(name, op, node, "", "2041 3120", {results[0], {}}, {results[1], {Error(kNoOpen)}},
               Outcome{results[2], {refused}}, kernels);
}

// Calls that answer without touching the reclaim node.
constexpr char kProcessReclaim[] = "/proc/process_reclaim";
const Outcome kZero = {"0", {}}, kMinusOne = {"-1", {}};
const Outcome kExists = {"1", {Debug("memmonitor is exist")}};
const Outcome kNoLoad = {"0", {Error("Failed to open {node}")}};
const std::string kSwitchFailure = "Failed to open" + kNoFile + ", Linux version {version}";

const OperationRow kRows[] = {
    lines(OP(getMemMonitor), kMonitor, {kOpenError, {}}),
    // The UFS signal record goes through the same line reader.
    lines(OP(getUfsSignalRecordUpload), same("/proc/ufs_signalShow/record_upload"),
          {kOpenError, {}}),
    put(OP(writeMemMonitor, "2041 3120"), kMonitor, kCounted),
    Row(OP(existMemMonitor), kMonitor, "enable:1\n", "", kExists,
        {"0", {Error("Failed to enable" + kNoFile)}}, kExists),
    switchRow(OP(enableProcessReclaim), kReclaim, "enable ProcessReclaim", "", Kernels::kOlder),
    switchRow(OP(disableProcessReclaim), kReclaim, "disable ProcessReclaim", "", Kernels::kOlder),
    put(OP(setProcessReclaim, "2041 3120"), same(kProcessReclaim), kCounted, Kernels::kOlder),
    unreached("newer_" OP(enableProcessReclaim), kProcessReclaim, kZero, Kernels::kNewer),
    unreached("newer_" OP(disableProcessReclaim), kProcessReclaim, kZero, Kernels::kNewer),
    unreached("newer_" OP(setProcessReclaim, "1"), kProcessReclaim, kZero, Kernels::kNewer),
    unreached(OP(perProcessMemReclaim, 1, 2, 3), kProcessReclaim, kMinusOne),
    unreached(OP(perProcessMemReadahead, 1, 2, 3), kProcessReclaim, kMinusOne),
    switchRow(OP(enableMultiThreadOptimize), kMultiThread, "enable multi thread optimize", kNoOpen),
    switchRow(OP(disableMultiThreadOptimize), kMultiThread, "disable multi thread optimize",
              kNoOpen),
    // The version line is read once, at construction.
    Row(OP(getKernelVersion), "/proc/version", "Linux version 5.15.74-g1\n", {}, {"515", {}},
        {"{kernel}", {}}),
    Row(OP(getPswapVersion), "/sys/block/zram0/hybridswap_enable", "1\n", {}, {"2", {}}, {"-1", {}},
        Outcome{"2", {}}),
    switchRow(OP(enableTaskCpustats), kCpustats, "enable task cpustats", kSwitchFailure),
    switchRow(OP(disableTaskCpustats), kCpustats, "disable task cpustats", kSwitchFailure),
    Row(OP(readTaskCpustatsEnable), kCpustats, "0123456789abcdef-cut", {}, {"0123456789abcdef", {}},
        {"", {kNoRead}}, Outcome{"", {}}),
    Row(OP(readCpuTaskstats), "/proc/task_cpustats", std::string(4096, 't') + "cut", {},
        {std::string(4096, 't'), {}}, {"", {kNoRead}}),
    lines(OP(readSgeInfo), {"/proc/sgeinfo", "/proc/task_info/task_cpustats/sgeinfo"},
          {"", {Debug("open sge_info failed! Linux version {version}")}}),
    lines(OP(readSgeFreqInfo), {"/proc/sgefreqinfo", "/proc/task_info/task_cpustats/sgefreqinfo"},
          {"", {Debug("open sge_freq_info failed! Linux version {version}")}}),
    put(OP(writeMonitorStatus, "2041 3120"), same(LOAD "monitor_status"),
        {"1", "0", "0", "Failed to write"}),
    Row(OP(readTargetProcess, "2041 3120"), same(LOAD "target_process"), "", "2041 3120",
        {"2041 3120\n", {}}, {"0", {Error(kNoOpen), kNoLoad.logs[0]}}),
    lines(OP(readIomonitorInfo, "daily"), same("/proc/IoMonitor/daily"), {kOpenError, {}}),
    lines(OP(readRealTime), same(LOAD "real_time"), kNoLoad),
    lines(OP(readNormalizeRealTime), same(LOAD "normalize_real_time"), kNoLoad),
    lines(OP(readRunningTime), same(LOAD "running_time"), kNoLoad),
    lines(OP(readNormalizeRunningTime), same(LOAD "normalize_running_time"), kNoLoad),
    SCHED_RW(readTaskSchedInfo, writeTaskSchedInfo, "task_sched_info_enable"),
    SCHED_RW(readPidsSet, writePidsSet, "pids_set"),
    SCHED_RW(readSchedInfoThreshold, writeSchedInfoThreshold, "sched_info_threshold"),
    SCHED_RW(readTidsSet, writeTidsSet, "tids_set"),
    SCHED_RW(readDBacktrace, writeDBacktrace, "d_backtrace"),
    SCHED_RW(readIOBacktrace, writeIOBacktrace, "io_backtrace"),
    lines(OP(readDConvert), SCHED("d_convert"), {}),
    lines(OP(readVersion), SCHED("version"), {}),
    lines(OP(readLimitTable), SCHED("limit_table"), {}),
};
INSTANTIATE_OPERATION_ROWS(MonitorReclaimAndTaskStatistics, kRows);

using TaskStatisticsTest = NodeRootServiceTest;

TEST_F(TaskStatisticsTest, EmptyNodeReadsAsEmptyAndReadOnlyNodesRefuseReadWriteOpens) {
    std::string monitor, load = "stale", sge;
    writeNode(LOAD "real_time", "");
    ASSERT_TRUE(mService->readRealTime(&load).isOk());
    EXPECT_EQ(load, "");
    // sysfs refuses a write open of a read-only attribute, even to root.
    const char* attribute = "/sys/devices/system/cpu/possible";
    std::string content;
    ASSERT_TRUE(android::base::ReadFileToString(attribute, &content));
    if (android::base::unique_fd(open(attribute, O_RDWR)) >= 0) GTEST_SKIP() << "host lets it open";
    std::filesystem::remove_all(path("/proc"));
    makeLink(kMonitor.newer, attribute);
    makeLink("/proc/task_info/task_cpustats/sgeinfo", attribute);
    ASSERT_TRUE(mService->getMemMonitor(&monitor).isOk());
    ASSERT_TRUE(mService->readSgeInfo(&sge).isOk());
    EXPECT_EQ(monitor, kOpenError);
    EXPECT_EQ(sge, content);
}

TEST_F(TaskStatisticsTest, IoReportsAreChosenByTheirExactName) {
    for (const std::string report : {"flow", "daily", "uid_io_show"}) {
        writeNode("/proc/IoMonitor/" + report, report);
    }
    for (const std::string report : {"flow", "daily", "uid_io_show", "Flow", "flow ", "uid"}) {
        std::string out;
        ASSERT_TRUE(mService->readIomonitorInfo(report, &out).isOk());
        const bool known = report == "flow" || report == "daily" || report == "uid_io_show";
        EXPECT_EQ(out, known ? report + "\n" : "NULL, NO SUCH PROC...") << report;
    }
}

TEST_F(TaskStatisticsTest, TargetProcessReadsANodeThatRefusedTheWrite) {
    // A procfs node with no write handler takes root's write open and fails the write.
    if (android::base::unique_fd(open("/proc/version", O_WRONLY)) < 0) GTEST_SKIP();
    std::string content, out;
    ASSERT_TRUE(android::base::ReadFileToString("/proc/version", &content));
    makeLink(LOAD "target_process", "/proc/version");
    ASSERT_TRUE(mService->readTargetProcess("3120", &out).isOk());
    EXPECT_EQ(out, content);
    EXPECT_EQ(logs(), std::vector<LogLine>{
                          Error("Failed to write " LOAD "target_process (5): Input/output error")});
}

TEST_F(TaskStatisticsTest, HybridSwapWinsOverNandswap) {
    int32_t versions[2] = {};
    writeNode("/proc/nandswap/fn_enable", "0\n");
    ASSERT_TRUE(mService->getPswapVersion(&versions[0]).isOk());
    writeNode("/sys/block/zram0/hybridswap_enable", "0\n");
    ASSERT_TRUE(mService->getPswapVersion(&versions[1]).isOk());
    EXPECT_EQ(std::vector<int32_t>(versions, versions + 2), (std::vector<int32_t>{1, 2}));
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
