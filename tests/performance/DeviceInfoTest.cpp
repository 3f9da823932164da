// Device information: the devinfo and residency nodes, UFS status lines and the reserve partition.

#include "DeviceInfo.h"
#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Debug, testing::readFailure, testing::reportRow, testing::same;

const testing::OperationRow kRows[] = {
    reportRow(OP(getDevinfoDDRInfo), same("/proc/devinfo/ddr"), 4096),
    reportRow(OP(getDdrResidency), same("/sys/power/ddr/residency"), 4096),
    // The eMMC node stands in when the UFS node yields nothing.
    reportRow(OP(getDevinfoUfsInfo), same("/proc/devinfo/emmc"), 4096,
              {readFailure("/proc/devinfo/ufs")}),
    reportRow(OP(getDevinfoUfsVersionInfo), same("/proc/devinfo/emmc_version"), 4096,
              {readFailure("/proc/devinfo/ufs_version")})};
INSTANTIATE_OPERATION_ROWS(DeviceInfo, kRows);

TEST_F(NodeRootTest, UfsStatusLinesMatchExactKeysAndTheLastOneWins) {
    writeNode("/proc/devinfo/ufsplus_status",
              "TW status:3\nTW status :9\nHPB status: 2x\nTW status:5\nHPB status:\nTW status");
    const DeviceInfo info(nodes());
    EXPECT_EQ(std::pair(info.getUfsplusTwStatus(), info.getUfsplusHpbStatus()), std::pair(5, 2));
}

TEST_F(NodeRootTest, EmmcStandsInForAnEmptyUfsNode) {
    writeNode("/proc/devinfo/ufs_version", "");
    writeNode("/proc/devinfo/emmc_version", "eMMC 5.1\n");
    EXPECT_EQ(DeviceInfo(nodes()).getDevinfoUfsVersionInfo(), "eMMC 5.1\n");
}

TEST_F(NodeRootTest, ReserveUsesVyrenOnlyBesideZetoAndRefusesBadCounts) {
    const DeviceInfo info(nodes());
    writeNode("/dev/block/by-name/vyrenreserve3", std::string("AB\0CD", 5));
    // Refused before anything is opened, so the missing zeto node goes unreported.
    EXPECT_EQ(info.readVyrenReserve3(0, -1), "");
    EXPECT_EQ(info.writeVyrenReserve3(0, -1, "x"), -1);
    EXPECT_TRUE(logs().empty());
    EXPECT_EQ(info.readVyrenReserve3(0, 16), "");
    EXPECT_EQ(info.writeVyrenReserve3(0, 1, "x"), -1);
    EXPECT_EQ(logs(), std::vector(2, Debug("open /dev/block/by-name/zetoreserve3 failed! err:"
                                           "No such file or directory")));

    writeNode("/dev/block/by-name/zetoreserve3", "ZETO");
    clearLogs();
    EXPECT_EQ(info.readVyrenReserve3(0, 16), "AB");
    EXPECT_EQ(info.writeVyrenReserve3(1, 100, "xyz"), 3);
    EXPECT_EQ(readNode("/dev/block/by-name/vyrenreserve3"), "AxyzD");
    EXPECT_EQ(logs(), (std::vector<LogLine>{Debug("write 3 bytes")}));
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
