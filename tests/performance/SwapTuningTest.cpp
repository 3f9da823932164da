// Nandswap and hybrid-swap tuning.

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using P = Performance;
using testing::call, testing::Debug, testing::Error, testing::OperationRow, testing::Outcome,
    testing::row, testing::unreached;

const LogLine kNandOpen = Error("nandswap: open {node} fail");
Outcome noProc(const char* result, const std::string& proc) {
    return {result, {Error("nandswap: no such proc " + proc)}};
}

// clang-format off
const OperationRow kNandswapRows[] = {
    row("read_life_protect", call(&P::readNandswapProc, "life_protect"))
        .at("/proc/nandswap_vnd/life_protect").holding("a 1\nb")
        .whenPresent({"a 1\nb\n", {}}).whenAbsent({"null, open proc fail", {kNandOpen}}),
    unreached("read_parent_path_refused", call(&P::readNandswapProc, "../fn_enable"),
              "/proc/nandswap_vnd/fn_enable", noProc("null, no such proc", "../fn_enable")),
    // Read-write without truncation: the value and its newline overwrite the start.
    row("write_fn_enable", call(&P::writeNandswapProc, "fn_enable", "1"))
        .at("/proc/nandswap_vnd/fn_enable").holding("stale\n").leaves("1\nale\n")
        .whenPresent({"0", {}}).whenAbsent({"-22", {kNandOpen}}).whenRefused({"0", {}}),
    unreached("write_life_protect_refused", call(&P::writeNandswapProc, "life_protect", "1"),
              "/proc/nandswap_vnd/life_protect", noProc("-3", "life_protect")),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(Nandswap, kNandswapRows);

const std::string kLong(5000, 'z');
const LogLine kOpenFail = Error("open file {node} failed, No such file or directory");
constexpr char kScale[] = "/proc/sys/vm/watermark_scale_factor";
Outcome invalid(const std::string& result, int action) {
    const std::string prefix = "action " + std::to_string(action);
    return {result, {Error(prefix + " is invalid"), Error(prefix + ", can not find file node")}};
}
Outcome mm(const char* result, const char* op, int action) {
    return {result, {Debug(op + std::string("MMParameters:") + std::to_string(action) + "\n")}};
}
const Outcome kNoFileNode = {"-1", {Error("action 0, can not find file node")}};

// clang-format off
const OperationRow kHybridswapRows[] = {
    row("zram_write_0", call(&P::hybridswap_zram_para_write, 0, "1"))
        .at("/sys/block/zram0/hybridswap_enable").holding("0\n").leaves("1\n")
        .whenPresent({"0", {}}).whenAbsent({"-1", {kOpenFail}})
        .whenRefused({"-1", {Error("write file {node} val 1 failed, No space left on device")}}),
    unreached("zram_write_7_refused", call(&P::hybridswap_zram_para_write, 7, "1"),
              "/sys/block/zram0/hybridswap_vmstat", {"-1", {Error("action 7 can not be write")}}),
    row("zram_read_bounded", call(&P::hybridswap_zram_para_read, 9))
        .at("/sys/block/zram0/hybridswap_report").holding(kLong)
        .whenPresent({kLong.substr(0, 4095), {}}).whenAbsent({"Invalid action 9!!", {kOpenFail}}),
    unreached("zram_write_31", call(&P::hybridswap_zram_para_write, 31, "1"),
              "/dev/memcg/memory.psi", invalid("-1", 31)),
    // Above the tables: the vm watermark scale factor, written and read whole.
    row("zram_write_65537", call(&P::hybridswap_zram_para_write, 65537, "150")).at(kScale)
        .holding("10\n").leaves("150").whenPresent(mm("0", "write", 65537))
        .whenAbsent(mm("-1", "write", 65537)),
    row("zram_read_65537", call(&P::hybridswap_zram_para_read, 65537)).at(kScale).holding("10\n")
        .whenPresent(mm("10\n", "read", 65537)).whenAbsent(mm("-ERROR", "read", 65537)),
    unreached("zram_write_65538", call(&P::hybridswap_zram_para_write, 65538, "1"), kScale,
              mm("-22", "write", 65538)),
    unreached("zram_read_65538", call(&P::hybridswap_zram_para_read, 65538), kScale,
              mm("-ERROR", "read", 65538)),
    // Application uid 10123 of user 10.
    row("memcg_write_app_uid", call(&P::hybridswap_memcg_para_write, 2, "1010123", "x"))
        .at("/dev/memcg/apps/uid_1010123/memory.app_uid").leaves("x")
        .whenPresent({"0", {}}).whenAbsent({"-1", {kOpenFail}}),
    row(OP(hybridswap_memcg_para_read, 1, "/")).at("/dev/memcg/memory.swap_stat")
        .holding("swap 3\n").whenPresent({"swap 3\n", {}})
        .whenAbsent({"Invalid action 1 memcg /!!", {kOpenFail}}),
    unreached("memcg_write_system_uid", call(&P::hybridswap_memcg_para_write, 0, "1000", "v"),
              "/dev/memcg/memory.name", kNoFileNode),
    unreached("memcg_read_9", call(&P::hybridswap_memcg_para_read, 9, "apps"),
              "/dev/memcg/apps/memory.name", invalid("Invalid action 9 memcg apps!!", 9)),
    unreached("memcg_write_empty_cgroup", call(&P::hybridswap_memcg_para_write, 0, "", "v"),
              "/dev/memcg/memory.name", {"-1", {Error("cgroup is empty"), kNoFileNode.logs[0]}}),
    // A cgroup that climbs out of its directory names no node, though its number reads as an app's.
    unreached("memcg_write_climbing", call(&P::hybridswap_memcg_para_write, 0, "10123/../../../x",
              "v"), "/dev/x/memory.name", {"-1", {Error("open file /dev/memcg/apps/./memory.name "
              "failed, Invalid argument")}}),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(Hybridswap, kHybridswapRows);

TEST_F(NodeRootTest, SwapTuningUnifiedHierarchyGroupsLiveUnderSysFsCgroup) {
    writeNode("/sys/fs/cgroup/memory.name", "root\n");
    writeNode("/sys/fs/cgroup/uid_10123/memory.name", "app\n");
    const SwapTuning swap(nodes(), "/sys/fs/cgroup/");
    EXPECT_EQ(swap.hybridswap_memcg_para_read(0, "/"), "root\n");
    EXPECT_EQ(swap.hybridswap_memcg_para_read(0, "10123"), "app\n");
    EXPECT_EQ(swap.hybridswap_memcg_para_read(0, "apps"), "Invalid action 0 memcg apps!!");
    EXPECT_EQ(logs(), std::vector<LogLine>{Error("action 0, can not find file node")});
}

TEST_F(NodeRootTest, SwapTuningCgroupThatIsNotANumberEndsTheProcess) {
    EXPECT_DEATH(SwapTuning(nodes(), "/dev/memcg/").hybridswap_memcg_para_read(0, "uid_x"), "");
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
