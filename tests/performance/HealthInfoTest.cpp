// Health information, leak detection, filesystem fragmentation and device information.

#include <cstdint>
#include <filesystem>

#include "OperationNodes.h"

#define HI(name) same("/proc/vyren_healthinfo/" name)
#define LEAK(name) \
    (NodePair{"/proc/vyren_healthinfo/" name, "/proc/vyren_mem/memleak_detect/" name})

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Call, testing::Debug, testing::Error, testing::Kernels, testing::OperationRow,
    testing::Outcome, testing::Row, testing::same, testing::switchRow;

const std::string kNoNode = " {node} (2): No such file or directory";

LogLine missing(const std::string& node) {
    return Debug("open " + node + " failed! err:No such file or directory, Linux version {version}");
}

// Text in short lines, so that both a cut and a read that stops at a line show.
std::string patterned(size_t size) {
    std::string text;
    for (size_t i = 0; i < size; ++i) text += i % 27 == 26 ? '\n' : static_cast<char>('a' + i % 27);
    return text;
}

// A report is the node's text up to its first NUL, cut at the buffer size of its tree. The logs
// name the nodes tried before it.
OperationRow report(std::string name, Call op, NodePair node, std::string content,
                    std::string result, Kernels kernels = Kernels::kAll,
                    std::vector<LogLine> tried = {}) {
    Outcome absent = {"", tried};
    absent.logs.push_back(missing("{node}"));
    return Row(name, op, node, content, testing::kUnchanged, {result, tried}, absent, {}, kernels);
}
OperationRow report(std::string name, Call op, NodePair node, size_t size,
                    Kernels kernels = Kernels::kAll, std::vector<LogLine> tried = {}) {
    return report(name, op, node, patterned(size + 100), patterned(size), kernels, tried);
}

// A value write puts its text over the start of the node's bytes, with no newline and no
// truncation, and logs it after the label, by default the operation's name. Writes that take no
// bytes are logged as failed only where zero counts as failure.
const std::string kStale = "stale bytes of the node\n";
const LogLine kNoBytes = Error("Failed to write {node} (0): Success");

OperationRow value(std::string name, Call op, NodePair node, const std::string& text,
                   bool zeroFails, const char* label = nullptr) {
    const LogLine done = Debug("enable " + (label ? label : name) + "=" + text);
    return Row(name, op, node, kStale, text + kStale.substr(text.size()),
               {std::to_string(text.size()), {done}}, {"-2", {Error("Failed to open" + kNoNode)}},
               Outcome{"-1", {Error("Failed to write {node} (28): No space left on device"), done}},
               Kernels::kAll,
               Outcome{"0", zeroFails ? std::vector{kNoBytes, done} : std::vector{done}});
}

// Typed creation has a node on the newer tree only, which older kernels address as well.
constexpr NodePair kTypedCreate = same("/proc/vyren_mem/memleak_detect/kmalloc_debug_create");
constexpr char kCreate[] = "WriteKmallocDebugCreate";
const std::string kType = "kmalloc-64 %n%s";

