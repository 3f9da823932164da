// UX state and waker identification: the ux_state and waker nodes, the UX-setting gate, and
// waker replies parsed into records.

#include <android-base/stringprintf.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// "status f1,...,f7 f1,...,f7": a waker answer as one comparable text.
std::string resultText(const TaskWakeInfo& info) {
    std::string text = std::to_string(info.status);
    for (const ThreadInfo& t : info.threads)
        text += android::base::StringPrintf(" %d,%d,%d,%d,%d,%d,%d", t.field1, t.field2, t.field3,
                                            t.field4, t.field5, t.field6, t.field7);
    return text;
}

using testing::Error, testing::Kernels, testing::row, testing::unreached;

constexpr char kUxTask[] = "/proc/vyren_scheduler/sched_assist/ux_task";
constexpr char kSetting[] = "/proc/vyren_scheduler/sched_assist/disable_setting";
constexpr char kRtInfo[] = "/proc/waker_identify/rt_info";
constexpr char kWakerInfo[] = "/proc/waker_identify/waker_info";
constexpr char kNoWaker[] = "-1 -1,-1,-1,-1,-1,-1,-1";
const std::string kFull = " (28): No space left on device";
const LogLine kNoNode =
    Error("Failed to open {node} (2): No such file or directory, Linux version {version}");
const LogLine kUnsupported = Error("Linux version not support, Linux version {version}");

// clang-format off
const testing::OperationRow kRows[] = {
    row(OP(writeUxState, "2", "1000", "1001")).on(Kernels::kOlder).holding("0").leaves("2")
        .at("/proc/1000/task/1001/ux_state").whenPresent({"0", {}}).whenAbsent({"-2", {kNoNode}})
        .whenRefused({"-28", {Error("Failed to write pid 1001 with ux_state 2" + kFull)}}),
    // A tid that is not one path component names no node; the node it would reach is untouched.
    testing::unreached("writeUxState_climbing", testing::call(&Performance::writeUxState, "2",
                       "1000", "../../../x"), "/x/ux_state", {"-22", {Error("Failed to open "
                       "/proc/1000/task/./ux_state (22): Invalid argument, Linux version "
                       "{version}")}}, Kernels::kOlder),
    row(OP(setWakeSeedThread, "1234", true, false)).at(kRtInfo).on(Kernels::kNewer).holding("0")
        .leaves("1234;0;1").whenAbsent({"-2", {kNoNode}})
        .whenPresent({"1234", {Error("[WAKER_IDENTIFY] pid message 1234;0;1 is writen to proc")}})
        .whenRefused({"-28", {Error("Failed to set seed tid 1234" + kFull)}}),
    // Asked for one record of a two-line reply.
    row(OP(getWakeThreadsAffinityOrdered, "1234", 1)).at(kWakerInfo).on(Kernels::kNewer)
        .holding("0000;2;x;4;5;6;7;8\n9\n").leaves("1234;2;x;4;5;6;7;8\n9\n")
        .whenPresent({"1 1234,2,6,5,7,4,8", {}}).whenAbsent({kNoWaker, {kNoNode}})
        .whenRefused({kNoWaker, {Error("Failed to write handle 1234")}}),
    unreached("older_" OP(setWakeSeedThread, "1234", true, false), kRtInfo, {"-1", {kUnsupported}},
              Kernels::kOlder),
    unreached("older_" OP(getWakeThreadsAffinityOrdered, "1234", 3), kWakerInfo,
              {kNoWaker, {kUnsupported}}, Kernels::kOlder),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(UxWaker, kRows);

TEST_F(NodeRootTest, UxSettingGatesCallersFromKernel6OnceRead) {
    // In-process calls carry this process's uid, which must be no app's.
    ASSERT_FALSE(getuid() >= 10000 && getuid() <= 19999);
    writeNode(kSetting, "-1");
    writeNode(kUxTask, "0");
    UxWaker ux(nodes({6, 1, 25}), false);
    // -1 is on, and makes every call ask again. A refused caller is not permitted, silently.
    EXPECT_EQ(ux.writeUxState("1", "1000", "1001"), -EPERM);
    writeNode(kSetting, "0");
    EXPECT_EQ(ux.writeUxState("3", "1000", "1001"), 0);
    EXPECT_TRUE(logs().empty());
    // Read once, unless it was -1; unreadable counts as on.
    std::filesystem::remove(path(kSetting));
    EXPECT_EQ(ux.writeUxState("4", "1000", "1001"), 0);
    EXPECT_EQ(UxWaker(nodes({6, 1, 25}), false).writeUxState("5", "1000", "1001"), -EPERM);
    EXPECT_EQ(readNode(kUxTask), "p 1001 4");
}

TEST_F(NodeRootTest, WakerRepliesBecomeRecordsInKernelOrder) {
    // The kernel's reply, the count asked for and the answer: a short reply is not padded.
    // clang-format off
    const std::tuple<std::string, int32_t, const char*> kCases[] = {
        {"1;2;x;4\n5;6;7;8;9;10;11;12;13", 3, "1 1,2,-1,-1,-1,4,-1 5,6,10,9,11,8,12"},
        {"1;2;x;4;5;6;7;8", 0, "1"}, {"NULL", 3, kNoWaker}, {"", 3, kNoWaker}};
    // clang-format on
    UxWaker ux(nodes({5, 10, 66}), false);
    for (const auto& [reply, count, result] : kCases) {
        writeNode(kWakerInfo, reply);
        EXPECT_EQ(resultText(ux.getWakeThreadsAffinityOrdered("", count)), result) << reply;
    }
}

TEST_F(NodeRootTest, ConcurrentWakerExchangesStayWhole) {
    writeNode(kRtInfo, "0");
    writeNode(kWakerInfo, "0000;2;x;4;5;6;7;8\n");
    UxWaker ux(nodes({5, 10, 66}), false);
    // Equal widths, so each write covers the one before and a read-back shows the last.
    const auto exchanges = [&ux](std::string pid) {
        for (int i = 0; i < 1000; ++i) {
            ASSERT_EQ(ux.setWakeSeedThread(pid, false, true), std::stoi(pid));
            ASSERT_EQ(ux.getWakeThreadsAffinityOrdered(pid, 1).threads.at(0).field1, std::stoi(pid));
        }
    };
    std::thread a(exchanges, "1000"), b(exchanges, "1001"), c(exchanges, "1002");
    a.join(), b.join(), c.join();
}

}  // namespace aidl::vendor::vyren::hardware::performance
