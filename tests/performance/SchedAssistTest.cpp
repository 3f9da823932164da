// Scheduler-assist and tpd writers, UX state, waker identification, governor and audio.

#include <android-base/stringprintf.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "OperationNodes.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {

// "status f1,...,f7 f1,...,f7": a waker answer as one comparable text.
std::string resultText(const TaskWakeInfo& info) {
    std::string text = std::to_string(info.status);
    for (const ThreadInfo& t : info.threads)
        text += android::base::StringPrintf(" %d,%d,%d,%d,%d,%d,%d", t.field1, t.field2, t.field3,
                                            t.field4, t.field5, t.field6, t.field7);
    return text;
}

namespace {

using P = Performance;
using testing::call, testing::Call, testing::Debug, testing::Error, testing::OperationRow,
    testing::Outcome, testing::Row, testing::same, testing::unreached;
constexpr auto kOlder = testing::Kernels::kOlder, kNewer = testing::Kernels::kNewer;

#define ASSIST "/proc/vyren_scheduler/sched_assist/"
#define TPD "/sys/module/tpd/parameters/"
constexpr char kUxTask[] = ASSIST "ux_task", kSetting[] = ASSIST "disable_setting";
constexpr char kRtInfo[] = "/proc/waker_identify/rt_info";
constexpr char kWakerInfo[] = "/proc/waker_identify/waker_info";
constexpr char kNoWaker[] = "-1 -1,-1,-1,-1,-1,-1,-1";
const std::string kNoEntry = " (2): No such file or directory", kAbsent = "{node}" + kNoEntry;
const std::string kNoSpace = " (28): No space left on device";
const LogLine kUnsupported = Error("Linux version not support, Linux version {version}");
const Outcome kDone = {"", {}}, kZero = {"0", {}};
const Outcome kWriteFull = {"", {Error("Failed to write {node}" + kNoSpace)}};
const Outcome kOpenFull = {"", {Error("Failed to open {node}" + kNoSpace)}};
const Outcome kOpenAbsent = {"", {Error("Failed to open " + kAbsent)}};
Outcome absentOn(const char* result) {
    return {result, {Error("Failed to open " + kAbsent + ", Linux version {version}")}};
}
Outcome noSpace(const char* result, const std::string& what) {
    return {result, {Error(what + kNoSpace)}};
}
// A tpd parameter: a refused write goes unnoticed.
OperationRow tpd(std::string name, Call call, NodePair node, const char* before, const char* after,
                 testing::Kernels kernels = testing::Kernels::kAll) {
    return Row(name, call, node, before, after, kZero, absentOn("-1"), kZero, kernels);
}
const Outcome kImFlag = {"", {Debug("setImFlag sucess,pid=1234,im_flag=1")}};
const Outcome kAudio = {"0", {Debug("enableAudioPerf with 10")}};

// Nodes are {older tree, newer tree}. A refused tpd or task write goes unnoticed.
const OperationRow kRows[] = {
    Row(OP(setSlideboost, "1"),
        {"/proc/sys/kernel/slide_boost_enabled", "/proc/sys/walt/slide_boost_enabled"}, "0", "1",
        kDone, absentOn(""), kWriteFull),
    Row(OP(setSchedAssistScene, "2"),
        {"/proc/sys/kernel/sched_assist_scene", ASSIST "sched_assist_scene"}, "0", "2", kDone,
        absentOn(""), kWriteFull),
    Row(OP(setFrameRate, "90"), {"/proc/sys/kernel/frame_rate", "/proc/sys/walt/frame_rate"}, "60",
        "90", kDone, kOpenAbsent, kOpenFull),
    Row(OP(setImFlag, "1234", "1"), ASSIST "im_flag", "0", "p 1234 1", kImFlag, kOpenAbsent,
        Outcome{"", {kOpenFull.logs[0], kImFlag.logs[0]}}),
    Row(OP(setFgUids, "10150"), "/proc/fg_info/fg_uids", "10123", "10150", kDone, kOpenAbsent,
        kOpenFull),
    Row(OP(setSchedAssistImptTask, "au 4321"), ASSIST "sched_impt_task", "stale", "au 4321", kDone,
        absentOn(""), kDone),
    tpd(OP(setTpdSerialParams, "1 2"), {TPD "tpd_cmds", ASSIST "tpd_cmds"}, "stale", "1 2"),
    tpd(OP(setTpdID, "2041"), {TPD "tpd_id", ASSIST "tpd_id"}, "stale", "2041"),
    tpd(OP(enableTaskPlacementDecision), same(TPD "tpd_enable"), "0", "1", kOlder),
    tpd(OP(disableTaskPlacementDecision), same(TPD "tpd_enable"), "1", "0", kOlder),
    // Newer kernels have no tpd switch.
    unreached("newer_" OP(enableTaskPlacementDecision), TPD "tpd_enable", {"-1", {}}, kNewer),
    Row(OP(writeUxState, "2", "1000", "1001"), same("/proc/1000/task/1001/ux_state"), "0", "2",
        kZero, absentOn("-2"), noSpace("-28", "Failed to write pid 1001 with ux_state 2"), kOlder),
    Row(OP(setWakeSeedThread, "1234", true, false), same(kRtInfo), "0", "1234;0;1",
        {"1234", {Error("[WAKER_IDENTIFY] pid message 1234;0;1 is writen to proc")}},
        absentOn("-2"), noSpace("-28", "Failed to set seed tid 1234"), kNewer),
    unreached("older_" OP(setWakeSeedThread, "1234", true, false), kRtInfo, {"-1", {kUnsupported}},
              kOlder),
    Row(OP(getWakeThreadsAffinityOrdered, "1234", 3), same(kWakerInfo), "0000;2;x;4;5;6;7;8\n",
        "1234;2;x;4;5;6;7;8\n", {"1 1234,2,6,5,7,4,8", {}}, absentOn(kNoWaker),
        Outcome{kNoWaker, {Error("Failed to write handle 1234")}}, kNewer),
    unreached("older_" OP(getWakeThreadsAffinityOrdered, "1234", 3), kWakerInfo,
              {kNoWaker, {kUnsupported}}, kOlder),
    Row(OP(setFreqGoverner, "schedutil", std::vector<int32_t>{4}),
        "/sys/devices/system/cpu/cpufreq/policy4/scaling_governor", "walt", "schedutil",
        {"0", {Debug("setFreqGoverner: write path {node} with gov schedutil")}}, absentOn("-2"),
        noSpace("-28", "Failed to write governer schedutil")),
    Row(OP(enableAudioPerf, "10"), ASSIST "audio/enable", "0", "1", kAudio,
        {"-1", {Error("Failed to enableAudioPerf {node} with 10, error:" + kNoEntry)}}, kAudio),
};
INSTANTIATE_OPERATION_ROWS(SchedAssist, kRows);

using SchedAssistTest = NodeRootTest;

TEST_F(SchedAssistTest, AppPrefixPicksTheTgidNodeWhereverItExists) {
    constexpr char kTgid[] = "/proc/sys/kernel/sched_impt_tgid";
    constexpr char kTask[] = ASSIST "sched_impt_task";
    // Used on a newer kernel too, while it is there.
    writeNode(kTgid, "0");
    writeNode(kTask, "0");
    auto service = quietService("6.1.25");
    service->setSchedAssistImptTask("au 4321");
    service->setSchedAssistImptTask("au");
    EXPECT_EQ(readNode(kTgid), "4321");
    EXPECT_EQ(readNode(kTask), "au");
    // Looked for at each call, not once.
    std::filesystem::remove(path(kTgid));
    service->setSchedAssistImptTask("au 4322");
    EXPECT_EQ(readNode(kTask), "au 4322");
    EXPECT_TRUE(logs().empty());
    makeRefusingNode(kTgid);
    // Too long for the stream's buffer, so the put itself reaches the node.
    quietService("5.4.233")->setSchedAssistImptTask("au " + std::string(9000, '1'));
    EXPECT_EQ(logs(), std::vector<LogLine>{Error("zrkFailed to write " + std::string(kTgid) +
                                                 " (28): No space left on device")});
}

// In-process calls carry this process's uid, which must be no app's.
int32_t uxWrite(Performance& service) {
    EXPECT_FALSE(getuid() >= 10000 && getuid() <= 19999);
    int32_t result = 99;
    EXPECT_TRUE(service.writeUxState("2", "1000", "1001", &result).isOk());
    return result;
}

TEST_F(SchedAssistTest, UxSettingGatesCallersFromKernel6OnceRead) {
    gUxSettingSwitch = -1;
    writeNode(kUxTask, "0");
    writeNode(kSetting, "-1");
    EXPECT_EQ(uxWrite(*quietService("5.15.78")), 0);
    EXPECT_EQ(readNode(kUxTask), "p 1001 2");
    writeNode(kUxTask, "0");
    auto service = quietService("6.1.25");
    // -1 is on, and makes every call ask again.
    EXPECT_EQ(uxWrite(*service), 99);
    EXPECT_EQ(readNode(kUxTask), "0");
    EXPECT_TRUE(logs().empty());
    writeNode(kSetting, "0");
    EXPECT_EQ(uxWrite(*service), 0);
    writeNode(kSetting, "1");
    EXPECT_EQ(uxWrite(*service), 0);
    EXPECT_EQ(readNode(kUxTask), "p 1001 2");
    // Unreadable counts as on.
    gUxSettingSwitch = -1;
    std::filesystem::remove(path(kSetting));
    EXPECT_EQ(uxWrite(*service), 99);
}

TEST_F(SchedAssistTest, WakerRepliesBecomeRecordsInKernelOrder) {
    const std::string two = "1;2;x;4;5;6;7;8\n9;10;y;12;13;14;15;16\n";
    // The kernel's reply, the count asked for and the answer.
    const std::tuple<std::string, int32_t, const char*> kCases[] = {
        {two, 1, "1 1,2,6,5,7,4,8"},
        {"1;2;x;4\n5;6;7;8;9;10;11;12;13", 2, "1 1,2,-1,-1,-1,4,-1 5,6,10,9,11,8,12"},
        {two, 0, "1"},
        {"NULL", 3, kNoWaker},
        {"", 3, kNoWaker}};
    auto service = quietService("5.10.66");
    for (const auto& [reply, count, result] : kCases) {
        writeNode(kWakerInfo, reply);
        EXPECT_EQ(call(&P::getWakeThreadsAffinityOrdered, "", count)(*service), result) << reply;
    }
}

TEST_F(SchedAssistTest, GovernorStopsAtTheFirstFailingPolicy) {
    const std::string policy0 = "/sys/devices/system/cpu/cpufreq/policy0/scaling_governor";
    const std::string policy4 = "/sys/devices/system/cpu/cpufreq/policy4/scaling_governor";
    writeNode(policy0, "walt");
    writeNode(policy4, "walt");
    auto governor = [service = quietService("5.10.66")](std::vector<int32_t> policies) {
        return call(&P::setFreqGoverner, "schedutil", policies)(*service);
    };
    EXPECT_EQ(governor({0, -1, 9, 4}), std::to_string(-ENOENT));
    EXPECT_EQ(readNode(policy0), "schedutil");
    EXPECT_EQ(readNode(policy4), "walt");
    EXPECT_EQ(governor({}), "0");
}

TEST_F(SchedAssistTest, ConcurrentWakerExchangesStayWhole) {
    writeNode(kRtInfo, "0");
    writeNode(kWakerInfo, "0000;2;x;4;5;6;7;8\n");
    auto service = quietService("5.10.66");
    std::vector<std::thread> threads;
    for (int32_t id = 1000; id < 1004; ++id) {
        // Equal widths, so each write covers the one before and a read-back shows the last.
        threads.emplace_back([&service, id] {
            const std::string pid = std::to_string(id);
            for (int i = 0; i < 1000; ++i) {
                ASSERT_EQ(call(&P::setWakeSeedThread, pid, false, true)(*service), pid);
                ASSERT_EQ(call(&P::getWakeThreadsAffinityOrdered, pid, 1)(*service),
                          "1 " + pid + ",2,6,5,7,4,8");
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
