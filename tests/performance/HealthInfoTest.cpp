// Health information, filesystem fragmentation and device information.

#include <filesystem>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::call;
using testing::Debug;

const std::string kLongText = "cpu0:12\n" + std::string(5000, 'x');

LogLine missing(const std::string& node) {
    return Debug("open " + node + " failed! err:No such file or directory, Linux version {version}");
}

// A node read into a 4096-byte buffer; the logs say which nodes were tried.
testing::OperationRow textRow(const char* name, testing::Call op, const char* node,
                              std::vector<LogLine> present = {}) {
    testing::OperationRow row;
    row.name = name;
    row.call = std::move(op);
    row.node = {node, node};
    row.content = kLongText;
    row.present = {kLongText.substr(0, 4096), std::move(present)};
    row.absent = {"", row.present.logs};
    row.absent.logs.push_back(missing("{node}"));
    return row;
}
#define TEXT_ROW(op, node) textRow(#op, call(&Performance::op), node)

const testing::OperationRow kTextRows[] = {
    TEXT_ROW(getHICpuLoading, "/proc/vyren_healthinfo/cpu_loading"),
    TEXT_ROW(getHICpuInfo, "/proc/vyren_healthinfo/cpu_info"),
    TEXT_ROW(getschedlatency, "/proc/vyren_healthinfo/sched_latency"),
    TEXT_ROW(getiowait, "/proc/vyren_healthinfo/iowait"),
    TEXT_ROW(getfsyncwait, "/proc/vyren_healthinfo/fsync_wait"),
    TEXT_ROW(getionwait, "/proc/vyren_healthinfo/ion_wait"),
    TEXT_ROW(getallocwait, "/proc/vyren_healthinfo/alloc_wait"),
    TEXT_ROW(getdstate, "/proc/vyren_healthinfo/dstate"),
    TEXT_ROW(getDevinfoDDRInfo, "/proc/devinfo/ddr"),
    TEXT_ROW(getDdrResidency, "/sys/power/ddr/residency"),
    // The eMMC node stands in when the UFS node yields nothing.
    textRow("getDevinfoUfsInfo", call(&Performance::getDevinfoUfsInfo), "/proc/devinfo/emmc",
            {missing("/proc/devinfo/ufs")}),
    textRow("getDevinfoUfsVersionInfo", call(&Performance::getDevinfoUfsVersionInfo),
            "/proc/devinfo/emmc_version", {missing("/proc/devinfo/ufs_version")}),
};
INSTANTIATE_OPERATION_ROWS(HealthAndDeviceText, kTextRows);

class HealthInfoTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        service = makeService("5.15.78");
        clearLogs();
    }
    std::shared_ptr<Performance> service;
};

// The contract is the item count and key order of each template, whether or not the node exists.
TEST_F(HealthInfoTest, DescriptorsAnswerTheirNodesTemplateWithoutOpeningIt) {
    using Describe = ::ndk::ScopedAStatus (Performance::*)(ProcReqHal*);
    const std::tuple<Describe, const char*, size_t, const char*> templates[] = {
        {&Performance::getHIEmcdrvIowait, "emcdrv_iowait", 40, "emcdrv_iowait_low_thresh_ms"},
        {&Performance::getHIIowaitHung, "iowait_hung", 2, "iowait_hung_cnt"},
        {&Performance::getHISchedLatency, "sched_latency", 11, "sched_low_thresh_ms"},
        {&Performance::getHIFsyncWait, "fsync_wait", 11, "fsync_low_thresh_ms"},
        {&Performance::getHIIowait, "iowait", 11, "iowait_low_thresh_ms"},
        {&Performance::getHIUfsFeature, "ufs_feature", 25, "hpb_hit_cnt"},
        {&Performance::getHIIonWait, "ion_wait", 5, "total_ion_wait_h_cnt"},
        {&Performance::getHIAllocWait, "alloc_wait", 8, "total_alloc_wait_h_cnt"},
        {&Performance::getHIDState, "dstate", 11, "dstate_low_thresh_ms"},
        {&Performance::getHIKswapdLoading, "kswapd_loading", 2, "critical"},
        {&Performance::getHIScmCall, "scm_call", 11, "scmcall_low_thresh_ms"}};
    ProcReqHal request{"stale", {{"stale", "=", 7}}};
    for (const auto& [op, node, count, firstKey] : templates) {
        ASSERT_TRUE(((*service).*op)(&request).isOk());
        EXPECT_EQ(request.path, std::string("/proc/vyren_healthinfo/") + node);
        ASSERT_EQ(request.items.size(), count) << node;
        EXPECT_EQ(request.items[0].key, firstKey);
    }
    EXPECT_TRUE(logs().empty());
}

