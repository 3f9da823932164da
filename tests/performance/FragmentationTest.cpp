// Filesystem fragmentation: the ext4 reports, and the blocks f2fs has moved on its busiest device.

#include <filesystem>
#include <map>

#include "Fragmentation.h"
#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::OperationRow, testing::reportRow, testing::same, testing::unreached;

// A device that is not one path component names no node; the node it would reach is untouched.
const testing::Outcome kNoDevice = {
    "",
    {testing::Debug("open /proc/fs/ext4/./frag_score failed! "
                    "err:Invalid argument, Linux version {version}")}};
const OperationRow kRows[] = {
    reportRow(OP(getExt4FreefragInfo, "sda1"), same("/proc/fs/ext4/sda1/free_frag"), 4096),
    reportRow(OP(getExt4FragScore, "sda1"), same("/proc/fs/ext4/sda1/frag_score"), 4096),
    unreached("climbing", testing::call(&Performance::getExt4FragScore, "../../../x"),
              "/x/frag_score", kNoDevice),
    unreached("empty", testing::call(&Performance::getExt4FragScore, ""),
              "/proc/fs/ext4/frag_score", kNoDevice),
    unreached("nul", testing::call(&Performance::getExt4FragScore, std::string("x\0", 2)),
              "/proc/fs/ext4/x", kNoDevice)};
INSTANTIATE_OPERATION_ROWS(Fragmentation, kRows);

TEST_F(NodeRootTest, F2fsDeviceIsTheLastOfTheBusiestInDirectoryOrder) {
    for (const auto& [name, moved] : std::map<std::string, std::string>{
             {"dm-0", "10\n"}, {"tmemory", "10"}, {"sda9", "99"}, {"dm-9", "busy"}}) {
        writeNode("/sys/fs/f2fs/" + name + "/moved_blocks_background", moved);
    }
    std::string expected;
    for (const auto& entry : std::filesystem::directory_iterator(path("/sys/fs/f2fs"))) {
        const std::string name = entry.path().filename();
        if (name != "sda9" && name != "dm-9") expected = name;
    }
    EXPECT_EQ(Fragmentation(nodes()).GetDevName("/sys/fs/f2fs/"), expected);
}

TEST_F(NodeRootTest, F2fsMovedBlocksParseWholeIntsWithHexAfter0x) {
    const Fragmentation fragmentation(nodes());
    EXPECT_EQ(fragmentation.getF2fsMovedBlks(), "0");
    writeNode("/sys/fs/f2fs/dm-3/moved_blocks_background", "5");
    for (const auto& [foreground, sum] : {std::pair{"0x10\n", "21"}, {"12abc", "5"}}) {
        writeNode("/sys/fs/f2fs/dm-3/moved_blocks_foreground", foreground);
        EXPECT_EQ(fragmentation.getF2fsMovedBlks(), sum) << foreground;
    }
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
