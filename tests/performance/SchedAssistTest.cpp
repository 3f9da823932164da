// Scheduler-assist and tpd writers, UX state, waker identification, governor and audio.

#include <android-base/stringprintf.h>
#include <unistd.h>

#include <deque>
#include <filesystem>
#include <thread>

#include "OperationNodes.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {

// "status f1,...,f7 f1,...,f7": a waker answer as one comparable text.
std::string resultText(const TaskWakeInfo& info) {
    std::string text = std::to_string(info.status);
    for (const ThreadInfo& t : info.threads) {
        text += android::base::StringPrintf(" %d,%d,%d,%d,%d,%d,%d", t.field1, t.field2, t.field3,
                                            t.field4, t.field5, t.field6, t.field7);
    }
    return text;
}

namespace {

using P = Performance;
using testing::call, testing::Call, testing::Debug, testing::Error, testing::OperationRow,
    testing::Outcome;
constexpr auto kAll = testing::Kernels::kAll, kOlder = testing::Kernels::kOlder,
               kNewer = testing::Kernels::kNewer;

constexpr char kUxTask[] = "/proc/vyren_scheduler/sched_assist/ux_task";
constexpr char kSetting[] = "/proc/vyren_scheduler/sched_assist/disable_setting";
constexpr char kRtInfo[] = "/proc/waker_identify/rt_info";
constexpr char kWakerInfo[] = "/proc/waker_identify/waker_info";
constexpr char kTpdEnable[] = "/sys/module/tpd/parameters/tpd_enable";
constexpr char kAssist[] = "/proc/vyren_scheduler/sched_assist/";
constexpr char kNoWaker[] = "-1 -1,-1,-1,-1,-1,-1,-1";
const std::string kAbsent = "{node} (2): No such file or directory";
const std::string kOnKernel = ", Linux version {version}";
const std::string kNoSpace = " (28): No space left on device";
const LogLine kUnsupported = Error("Linux version not support" + kOnKernel);
const Outcome kWriteFull = {"", {Error("Failed to write {node}" + kNoSpace)}};
const Outcome kOpenFull = {"", {Error("Failed to open {node}" + kNoSpace)}};
const Outcome kOpenAbsent = {"", {Error("Failed to open " + kAbsent)}};
Outcome absentOn(const char* result) {
    return {result, {Error("Failed to open " + kAbsent + kOnKernel)}};
}
Outcome noSpace(const char* result, const std::string& what) {
    return {result, {Error(what + kNoSpace)}};
}

OperationRow row(std::string name, Call call, NodePair node, testing::Kernels kernels,
                 std::string content, std::optional<std::string> written, Outcome present,
                 Outcome absent, std::optional<Outcome> refused = std::nullopt) {
    return {name, call, node, kernels, content, written, present, absent, refused};
}
NodePair both(const char* node) {
    return {node, node};
}
// A sched_assist node, on older kernels at the given path or at the same one.
NodePair assist(const char* node, const char* older = nullptr) {
    static std::deque<std::string> paths;  // the rows point into it
    const char* newer = paths.emplace_back(kAssist + std::string(node)).c_str();
    return {older != nullptr ? older : newer, newer};
}
// On an older kernel, which has no waker identification.
OperationRow unsupported(std::string name, Call call, const char* node, const char* result) {
    const Outcome outcome = {result, {kUnsupported}};
    return row(name, call, both(node), kOlder, "0", std::nullopt, outcome, outcome);
}
// A tpd switch or parameter: a refused write goes unnoticed.
OperationRow tpd(std::string name, Call call, NodePair node, testing::Kernels kernels,
                 std::string content, std::string written) {
    return row(name, call, node, kernels, content, written, {"0", {}}, absentOn("-1"),
               Outcome{"0", {}});
}

const OperationRow kRows[] = {
    row("setSlideboost", call(&P::setSlideboost, "1"),
        {"/proc/sys/kernel/slide_boost_enabled", "/proc/sys/walt/slide_boost_enabled"}, kAll, "0",
        "1", {"", {}}, absentOn(""), kWriteFull),
    row("setSchedAssistScene", call(&P::setSchedAssistScene, "2"),
        assist("sched_assist_scene", "/proc/sys/kernel/sched_assist_scene"), kAll, "0", "2",
        {"", {}}, absentOn(""), kWriteFull),
    row("setFrameRate", call(&P::setFrameRate, "90"),
        {"/proc/sys/kernel/frame_rate", "/proc/sys/walt/frame_rate"}, kAll, "60", "90", {"", {}},
        kOpenAbsent, kOpenFull),
    row("setImFlag", call(&P::setImFlag, "1234", "1"), assist("im_flag"), kAll, "0", "p 1234 1",
        {"", {Debug("setImFlag sucess,pid=1234,im_flag=1")}}, kOpenAbsent,
        Outcome{"", {kOpenFull.logs[0], Debug("setImFlag sucess,pid=1234,im_flag=1")}}),
    row("setFgUids", call(&P::setFgUids, "10150"), both("/proc/fg_info/fg_uids"), kAll, "10123",
        "10150", {"", {}}, kOpenAbsent, kOpenFull),
    row("setSchedAssistImptTask", call(&P::setSchedAssistImptTask, "au 4321"),
        assist("sched_impt_task"), kAll, "stale", "au 4321", {"", {}}, absentOn(""),
        Outcome{"", {}}),
    tpd("setTpdSerialParams", call(&P::setTpdSerialParams, "1 2"),
        assist("tpd_cmds", "/sys/module/tpd/parameters/tpd_cmds"), kAll, "stale", "1 2"),
    tpd("setTpdID", call(&P::setTpdID, "2041"),
        assist("tpd_id", "/sys/module/tpd/parameters/tpd_id"), kAll, "stale", "2041"),
    tpd("enableTaskPlacementDecision", call(&P::enableTaskPlacementDecision), both(kTpdEnable),
        kOlder, "0", "1"),
    tpd("disableTaskPlacementDecision", call(&P::disableTaskPlacementDecision), both(kTpdEnable),
        kOlder, "1", "0"),
    row("enableTaskPlacementDecision_noSwitch", call(&P::enableTaskPlacementDecision),
        both(kTpdEnable), kNewer, "0", std::nullopt, {"-1", {}}, {"-1", {}}),
    row("writeUxState", call(&P::writeUxState, "2", "1000", "1001"),
        both("/proc/1000/task/1001/ux_state"), kOlder, "0", "2", {"0", {}}, absentOn("-2"),
        noSpace("-28", "Failed to write pid 1001 with ux_state 2")),
    row("setWakeSeedThread", call(&P::setWakeSeedThread, "1234", true, false), both(kRtInfo),
        kNewer, "0", "1234;0;1",
        {"1234", {Error("[WAKER_IDENTIFY] pid message 1234;0;1 is writen to proc")}},
        absentOn("-2"), noSpace("-28", "Failed to set seed tid 1234")),
    unsupported("setWakeSeedThread_oldKernel", call(&P::setWakeSeedThread, "1234", true, false),
                kRtInfo, "-1"),
    row("getWakeThreadsAffinityOrdered", call(&P::getWakeThreadsAffinityOrdered, "1234", 3),
        both(kWakerInfo), kNewer, "0000;2;x;4;5;6;7;8\n", "1234;2;x;4;5;6;7;8\n",
        {"1 1234,2,6,5,7,4,8", {}}, absentOn(kNoWaker),
        Outcome{kNoWaker, {Error("Failed to write handle 1234")}}),
    unsupported("getWakeThreadsAffinityOrdered_oldKernel",
                call(&P::getWakeThreadsAffinityOrdered, "1234", 3), kWakerInfo, kNoWaker),
    row("setFreqGoverner", call(&P::setFreqGoverner, "schedutil", std::vector<int32_t>{4}),
        both("/sys/devices/system/cpu/cpufreq/policy4/scaling_governor"), kAll, "walt", "schedutil",
        {"0", {Debug("setFreqGoverner: write path {node} with gov schedutil")}}, absentOn("-2"),
        noSpace("-28", "Failed to write governer schedutil")),
    row("enableAudioPerf", call(&P::enableAudioPerf, "10"), assist("audio/enable"), kAll, "0", "1",
        {"0", {Debug("enableAudioPerf with 10")}},
        {"-1",
         {Error(
             "Failed to enableAudioPerf {node} with 10, error: (2): No such file or directory")}},
        Outcome{"0", {Debug("enableAudioPerf with 10")}}),
};
INSTANTIATE_OPERATION_ROWS(SchedAssist, kRows);

class SchedAssistTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        gUxSettingSwitch = -1;
    }
    std::shared_ptr<Performance> serviceOn(const std::string& release) {
        auto service = makeService(release);
        clearLogs();
        return service;
    }
};

