// Scheduler-assist and tpd writers, each on the node of its kernel's tree.

#include <filesystem>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Call, testing::Error, testing::OperationRow, testing::Outcome, testing::same;

const std::string kAbsent = " (2): No such file or directory";
const std::string kFull = " (28): No space left on device";
const Outcome kDone = {"", {}}, kZero = {"0", {}};
const Outcome kOpenAbsent = {"", {Error("Failed to open {node}" + kAbsent)}};
const Outcome kOpenFull = {"", {Error("Failed to open {node}" + kFull)}};
const Outcome kWriteFull = {"", {Error("Failed to write {node}" + kFull)}};
// "sucess" is the service's own spelling.
const Outcome kImFlag = {"", {testing::Debug("setImFlag sucess,pid=1234,im_flag=1")}};
const Outcome kAbsentOnKernel = {
    "", {Error("Failed to open {node}" + kAbsent + ", Linux version {version}")}};
// The text written over before, leaving after; refused is the outcome with the node refusing it.
OperationRow write(std::string name, Call call, NodePair node, const char* before,
                   const char* after, Outcome refused = kWriteFull,
                   Outcome absent = kAbsentOnKernel, Outcome present = kDone) {
    OperationRow r = testing::row(name, call).at(node).holding(before).leaves(after);
    return r.whenPresent(present).whenAbsent(absent).whenRefused(refused);
}
// A tpd parameter: 0 once opened, as a refused stream write goes unnoticed.
OperationRow tpd(std::string name, Call call, NodePair node, const char* after) {
    return write(name, call, node, "stale", after, kZero, {"-1", kAbsentOnKernel.logs}, kZero);
}
constexpr NodePair kTpdEnable = same("/sys/module/tpd/parameters/tpd_enable");

// Nodes are {older tree, newer tree}.
// clang-format off
const OperationRow kRows[] = {
    write(OP(setSlideboost, "1"), {"/proc/sys/kernel/slide_boost_enabled",
          "/proc/sys/walt/slide_boost_enabled"}, "0", "1"),
    write(OP(setSchedAssistScene, "2"), {"/proc/sys/kernel/sched_assist_scene",
          "/proc/vyren_scheduler/sched_assist/sched_assist_scene"}, "0", "2"),
    write(OP(setFrameRate, "90"), {"/proc/sys/kernel/frame_rate", "/proc/sys/walt/frame_rate"},
          "60", "90", kOpenFull, kOpenAbsent),
    write(OP(setImFlag, "1234", "1"), same("/proc/vyren_scheduler/sched_assist/im_flag"), "0",
          "p 1234 1", {"", {kOpenFull.logs[0], kImFlag.logs[0]}}, kOpenAbsent, kImFlag),
    write(OP(setFgUids, "10150"), same("/proc/fg_info/fg_uids"), "10123", "10150", kOpenFull,
          kOpenAbsent),
    // A refused stream write goes unnoticed.
    write(OP(setSchedAssistImptTask, "au 4321"),
          same("/proc/vyren_scheduler/sched_assist/sched_impt_task"), "0", "au 4321", kDone),
    tpd(OP(setTpdSerialParams, "1 2"), {"/sys/module/tpd/parameters/tpd_cmds",
        "/proc/vyren_scheduler/sched_assist/tpd_cmds"}, "1 2"),
    tpd(OP(setTpdID, "2041"), {"/sys/module/tpd/parameters/tpd_id",
        "/proc/vyren_scheduler/sched_assist/tpd_id"}, "2041"),
    tpd(OP(enableTaskPlacementDecision), kTpdEnable, "1").on(testing::Kernels::kOlder),
    tpd(OP(disableTaskPlacementDecision), kTpdEnable, "0").on(testing::Kernels::kOlder),
    // Newer kernels have no tpd switch.
    testing::unreached("newer_" OP(enableTaskPlacementDecision), kTpdEnable.older, {"-1", {}},
                       testing::Kernels::kNewer),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(SchedAssist, kRows);

TEST_F(NodeRootTest, ImptTaskAppPrefixPicksTheTgidNodeWhereverItExists) {
    constexpr char kTgid[] = "/proc/sys/kernel/sched_impt_tgid";
    constexpr char kTask[] = "/proc/vyren_scheduler/sched_assist/sched_impt_task";
    // Used on a newer kernel too, while it is there.
    writeNode(kTgid, "0");
    writeNode(kTask, "0");
    SchedAssist assist(nodes({6, 1, 25}));
    assist.setSchedAssistImptTask("au 4321");
    assist.setSchedAssistImptTask("au");
    EXPECT_EQ(readNode(kTgid), "4321");
    EXPECT_EQ(readNode(kTask), "au");
    // Looked for at each call, not once.
    std::filesystem::remove(path(kTgid));
    assist.setSchedAssistImptTask("au 4322");
    EXPECT_EQ(readNode(kTask), "au 4322");
    makeRefusingNode(kTgid);
    // Too long for the stream's buffer, so the put itself reaches the node. Nothing else logged;
    // "zrk" is the service's own tag.
    assist.setSchedAssistImptTask("au " + std::string(9000, '1'));
    EXPECT_EQ(logs(), std::vector<LogLine>{Error("zrkFailed to write " + (kTgid + kFull))});
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
