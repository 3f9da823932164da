// Storage feature reads and writes: the three ways of naming a node, and the confinement of every
// node to sysfs.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "OperationNodes.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::call;
using testing::Error;

constexpr NodePair kReadAhead = {"/sys/block/sda/queue/read_ahead_kb",
                                 "/sys/block/sda/queue/read_ahead_kb"};
const std::string kQueue = "/sys/block/sda/queue";
const std::string kNode = "read_ahead_kb";
const testing::Outcome kNotFound = {"-1", {Error("storage_feature: get {node} fail")}};
// A node outside /sys, such as the /dev/full a refusing node links to, is not found either.
testing::OperationRow storageRow(std::string name, testing::Call op, std::string content,
                                 std::optional<std::string> written, std::string result) {
    return {std::move(name),         std::move(op),      kReadAhead,
            testing::Kernels::kAll,  std::move(content), std::move(written),
            {std::move(result), {}}, kNotFound,          kNotFound};
}
const testing::OperationRow kStorageRows[] = {
    storageRow("readStorageFeature",
               call(&Performance::readStorageFeature, kQueue, kNode, std::string("0")), "128\n4\n",
               std::nullopt, "1284"),
    storageRow(
        "writeStorageFeature",
        call(&Performance::writeStorageFeature, kQueue, kNode, std::string(), std::string("512")),
        "", "512", "3"),
};
INSTANTIATE_OPERATION_ROWS(Storage, kStorageRows);

class StorageTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        service = makeService("5.15.78");
        clearLogs();
    }
    std::string read(const std::string& name, const std::string& feature, const char* mode) {
        return call(&Performance::readStorageFeature, name, feature, std::string(mode))(*service);
    }
    void link(const std::string& node, const std::string& target) {
        std::filesystem::create_directories(std::filesystem::path(path(node)).parent_path());
        std::filesystem::remove(path(node));
        ASSERT_EQ(symlink(target.c_str(), path(node).c_str()), 0) << node;
    }
    std::shared_ptr<Performance> service;
};

TEST_F(StorageTest, HpbNodesLieInTheUnitOfTheUserdataPartition) {
    link("/dev/block/by-name/userdata", "/dev/block/sdc77");
    link("/sys/bus/scsi/devices/0:0:0:2", "../../../devices/ufs/0:0:0:2");
    writeNode("/sys/devices/ufs/0:0:0:2/hpb_stats/hit_count", "42\n");
    EXPECT_EQ(read("hit_count", "hpb_stats", "2"), "42");
    EXPECT_EQ(read("x", "hpb_new", "2"), "-1");
    EXPECT_EQ(logs(),
              (std::vector<LogLine>{
                  Error("getUfsHpbLuSysPath /sys/bus/scsi/devices/0:0:0:2/hpb_stats/hit_count"),
                  Error("getUfsHpbLuSysPath /sys/bus/scsi/devices/0:0:0:2/hpb_new/x"),
                  Error("storage_feature: get hpb_new/x fail")}));
    EXPECT_EQ(gStorageNodeMap.at("hpb_new"), 0);

    link("/dev/block/by-name/userdata", "../dm-5");
    clearLogs();
    EXPECT_EQ(read("hit_count", "hpb_stats", "2"), "-1");
    EXPECT_EQ(logs(),
              (std::vector<LogLine>{
                  Error("cant' find getUfsHpbLuSysPath lun =-1 name=hit_count add=hpb_stats"),
                  Error("storage_feature: get hpb_stats/hit_count fail")}));
    link("/dev/block/by-name/userdata", "../sdc3");
    EXPECT_EQ(read("hit_count", "hpb_stats", "2"), "42");
}

TEST_F(StorageTest, ListingModeLooksInEveryEntry) {
    writeNode("/sys/class/scsi_disk/0:0:0:0/cache_type", "write back\n");
    makeDirectoryAt("/sys/class/scsi_disk/0:0:0:1");
    EXPECT_EQ(read("/sys/class/scsi_disk", "cache_type", "1"), "write back");
    EXPECT_EQ(read("/sys/class/missing", "cache_type", "1"), "-1");
}

TEST_F(StorageTest, NodesOutsideSysfsAreNotFound) {
    writeNode("/secret/node", "secret\n");
    writeNode("/sys/block/node", "");
    link("/sys/up", "..");
    link("/sys/out", path("/secret"));
    for (const auto& [name, feature] :
         std::vector<std::pair<std::string, std::string>>{{"/sys/block/../../secret", "node"},
                                                          {"/secret", "node"},
                                                          {"sys/block", "node"},
                                                          {"/sys/up/secret", "node"},
                                                          {"/sys/out", "node"},
                                                          {"/sys", "block"}}) {
        EXPECT_EQ(read(name, feature, "0"), "-1") << name;
    }
    int32_t result = 0;
    ASSERT_TRUE(service->writeStorageFeature("/sys/out", "node", "0", "x", &result).isOk());
    EXPECT_EQ(result, -1);
    EXPECT_EQ(readNode("/secret/node"), "secret\n");
}

TEST_F(StorageTest, NodeThatCannotBeOpened) {
    // A socket stands in for an attribute that refuses every open.
    makeDirectoryAt("/sys/sock");
    sockaddr_un address = {AF_UNIX, {}};
    strncpy(address.sun_path, path("/sys/sock/node").c_str(), sizeof(address.sun_path) - 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    close(fd);
    int32_t result = 0;
    EXPECT_EQ(read("/sys/sock", "node", "0"), "-1");
    ASSERT_TRUE(service->writeStorageFeature("/sys/sock", "node", "0", "x", &result).isOk());
    EXPECT_EQ(result, -2);
    EXPECT_EQ(logs(), std::vector<LogLine>(2, Error("storage_feature: open /sys/sock/node fail")));
}

TEST_F(StorageTest, ConcurrentUnknownFeaturesAllJoinTheMap) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([&, i] { read("n", std::to_string(i), "2"); });
    for (auto& thread : threads) thread.join();
    std::lock_guard<std::mutex> lock(gStorageNodeLock);
    EXPECT_EQ(gStorageNodeMap.size(), 6u);
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