TEST_F(SchedAssistTest, AppPrefixPicksTheTgidNodeWhereverItExists) {
    constexpr char kTgid[] = "/proc/sys/kernel/sched_impt_tgid";
    constexpr char kTask[] = "/proc/vyren_scheduler/sched_assist/sched_impt_task";
    for (const char* release : {"4.19.157", "6.1.25"}) {
        writeNode(kTgid, "0");
        writeNode(kTask, "0");
        auto service = serviceOn(release);
        service->setSchedAssistImptTask("au 4321");
        service->setSchedAssistImptTask("au");
        EXPECT_EQ(readNode(kTgid), "4321");
        EXPECT_EQ(readNode(kTask), "au");
        std::filesystem::remove(path(kTgid));
        service->setSchedAssistImptTask("au 4322");
        EXPECT_EQ(readNode(kTask), "au 4322");
        EXPECT_TRUE(logs().empty());
    }
    makeRefusingNode(kTgid);
    // Too long for the stream's buffer, so the put itself reaches the node.
    serviceOn("5.4.233")->setSchedAssistImptTask("au " + std::string(9000, '1'));
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
    writeNode(kUxTask, "0");
    writeNode(kSetting, "-1");
    EXPECT_EQ(uxWrite(*serviceOn("5.15.78")), 0);
    EXPECT_EQ(readNode(kUxTask), "p 1001 2");
    writeNode(kUxTask, "0");
    auto service = serviceOn("6.1.25");
    // -1 is on, and makes every call ask again.
    EXPECT_EQ(uxWrite(*service), 99);
    EXPECT_EQ(readNode(kUxTask), "0");
    EXPECT_TRUE(logs().empty());
    writeNode(kSetting, "0");
    EXPECT_EQ(uxWrite(*service), 0);
    writeNode(kSetting, "1");
    EXPECT_EQ(uxWrite(*service), 0);
    EXPECT_EQ(readNode(kUxTask), "p 1001 2");
    // Unreadable counts as on, for good.
    gUxSettingSwitch = -1;
    std::filesystem::remove(path(kSetting));
    EXPECT_EQ(uxWrite(*service), 99);
    writeNode(kSetting, "0");
    EXPECT_EQ(uxWrite(*service), 99);
}