// One row per read path and buffer size: a fixed node, a node with a stand-in, and a node chosen by
// the tree, on one or both sides of it.
const OperationRow kRows[] = {
    report(OP(getHICpuLoading), HI("cpu_loading"), 4096),
    report(OP(getHICpuInfo), HI("cpu_info"), 4096),
    report(OP(getschedlatency), HI("sched_latency"), 4096),
    report(OP(getiowait), HI("iowait"), 4096),
    report(OP(getfsyncwait), HI("fsync_wait"), 4096),
    report(OP(getionwait), HI("ion_wait"), 4096),
    report(OP(getallocwait), HI("alloc_wait"), 4096),
    report(OP(getdstate), HI("dstate"), 4096),
    report(OP(getDevinfoDDRInfo), same("/proc/devinfo/ddr"), 4096),
    report(OP(getExt4FreefragInfo, "sda1"), same("/proc/fs/ext4/sda1/free_frag"), 4096),
    report(OP(getExt4FragScore, "sda1"), same("/proc/fs/ext4/sda1/frag_score"), 4096),
    report(OP(getDdrResidency), same("/sys/power/ddr/residency"), 4096),
    // The eMMC node stands in when the UFS node yields nothing.
    report(OP(getDevinfoUfsInfo), same("/proc/devinfo/emmc"), 4096, Kernels::kAll,
           {missing("/proc/devinfo/ufs")}),
    report(OP(getDevinfoUfsVersionInfo), same("/proc/devinfo/emmc_version"), 4096, Kernels::kAll,
           {missing("/proc/devinfo/ufs_version")}),
    report(OP(readKmallocDebugCreate), LEAK("kmalloc_debug_create"), 4096),
    report(OP(getKmallocOrigin), LEAK("kmalloc_origin"), 4096),
    report(OP(getKmallocUsed), LEAK("kmalloc_used"), 512),
    report(OP(getKmallocDebug), LEAK("kmalloc_debug"), 4096),
    report(OP(readMemleakDetectThread), LEAK("memleak_detect_thread"), 32),
    report(OP(readVaFeature), LEAK("va_feature"), 32),
    report("older_" OP(getVmallocDebug), LEAK("vmalloc_debug"), 4096, Kernels::kOlder),
    report("newer_" OP(getVmallocDebug), LEAK("stack_hash"), 524288, Kernels::kNewer),
    report(OP(getVmallocUsed), LEAK("vmalloc_used"), 128),
    report(OP(getVmallocHashCal), LEAK("vmalloc_hash_cal"), 128),
    // A NUL ends the text.
    report("nul_" OP(getVmallocUsed), LEAK("vmalloc_used"), std::string("x\0y", 3), "x"),
    // A refused switch write goes unnoticed.
    switchRow(OP(enableKmallocDebug), LEAK("kmalloc_debug_enable"), "enable Kmalloc debug"),
    switchRow(OP(disableKmallocDebug), LEAK("kmalloc_debug_enable"), "disable Kmalloc debug"),
    switchRow(OP(enableVmallocDebug), LEAK("vmalloc_debug_enable"), "eable Vmalloc debug"),
    switchRow(OP(disableVmallocDebug), LEAK("vmalloc_debug_enable"), "disable Vmalloc debug"),
    value(OP(writeKmallocDebugCreate, -1), LEAK("kmalloc_debug_create"), "-1", true, kCreate),
    value(OP(writeMemleakDetectThread, 300), LEAK("memleak_detect_thread"), "300", true),
    value(OP(writeVaFeature, INT32_MIN), LEAK("va_feature"), "-2147483648", false),
    value(OP(writeKmallocDebugCreateWithType, kType), kTypedCreate, kType, true, kCreate),
    Row("empty_" OP(writeKmallocDebugCreateWithType, std::string()), kTypedCreate, kStale,
        testing::kUnchanged, {"0", {kNoBytes, Debug("enable " + std::string(kCreate) + "=")}},
        {"-2", {Error("Failed to open" + kNoNode)}}),
};
INSTANTIATE_OPERATION_ROWS(HealthAndLeakDetection, kRows);

using HealthInfoTest = NodeRootServiceTest;

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
        ASSERT_TRUE(((*mService).*op)(&request).isOk());
        EXPECT_EQ(request.path, std::string("/proc/vyren_healthinfo/") + node);
        ASSERT_EQ(request.items.size(), count) << node;
        EXPECT_EQ(request.items[0].key, firstKey);
    }
    EXPECT_TRUE(logs().empty());
}

