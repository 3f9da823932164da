// Storage feature nodes and their confinement to sysfs.

#include <filesystem>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Error, testing::Outcome, testing::row;

const std::string kQueue = "/sys/block/sda/queue", kReadAhead = "read_ahead_kb";
constexpr char kNode[] = "/sys/block/sda/queue/read_ahead_kb";
// A node outside /sys, like the /dev/full a refusing node links to, is not found.
const Outcome kNoNode = {"-1", {Error("storage_feature: get {node} fail")}};
// clang-format off
const testing::OperationRow kStorageRows[] = {
    row(OP(readStorageFeature, kQueue, kReadAhead, std::string("0"))).at(kNode)
        .holding("128\n4\n").whenPresent({"1284", {}}).whenAbsent(kNoNode).whenRefused(kNoNode),
    row(OP(writeStorageFeature, kQueue, kReadAhead, std::string(), std::string("512")))
        .at(kNode).leaves("512").whenPresent({"3", {}}).whenAbsent(kNoNode).whenRefused(kNoNode),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(Storage, kStorageRows);

TEST_F(NodeRootTest, StorageHpbNodesLieInTheUnitOfTheUserdataPartition) {
    Storage storage(nodes());
    makeLink("/dev/block/by-name/userdata", "../sdc77");
    makeLink("/sys/bus/scsi/devices/0:0:0:2", "../../../devices/ufs/0:0:0:2");
    writeNode("/sys/devices/ufs/0:0:0:2/hpb_new/hit_count", "42\n");
    EXPECT_EQ(storage.readStorageFeature("hit_count", "hpb_new", "2"), "42");
    EXPECT_EQ(storage.nodeKinds().at("hpb_new"), 0);
    // A node missing from its HPB directory is found, and fails to open; one whose directory lies
    // outside /sys is not.
    makeLink("/sys/devices/ufs/0:0:0:2/hpb_out", path("/dev"));
    EXPECT_EQ(storage.readStorageFeature("gone", "hpb_new", "2"), "-1");
    EXPECT_EQ(storage.writeStorageFeature("gone", "hpb_new", "2", "1"), -2);
    EXPECT_EQ(storage.writeStorageFeature("gone", "hpb_out", "2", "1"), -1);
    std::filesystem::remove(path("/dev/block/by-name/userdata"));
    makeLink("/dev/block/by-name/userdata", "/dev/block/dm-5");
    EXPECT_EQ(storage.readStorageFeature("hit_count", "hpb_new", "2"), "-1");
    const std::string unit = "/sys/bus/scsi/devices/0:0:0:2/";
    const auto at = [&](const char* node) { return Error("getUfsHpbLuSysPath " + unit + node); };
    const LogLine gone = Error("storage_feature: open " + unit + "hpb_new/gone fail");
    EXPECT_EQ(logs(), (std::vector<LogLine>{
                          at("hpb_new/hit_count"), at("hpb_new/gone"), gone, at("hpb_new/gone"),
                          gone, at("hpb_out/gone"), Error("storage_feature: get hpb_out/gone fail"),
                          Error("cant' find getUfsHpbLuSysPath lun =-1 name=hit_count add=hpb_new"),
                          Error("storage_feature: get hpb_new/hit_count fail")}));
}

TEST_F(NodeRootTest, StorageNodesLieUnderSysfs) {
    Storage storage(nodes());
    writeNode("/secret/node", "secret\n");
    writeNode("/sys/class/x/0:0/node", "in sysfs\n");
    makeDirectoryAt("/sys/class/x/1:0");
    makeDirectoryAt("/sys/dir/node");
    // A link out of /sys is the refusing node of the table's rows.
    EXPECT_EQ(storage.readStorageFeature("/sys/class/x", "node", "1"), "in sysfs");
    for (const char* name : {"/sys/class/x/../x/0:0", "/secret", "/sys/dir"}) {
        EXPECT_EQ(storage.readStorageFeature(name, "node", "0"), "-1") << name;
    }
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