TEST_F(SchedAssistTest, WakerRepliesBecomeRecordsInKernelOrder) {
    const struct {
        const char* reply;
        int32_t count;
        const char* result;
    } kCases[] = {
        {"1;2;x;4;5;6;7;8\n9;10;y;12;13;14;15;16\n", 3, "1 1,2,6,5,7,4,8 9,10,14,13,15,12,16"},
        {"1;2;x;4;5;6;7;8\n9;10;y;12;13;14;15;16\n", 1, "1 1,2,6,5,7,4,8"},
        {"1;2;x;4\n5;6;7;8;9;10;11;12;13", 2, "1 1,2,-1,-1,-1,4,-1 5,6,10,9,11,8,12"},
        {"1;2;x;4;5;6;7;8\n", 0, "1"},
        {"1;2;x;4;5;6;7;8\n", -1, "1"},
        {"NULL", 3, kNoWaker},
        {"", 3, kNoWaker},
    };
    auto service = serviceOn("5.10.66");
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.reply);
        writeNode(kWakerInfo, c.reply);
        TaskWakeInfo info;
        ASSERT_TRUE(service->getWakeThreadsAffinityOrdered("", c.count, &info).isOk());
        EXPECT_EQ(resultText(info), c.result);
    }
}

TEST_F(SchedAssistTest, GovernorStopsAtTheFirstFailingPolicy) {
    const auto node = [](int p) {
        return "/sys/devices/system/cpu/cpufreq/policy" + std::to_string(p) + "/scaling_governor";
    };
    writeNode(node(0), "walt");
    writeNode(node(4), "walt");
    auto service = serviceOn("5.10.66");
    int32_t result = 99;
    ASSERT_TRUE(service->setFreqGoverner("schedutil", {0, -1, 9, 4}, &result).isOk());
    EXPECT_EQ(result, -ENOENT);
    EXPECT_EQ(readNode(node(0)), "schedutil");
    EXPECT_EQ(readNode(node(4)), "walt");
    ASSERT_TRUE(service->setFreqGoverner("schedutil", {}, &result).isOk());
    EXPECT_EQ(result, 0);
}

TEST_F(SchedAssistTest, ConcurrentWakerExchangesStayWhole) {
    writeNode(kRtInfo, "0");
    writeNode(kWakerInfo, "0000;2;x;4;5;6;7;8\n");
    auto service = serviceOn("5.10.66");
    std::vector<std::thread> threads;
    for (int32_t id = 1000; id < 1004; ++id) {
        // Equal widths, so each write covers the one before and a read-back shows the last.
        threads.emplace_back([&service, id] {
            for (int i = 0; i < 1000; ++i) {
                int32_t seed = 0;
                TaskWakeInfo info;
                service->setWakeSeedThread(std::to_string(id), false, true, &seed);
                service->getWakeThreadsAffinityOrdered(std::to_string(id), 1, &info);
                ASSERT_EQ(seed, id);
                ASSERT_EQ(resultText(info), "1 " + std::to_string(id) + ",2,6,5,7,4,8");
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
