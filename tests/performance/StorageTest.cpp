// Storage features: tmemory, and storage feature nodes with their confinement to sysfs. The
// tmemory directory, once found, is kept for the process, so each case needs a process of its own.

#include <deque>
#include <filesystem>

#include "OperationNodes.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using P = Performance;
using testing::call, testing::Error, testing::Outcome, testing::Row;

testing::OperationRow tm(std::string name, testing::Call op, const char* node,
                         std::optional<std::string> text) {
    static std::deque<std::string> paths;  // the rows point into it
    const char* path = paths.emplace_back(std::string("/sys/tmemory/tmemory0/") + node).c_str();
    if (!text) return Row(name, op, path, "a\nb", text, {"a\nb\n", {}}, {"NULL", {}});
    // /dev/full refuses even a write of nothing.
    const std::string refused =
        "write file {node} val " + *text + " failed, No space left on device";
    return Row(name, op, path, "", text, {std::to_string(text->size()), {}},
               {"-1", {testing::Debug("find path null")}}, Outcome{"-1", {Error(refused)}});
}
const std::string kQueue = "/sys/block/sda/queue", kReadAhead = "read_ahead_kb";
// A node outside /sys, like the /dev/full a refusing node links to, is not found.
const Outcome kNotFound = {"-1", {Error("storage_feature: get {node} fail")}};
// clang-format off
const testing::OperationRow kStorageRows[] = {
    tm(OP(writeTmemorySwitch, 1), "switch", "1"),
    tm(OP(writeTmemoryFlushBusy, -5), "flush_busy_interval", "-5"),
    tm(OP(writeTmemoryFlushIdle, 9), "flush_idle_interval", "9"),
    tm(OP(writeTmemoryCapacity, 64), "capacity", "64"),
    tm(OP(writeTmemoryHighWaterRatio, 80), "high_watermark_ratio", "80"),
    tm(OP(writeTmemoryMemory, std::string("1 %s")), "memory_stat", "1 %s"),
    tm("writeTmemoryMemory_empty", call(&P::writeTmemoryMemory, std::string()), "memory_stat", ""),
    tm(OP(readTmemorySysdirtypages), "sys_dirty_pages", {}),
    tm(OP(readTmemoryDirtypages), "dirty_pages", {}),
    tm(OP(readTmemoryErrorStat), "error_stat", {}), tm(OP(readTmemoryIoLatency), "io_latency", {}),
    Row(OP(readStorageFeature, kQueue, kReadAhead, std::string("0")),
        "/sys/block/sda/queue/read_ahead_kb", "128\n4\n", {}, {"1284", {}}, kNotFound, kNotFound),
    Row(OP(writeStorageFeature, kQueue, kReadAhead, std::string(), std::string("512")),
        "/sys/block/sda/queue/read_ahead_kb", "", "512", {"3", {}}, kNotFound, kNotFound),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(Storage, kStorageRows);

class StorageTest : public NodeRootServiceTest {
  protected:
    std::string read(const std::string& name, const std::string& feature, const char* mode = "0") {
        return call(&P::readStorageFeature, name, feature, std::string(mode))(*mService);
    }
};

TEST_F(StorageTest, HpbNodesLieInTheUnitOfTheUserdataPartition) {
    makeLink("/dev/block/by-name/userdata", "../sdc77");
    makeLink("/sys/bus/scsi/devices/0:0:0:2", "../../../devices/ufs/0:0:0:2");
    writeNode("/sys/devices/ufs/0:0:0:2/hpb_new/hit_count", "42\n");
    EXPECT_EQ(read("hit_count", "hpb_new", "2"), "42");
    EXPECT_EQ(gStorageNodeMap.at("hpb_new"), 0);
    std::filesystem::remove(path("/dev/block/by-name/userdata"));
    makeLink("/dev/block/by-name/userdata", "/dev/block/dm-5");
    EXPECT_EQ(read("hit_count", "hpb_new", "2"), "-1");
    EXPECT_EQ(logs(),
              (std::vector<LogLine>{
                  Error("getUfsHpbLuSysPath /sys/bus/scsi/devices/0:0:0:2/hpb_new/hit_count"),
                  Error("cant' find getUfsHpbLuSysPath lun =-1 name=hit_count add=hpb_new"),
                  Error("storage_feature: get hpb_new/hit_count fail")}));
}

TEST_F(StorageTest, OnlyNodesUnderSysfsAreFound) {
    writeNode("/secret/node", "secret\n");
    writeNode("/sys/class/x/0:0/node", "in sysfs\n");
    makeDirectoryAt("/sys/class/x/1:0");
    makeDirectoryAt("/sys/dir/node");
    // A link out of /sys is the refusing node of the table's rows.
    EXPECT_EQ(read("/sys/class/x", "node", "1"), "in sysfs");
    for (const char* name : {"/sys/class/x/../x/0:0", "/secret", "/sys/dir"}) {
        EXPECT_EQ(read(name, "node"), "-1") << name;
    }
}

TEST_F(StorageTest, TmemoryNodesThatCannotBeOpened) {
    // sysfs refuses to open a read-only attribute for writing, whoever asks.
    makeLink("/sys/tmemory/tmemory0/switch", "/sys/kernel/uevent_seqnum");
    EXPECT_EQ(call(&P::writeTmemorySwitch, 1)(*mService), "-13");
    EXPECT_EQ(call(&P::readTmemoryIoLatency)(*mService),
              "NULL, OPEN FILE ERROR.../sys/tmemory/tmemory0/io_latency");
    EXPECT_EQ(logs(), std::vector<LogLine>{Error(
                          "Failed to open /sys/tmemory/tmemory0/switch (13): Permission denied ")});
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
