// Tmemory controls and statistics. The device directory, once found, is kept for the life of the
// process, so each case relies on running in a process of its own.

#include <filesystem>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::call;
using testing::Outcome;

constexpr char kDir[] = "/sys/tmemory/tmemory0";

testing::OperationRow writeRow(std::string name, testing::Call op, const char* node,
                               const std::string& text) {
    const Outcome written{std::to_string(text.size()), {}};
    const Outcome absent{"-1", {testing::Debug("find path null")}};
    // /dev/full refuses even a write of nothing.
    const Outcome refused{
        "-1",
        {testing::Error("write file {node} val " + text + " failed, No space left on device")}};
    return {std::move(name), std::move(op), {node, node}, testing::Kernels::kAll, "", text,
            written,         absent,        refused};
}
testing::OperationRow readRow(std::string name, testing::Call op, const char* node) {
    return {std::move(name),        std::move(op), {node, node},
            testing::Kernels::kAll, "a b\nc",      std::nullopt,
            {"a b\nc\n", {}},       {"NULL", {}},  std::nullopt};
}
const testing::OperationRow kTmemoryRows[] = {
    writeRow("writeTmemorySwitch_1", call(&Performance::writeTmemorySwitch, 1),
             "/sys/tmemory/tmemory0/switch", "1"),
    writeRow("writeTmemorySwitch_100", call(&Performance::writeTmemorySwitch, 100),
             "/sys/tmemory/tmemory0/switch", "100"),
    writeRow("writeTmemoryFlushBusy", call(&Performance::writeTmemoryFlushBusy, -5),
             "/sys/tmemory/tmemory0/flush_busy_interval", "-5"),
    writeRow("writeTmemoryFlushIdle", call(&Performance::writeTmemoryFlushIdle, 1000),
             "/sys/tmemory/tmemory0/flush_idle_interval", "1000"),
    writeRow("writeTmemoryCapacity", call(&Performance::writeTmemoryCapacity, 262144),
             "/sys/tmemory/tmemory0/capacity", "262144"),
    writeRow("writeTmemoryHighWaterRatio", call(&Performance::writeTmemoryHighWaterRatio, 80),
             "/sys/tmemory/tmemory0/high_watermark_ratio", "80"),
    writeRow("writeTmemoryMemory", call(&Performance::writeTmemoryMemory, std::string("4096 %s")),
             "/sys/tmemory/tmemory0/memory_stat", "4096 %s"),
    writeRow("writeTmemoryMemory_empty", call(&Performance::writeTmemoryMemory, std::string()),
             "/sys/tmemory/tmemory0/memory_stat", ""),
    readRow("readTmemorySysdirtypages", call(&Performance::readTmemorySysdirtypages),
            "/sys/tmemory/tmemory0/sys_dirty_pages"),
    readRow("readTmemoryDirtypages", call(&Performance::readTmemoryDirtypages),
            "/sys/tmemory/tmemory0/dirty_pages"),
    readRow("readTmemoryErrorStat", call(&Performance::readTmemoryErrorStat),
            "/sys/tmemory/tmemory0/error_stat"),
    readRow("readTmemoryIoLatency", call(&Performance::readTmemoryIoLatency),
            "/sys/tmemory/tmemory0/io_latency"),
};
INSTANTIATE_OPERATION_ROWS(Tmemory, kTmemoryRows);

class TmemoryTest : public NodeRootTest {};

TEST_F(TmemoryTest, FindsTheFirstVisibleDirectoryOnceAndKeepsIt) {
    auto service = makeService("5.15.78");
    makeDirectoryAt("/sys/tmemory/.hidden");
    writeNode("/sys/tmemory/plain", "");
    EXPECT_EQ(call(&Performance::readTmemoryIoLatency)(*service), "NULL");

    makeDirectoryAt(kDir);
    EXPECT_EQ(call(&Performance::readTmemoryIoLatency)(*service),
              "NULL, OPEN FILE ERROR.../sys/tmemory/tmemory0/io_latency");
    // A node the kernel refuses to open for writing, whoever asks.
    ASSERT_EQ(symlink("/sys/kernel/uevent_seqnum", path("/sys/tmemory/tmemory0/switch").c_str()), 0);
    clearLogs();
    EXPECT_EQ(call(&Performance::writeTmemorySwitch, 1)(*service), "-13");
    EXPECT_EQ(logs(), std::vector<LogLine>{testing::Error(
                          "Failed to open /sys/tmemory/tmemory0/switch (13): Permission denied ")});

    std::filesystem::rename(path(kDir), path("/sys/tmemory/tmemory1"));
    EXPECT_EQ(call(&Performance::readTmemoryDirtypages)(*service),
              "NULL, OPEN FILE ERROR.../sys/tmemory/tmemory0/dirty_pages");
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
