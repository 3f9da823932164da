// The memory monitor, reclaim switches and version queries, and the task statistics, task-load
// and task-scheduling nodes; with the whole-node line reader they share.

#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <unistd.h>

#include <deque>
#include <filesystem>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Debug;
using testing::Error;
using testing::Kernels;
using testing::OperationRow;
using testing::Outcome;
using P = Performance;

// A row's name and call.
#define OP(op, ...) #op, testing::call(&P::op, ##__VA_ARGS__)

constexpr NodePair kMonitor = {"/proc/memory_monitor", "/proc/vyren_mem/memory_monitor"};
constexpr NodePair kCpustats = {"/proc/sys/kernel/task_cpustats_enable",
                                "/proc/task_info/task_cpustats/task_cpustats_enable"};
const std::string kLoad = "/proc/task_info/task_load_info/";
const std::string kSched = "/proc/task_info/task_sched_info/";
const std::string kNoFile = " {node} (2): No such file or directory";
const std::string kNoRead = "open {node} failed! err:No such file or directory, Linux version ";
// Lines longer than any read chunk, a blank line, and a last line without its newline.
const std::string kLines = std::string(5000, 'x') + "\n\nlast";

// The same node on every kernel; dir + name, kept for the life of the rows.
NodePair at(const std::string& dir, const char* name = "") {
    static std::deque<std::string> paths;
    const char* node = paths.emplace_back(dir + name).c_str();
    return {node, node};
}
OperationRow row(std::string name, testing::Call op, NodePair node, std::string content,
                 std::optional<std::string> written, Outcome present, Outcome absent,
                 std::optional<Outcome> refused = {}, Kernels kernels = Kernels::kAll) {
    return {name, op, node, kernels, content, written, present, absent, refused};
}
// Every line comes back newline-ended. A read of /dev/full would never end, so no refusing case.
OperationRow lines(std::string name, testing::Call op, NodePair node, Outcome absent) {
    return row(name, op, node, kLines, {}, {kLines + "\n", {}}, absent);
}
// A refused switch write goes unnoticed.
OperationRow flip(std::string name, testing::Call op, NodePair node, bool on, std::string message,
                  std::string failure, Kernels kernels = Kernels::kAll) {
    const Outcome done = {"0", {Debug(message)}};
    return row(name, op, node, "x", on ? "1" : "0", done, {"-1", {Error(failure)}}, done, kernels);
}
// Writes "2041 3120" as it stands; results with the node present, absent and refusing writes.
OperationRow put(std::string name, testing::Call op, NodePair node, std::vector<std::string> results,
                 std::string writeFailure = "Failed to write", Kernels kernels = Kernels::kAll) {
    const LogLine refused = Error(writeFailure + " {node} (28): No space left on device");
    return row(name, op, node, "", "2041 3120", {results[0], {}},
               {results[1], {Error("Failed to open" + kNoFile)}}, Outcome{results[2], {refused}},
               kernels);
}
// A scheduling-information write; a refused write is logged with the open message.
OperationRow schedPut(std::string name, testing::Call op, const char* node) {
    return put(name, op, at(kSched, node), {"", "", ""}, "Failed to open");
}
// Answers result and touches nothing.
OperationRow inert(std::string name, testing::Call op, std::string result, Kernels kernels) {
    return row(name, op, at("/proc/process_reclaim"), "0", {}, {result, {}}, {result, {}}, {},
               kernels);
}

const Outcome kExists = {"1", {Debug("memmonitor is exist")}};
const Outcome kNoLoad = {"0", {Error("Failed to open {node}")}};
const std::string kSwitchFailure = "Failed to open" + kNoFile + ", Linux version {version}";

