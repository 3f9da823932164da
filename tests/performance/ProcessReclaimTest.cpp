// Process reclaim, which older kernels have alone, the multi-thread switch, and the kernel and
// swap back-end versions.

#include "OperationNodes.h"
#include "ProcessReclaim.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using namespace testing;

constexpr NodePair kReclaim = same("/proc/vyren_healthinfo/process_reclaim_enable");
constexpr NodePair kThreads = same("/proc/sys/kernel/cpu_multi_thread");
constexpr char kNoOpen[] = "Failed to open {node} (2): No such file or directory";
// Calls that answer without touching the reclaim node.
constexpr char kProcessReclaim[] = "/proc/process_reclaim";
constexpr char kHybridSwap[] = "/sys/block/zram0/hybridswap_enable";
const Outcome kZero = {"0", {}}, kMinusOne = {"-1", {}}, kTwo = {"2", {}};
constexpr char kVersion[] = "/proc/version", kLine[] = "Linux version 5.15.74-g1\n";
const Outcome k515 = {"515", {}}, kOwnKernel = {"{kernel}", {}};

const OperationRow kRows[] = {
    switchRow(OP(enableProcessReclaim), kReclaim, "enable ProcessReclaim", "", Kernels::kOlder),
    switchRow(OP(disableProcessReclaim), kReclaim, "disable ProcessReclaim", "", Kernels::kOlder),
    putRow(OP(setProcessReclaim, kPut), same(kProcessReclaim)).on(Kernels::kOlder),
    unreached("newer_" OP(enableProcessReclaim), kProcessReclaim, kZero, Kernels::kNewer),
    unreached("newer_" OP(disableProcessReclaim), kProcessReclaim, kZero, Kernels::kNewer),
    unreached("newer_" OP(setProcessReclaim, "1"), kProcessReclaim, kZero, Kernels::kNewer),
    unreached(OP(perProcessMemReclaim, 1, 2, 3), kProcessReclaim, kMinusOne),
    unreached(OP(perProcessMemReadahead, 1, 2, 3), kProcessReclaim, kMinusOne),
    switchRow(OP(enableMultiThreadOptimize), kThreads, "enable multi thread optimize", kNoOpen),
    switchRow(OP(disableMultiThreadOptimize), kThreads, "disable multi thread optimize", kNoOpen),
    // The version line is read once, at construction: without it, the kernel's own stands.
    row(OP(getKernelVersion)).at(kVersion).holding(kLine).whenPresent(k515).whenAbsent(kOwnKernel),
    row(OP(getPswapVersion)).at(kHybridSwap).holding("1\n").whenPresent(kTwo).whenAbsent(kMinusOne),
};
INSTANTIATE_OPERATION_ROWS(ProcessReclaim, kRows);

TEST_F(NodeRootTest, HybridSwapWinsOverNandswap) {
    writeNode("/proc/nandswap/fn_enable", "0\n");
    EXPECT_EQ(ProcessReclaim(nodes()).getPswapVersion(), 1);
    writeNode(kHybridSwap, "0\n");
    EXPECT_EQ(ProcessReclaim(nodes()).getPswapVersion(), 2);
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
