// Tmemory: the write cache's controls and statistics, in the device directory the service finds
// under /sys/tmemory/ and keeps once found. Each test's service finds it afresh.

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Debug, testing::Error, testing::OperationRow;

// A read of the node when text is nullopt, else a write of text to it.
// clang-format off
OperationRow tm(std::string name, testing::Call op, const char* node,
                std::optional<std::string> text) {
    OperationRow r = testing::row(std::move(name), std::move(op)).at(node);
    if (!text) return r.holding("a\nb").whenPresent({"a\nb\n", {}}).whenAbsent({"NULL", {}});
    const std::string refused =
        "write file {node} val " + *text + " failed, No space left on device";
    return r.leaves(text).whenPresent({std::to_string(text->size()), {}})
        .whenAbsent({"-1", {Debug("find path null")}}).whenRefused({"-1", {Error(refused)}});
}
const OperationRow kTmemoryRows[] = {
    tm(OP(writeTmemorySwitch, 1), "/sys/tmemory/tmemory0/switch", "1"),
    tm(OP(writeTmemoryFlushBusy, -5), "/sys/tmemory/tmemory0/flush_busy_interval", "-5"),
    tm(OP(writeTmemoryFlushIdle, 9), "/sys/tmemory/tmemory0/flush_idle_interval", "9"),
    tm(OP(writeTmemoryCapacity, 64), "/sys/tmemory/tmemory0/capacity", "64"),
    tm(OP(writeTmemoryHighWaterRatio, 80), "/sys/tmemory/tmemory0/high_watermark_ratio", "80"),
    tm(OP(writeTmemoryMemory, std::string("1 %s")), "/sys/tmemory/tmemory0/memory_stat", "1 %s"),
    tm(OP(readTmemorySysdirtypages), "/sys/tmemory/tmemory0/sys_dirty_pages", {}),
    tm(OP(readTmemoryDirtypages), "/sys/tmemory/tmemory0/dirty_pages", {}),
    tm(OP(readTmemoryErrorStat), "/sys/tmemory/tmemory0/error_stat", {}),
    tm(OP(readTmemoryIoLatency), "/sys/tmemory/tmemory0/io_latency", {}),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(Tmemory, kTmemoryRows);

TEST_F(NodeRootTest, TmemoryNodesThatCannotBeOpened) {
    Tmemory tmemory(nodes());
    // sysfs refuses to open a read-only attribute for writing, whoever asks.
    makeLink("/sys/tmemory/tmemory0/switch", "/sys/kernel/uevent_seqnum");
    EXPECT_EQ(tmemory.writeTmemorySwitch(1), -13);
    EXPECT_EQ(tmemory.readTmemoryIoLatency(),
              "NULL, OPEN FILE ERROR.../sys/tmemory/tmemory0/io_latency");
    EXPECT_EQ(logs(), std::vector<LogLine>{Error(
                          "Failed to open /sys/tmemory/tmemory0/switch (13): Permission denied ")});
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