const OperationRow kRows[] = {
    lines(OP(getMemMonitor), kMonitor, {"NULL, OPEN FILE ERROR...", {}}),
    put(OP(writeMemMonitor, "2041 3120"), kMonitor, {"9", "-2", "-1"}),
    row(OP(existMemMonitor), kMonitor, "enable:1\n", "", kExists,
        {"0", {Error("Failed to enable" + kNoFile)}}, kExists),
    flip(OP(enableProcessReclaim), at("/proc/vyren_healthinfo/process_reclaim_enable"), true,
         "enable ProcessReclaim", "Failed to enable" + kNoFile, Kernels::kOlder),
    flip(OP(disableProcessReclaim), at("/proc/vyren_healthinfo/process_reclaim_enable"), false,
         "disable ProcessReclaim", "Failed to disable" + kNoFile, Kernels::kOlder),
    put(OP(setProcessReclaim, "2041 3120"), at("/proc/process_reclaim"), {"9", "-2", "-1"},
        "Failed to write", Kernels::kOlder),
    inert("newer_" OP(enableProcessReclaim), "0", Kernels::kNewer),
    inert("newer_" OP(disableProcessReclaim), "0", Kernels::kNewer),
    inert("newer_" OP(setProcessReclaim, "1"), "0", Kernels::kNewer),
    inert(OP(perProcessMemReclaim, 1, 2, 3), "-1", Kernels::kAll),
    inert(OP(perProcessMemReadahead, 1, 2, 3), "-1", Kernels::kAll),
    flip(OP(enableMultiThreadOptimize), at("/proc/sys/kernel/cpu_multi_thread"), true,
         "enable multi thread optimize", "Failed to open" + kNoFile),
    flip(OP(disableMultiThreadOptimize), at("/proc/sys/kernel/cpu_multi_thread"), false,
         "disable multi thread optimize", "Failed to open" + kNoFile),
    // The version line is read once, at construction.
    row(OP(getKernelVersion), at("/proc/version"), "Linux version 5.15.74-g1\n", {}, {"515", {}},
        {"{kernel}", {}}),
    row(OP(getPswapVersion), at("/sys/block/zram0/hybridswap_enable"), "1\n", {}, {"2", {}},
        {"-1", {}}, Outcome{"2", {}}),
    flip(OP(enableTaskCpustats), kCpustats, true, "enable task cpustats", kSwitchFailure),
    flip(OP(disableTaskCpustats), kCpustats, false, "disable task cpustats", kSwitchFailure),
    row(OP(readTaskCpustatsEnable), kCpustats, "0123456789abcdef-cut", {}, {"0123456789abcdef", {}},
        {"", {Debug(kNoRead + "{version}")}}, Outcome{"", {}}),
    row(OP(readCpuTaskstats), at("/proc/task_cpustats"), std::string(4096, 't') + "cut", {},
        {std::string(4096, 't'), {}}, {"", {Debug(kNoRead + "{version}")}}),
    lines(OP(readSgeInfo), {"/proc/sgeinfo", "/proc/task_info/task_cpustats/sgeinfo"},
          {"", {Debug("open sge_info failed! Linux version {version}")}}),
    lines(OP(readSgeFreqInfo), {"/proc/sgefreqinfo", "/proc/task_info/task_cpustats/sgefreqinfo"},
          {"", {Debug("open sge_freq_info failed! Linux version {version}")}}),
    put(OP(writeMonitorStatus, "2041 3120"), at(kLoad, "monitor_status"), {"1", "0", "0"}),
    row(OP(readTargetProcess, "2041 3120"), at(kLoad, "target_process"), "", "2041 3120",
        {"2041 3120\n", {}}, {"0", {Error("Failed to open" + kNoFile), kNoLoad.logs[0]}}),
    lines(OP(readIomonitorInfo, "daily"), at("/proc/IoMonitor/daily"),
          {"NULL, OPEN FILE ERROR...", {}}),
    lines(OP(readRealTime), at(kLoad, "real_time"), kNoLoad),
    lines(OP(readNormalizeRealTime), at(kLoad, "normalize_real_time"), kNoLoad),
    lines(OP(readRunningTime), at(kLoad, "running_time"), kNoLoad),
    lines(OP(readNormalizeRunningTime), at(kLoad, "normalize_running_time"), kNoLoad),
    lines(OP(readTaskSchedInfo), at(kSched, "task_sched_info_enable"), {}),
    lines(OP(readPidsSet), at(kSched, "pids_set"), {}),
    lines(OP(readSchedInfoThreshold), at(kSched, "sched_info_threshold"), {}),
    lines(OP(readTidsSet), at(kSched, "tids_set"), {}),
    lines(OP(readDBacktrace), at(kSched, "d_backtrace"), {}),
    lines(OP(readIOBacktrace), at(kSched, "io_backtrace"), {}),
    lines(OP(readDConvert), at(kSched, "d_convert"), {}),
    lines(OP(readVersion), at(kSched, "version"), {}),
    lines(OP(readLimitTable), at(kSched, "limit_table"), {}),
    schedPut(OP(writeTaskSchedInfo, "2041 3120"), "task_sched_info_enable"),
    schedPut(OP(writePidsSet, "2041 3120"), "pids_set"),
    schedPut(OP(writeSchedInfoThreshold, "2041 3120"), "sched_info_threshold"),
    schedPut(OP(writeTidsSet, "2041 3120"), "tids_set"),
    schedPut(OP(writeDBacktrace, "2041 3120"), "d_backtrace"),
    schedPut(OP(writeIOBacktrace, "2041 3120"), "io_backtrace"),
};
INSTANTIATE_OPERATION_ROWS(MonitorReclaimAndTaskStatistics, kRows);

class TaskStatisticsTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        mService = makeService("5.15.78");
        clearLogs();
    }
    std::string text(::ndk::ScopedAStatus (P::*op)(std::string*)) {
        std::string out = "stale";
        EXPECT_TRUE((mService.get()->*op)(&out).isOk());
        return out;
    }
    // Makes the node a link to a node of the host.
    void linkNode(const std::string& node, const char* target) {
        std::filesystem::create_directories(std::filesystem::path(path(node)).parent_path());
        ASSERT_EQ(symlink(target, path(node).c_str()), 0);
    }
    std::shared_ptr<Performance> mService;
};

TEST_F(TaskStatisticsTest, EmptyNodesReadAsEmptyAndReadOnlyNodesRefuseReadWriteOpens) {
    writeNode(kMonitor.newer, "");
    writeNode(kLoad + "real_time", "");
    EXPECT_EQ(text(&P::getMemMonitor), "");
    EXPECT_EQ(text(&P::readRealTime), "");
    // sysfs refuses a write open of a read-only attribute, even to root.
    const char* attribute = "/sys/devices/system/cpu/possible";
    std::string content;
    ASSERT_TRUE(android::base::ReadFileToString(attribute, &content));
    if (android::base::unique_fd(open(attribute, O_RDWR)) >= 0) GTEST_SKIP() << "host lets it open";
    std::filesystem::remove_all(path("/proc"));
    for (const std::string node : {kMonitor.newer, "/proc/task_info/task_cpustats/sgeinfo"}) {
        linkNode(node, attribute);
    }
    EXPECT_EQ(text(&P::getMemMonitor), "NULL, OPEN FILE ERROR...");
    EXPECT_EQ(text(&P::readSgeInfo), content);
}

TEST_F(TaskStatisticsTest, IoReportsAreChosenByTheirExactName) {
    for (const std::string report : {"flow", "daily", "uid_io_show"}) {
        writeNode("/proc/IoMonitor/" + report, report);
    }
    for (const std::string report : {"flow", "uid_io_show", "Flow", "flow ", "", "uid"}) {
        std::string out;
        ASSERT_TRUE(mService->readIomonitorInfo(report, &out).isOk());
        const bool known = report == "flow" || report == "uid_io_show";
        EXPECT_EQ(out, known ? report + "\n" : "NULL, NO SUCH PROC...") << report;
    }
}

TEST_F(TaskStatisticsTest, TargetProcessReadsANodeThatRefusedTheWrite) {
    // A procfs node with no write handler takes root's write open and fails the write.
    if (android::base::unique_fd(open("/proc/version", O_WRONLY)) < 0) GTEST_SKIP();
    std::string content, out;
    ASSERT_TRUE(android::base::ReadFileToString("/proc/version", &content));
    linkNode(kLoad + "target_process", "/proc/version");
    ASSERT_TRUE(mService->readTargetProcess("3120", &out).isOk());
    EXPECT_EQ(out, content);
    EXPECT_EQ(logs(), std::vector<LogLine>{Error("Failed to write " + kLoad +
                                                 "target_process (5): Input/output error")});
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