TEST_F(HealthInfoTest, F2fsDeviceIsTheLastOfTheBusiestInDirectoryOrder) {
    const std::pair<const char*, const char*> devices[] = {
        {"dm-0", "10\n"}, {"tmemory", "10"}, {"sda9", "99"}, {"dm-9", "busy"}};
    for (const auto& [name, moved] : devices) {
        writeNode("/sys/fs/f2fs/" + std::string(name) + "/moved_blocks_background", moved);
    }
    std::string expected;
    for (const auto& entry : std::filesystem::directory_iterator(path("/sys/fs/f2fs"))) {
        const std::string name = entry.path().filename();
        if (name != "sda9" && name != "dm-9") expected = name;
    }
    EXPECT_EQ(mService->GetDevName("/sys/fs/f2fs/"), expected);
}

TEST_F(HealthInfoTest, MovedBlocksParseWholeIntsWithHexAfter0x) {
    std::string total;
    ASSERT_TRUE(mService->getF2fsMovedBlks(&total).isOk());
    EXPECT_EQ(total, "0");
    for (const auto& [foreground, background, sum] :
         {std::tuple{"0x10\n", "5", "21"}, {"12abc", "5", "5"}}) {
        writeNode("/sys/fs/f2fs/dm-3/moved_blocks_foreground", foreground);
        writeNode("/sys/fs/f2fs/dm-3/moved_blocks_background", background);
        ASSERT_TRUE(mService->getF2fsMovedBlks(&total).isOk());
        EXPECT_EQ(total, sum) << foreground;
    }
}

TEST_F(HealthInfoTest, StatusLinesMatchExactKeysAndTheLastOneWins) {
    int32_t tw = -1, hpb = -1;
    writeNode("/proc/devinfo/ufsplus_status",
              "TW status:3\nTW status :9\nHPB status: 2x\nTW status:5\nHPB status:\nTW status");
    ASSERT_TRUE(mService->getUfsplusTwStatus(&tw).isOk());
    ASSERT_TRUE(mService->getUfsplusHpbStatus(&hpb).isOk());
    EXPECT_EQ(std::pair(tw, hpb), std::pair(5, 2));
}

TEST_F(HealthInfoTest, EmmcStandsInForAnEmptyUfsNode) {
    writeNode("/proc/devinfo/ufs_version", "");
    writeNode("/proc/devinfo/emmc_version", "eMMC 5.1\n");
    std::string text;
    ASSERT_TRUE(mService->getDevinfoUfsVersionInfo(&text).isOk());
    EXPECT_EQ(text, "eMMC 5.1\n");
}

TEST_F(HealthInfoTest, ReserveUsesVyrenOnlyBesideZetoAndRefusesBadCounts) {
    writeNode("/dev/block/by-name/vyrenreserve3", std::string("AB\0CD", 5));
    std::string text = "stale";
    int32_t written = 0, failed = 0;
    // Refused before anything is opened, so the missing zeto node goes unreported.
    mService->readVyrenReserve3(0, -1, &text);
    mService->writeVyrenReserve3(0, -1, "x", &written);
    EXPECT_EQ(std::pair(text, written), std::pair(std::string("stale"), -1));
    EXPECT_TRUE(logs().empty());
    mService->readVyrenReserve3(0, 16, &text);
    mService->writeVyrenReserve3(0, 1, "x", &failed);
    EXPECT_EQ(std::pair(text, failed), std::pair(std::string("stale"), -1));
    const LogLine noZeto =
        Debug("open /dev/block/by-name/zetoreserve3 failed! err:No such file or directory");
    EXPECT_EQ(logs(), (std::vector<LogLine>{noZeto, noZeto}));

    writeNode("/dev/block/by-name/zetoreserve3", "ZETO");
    clearLogs();
    mService->readVyrenReserve3(0, 16, &text);
    mService->writeVyrenReserve3(1, 100, "xyz", &written);
    EXPECT_EQ(std::pair(text, written), std::pair(std::string("AB"), 3));
    EXPECT_EQ(readNode("/dev/block/by-name/vyrenreserve3"), "AxyzD");
    EXPECT_EQ(logs(), (std::vector<LogLine>{Debug("write 3 bytes")}));
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