TEST_F(HealthInfoTest, F2fsDeviceIsTheLastOfTheBusiestInDirectoryOrder) {
    const std::pair<const char*, const char*> devices[] = {
        {"dm-0", "10\n"}, {"dm-5", "10"}, {"tmemory", "10"}, {"sda9", "99"}, {"dm-9", "busy"}};
    for (const auto& [name, moved] : devices) {
        writeNode("/sys/fs/f2fs/" + std::string(name) + "/moved_blocks_background", moved);
    }
    std::string expected;
    for (const auto& entry : std::filesystem::directory_iterator(path("/sys/fs/f2fs"))) {
        const std::string name = entry.path().filename();
        if (name != "sda9" && name != "dm-9") expected = name;
    }
    EXPECT_EQ(service->GetDevName("/sys/fs/f2fs/"), expected);
}

TEST_F(HealthInfoTest, MovedBlocksParseWholeIntsWithHexAfter0x) {
    std::string total;
    ASSERT_TRUE(service->getF2fsMovedBlks(&total).isOk());
    EXPECT_EQ(total, "0");
    for (const auto& [foreground, background, sum] :
         {std::tuple{"0x10\n", "5", "21"}, {"12abc", "5", "5"}, {"", "7", "7"}}) {
        writeNode("/sys/fs/f2fs/dm-3/moved_blocks_foreground", foreground);
        writeNode("/sys/fs/f2fs/dm-3/moved_blocks_background", background);
        ASSERT_TRUE(service->getF2fsMovedBlks(&total).isOk());
        EXPECT_EQ(total, sum) << foreground;
    }
}

TEST_F(HealthInfoTest, StatusLinesMatchExactKeysAndTheLastOneWins) {
    int32_t tw = -1, hpb = -1;
    writeNode("/proc/devinfo/ufsplus_status",
              "TW status:3\nTW status :9\nHPB status: 2x\nTW status:5\nHPB status:\nTW status");
    ASSERT_TRUE(service->getUfsplusTwStatus(&tw).isOk());
    ASSERT_TRUE(service->getUfsplusHpbStatus(&hpb).isOk());
    EXPECT_EQ(std::pair(tw, hpb), std::pair(5, 2));
}

TEST_F(HealthInfoTest, EmmcStandsInForAnEmptyUfsNode) {
    writeNode("/proc/devinfo/ufs_version", "");
    writeNode("/proc/devinfo/emmc_version", "eMMC 5.1\n");
    std::string text;
    ASSERT_TRUE(service->getDevinfoUfsVersionInfo(&text).isOk());
    EXPECT_EQ(text, "eMMC 5.1\n");
}

TEST_F(HealthInfoTest, ReserveUsesVyrenOnlyBesideZetoAndRefusesBadCounts) {
    writeNode("/dev/block/by-name/vyrenreserve3", std::string("AB\0CD", 5));
    std::string text = "stale";
    int32_t written = 0, failed = 0;
    // Refused before anything is opened, so the missing zeto node goes unreported.
    service->readVyrenReserve3(0, -1, &text);
    service->writeVyrenReserve3(0, -1, "x", &written);
    EXPECT_EQ(std::pair(text, written), std::pair(std::string("stale"), -1));
    EXPECT_TRUE(logs().empty());
    service->readVyrenReserve3(0, 16, &text);
    service->writeVyrenReserve3(0, 1, "x", &failed);
    EXPECT_EQ(std::pair(text, failed), std::pair(std::string("stale"), -1));
    const LogLine noZeto =
        Debug("open /dev/block/by-name/zetoreserve3 failed! err:No such file or directory");
    EXPECT_EQ(logs(), (std::vector<LogLine>{noZeto, noZeto}));

    writeNode("/dev/block/by-name/zetoreserve3", "ZETO");
    clearLogs();
    service->readVyrenReserve3(0, 16, &text);
    service->writeVyrenReserve3(1, 100, "xyz", &written);
    EXPECT_EQ(std::pair(text, written), std::pair(std::string("AB"), 3));
    EXPECT_EQ(readNode("/dev/block/by-name/vyrenreserve3"), "AxyzD");
    EXPECT_EQ(logs(), (std::vector<LogLine>{Debug("write 3 bytes")}));
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
