// Nandswap, hybrid-swap and DAMON reclaim tuning.

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::call;
using testing::Debug;
using testing::Error;
using testing::kUnchanged;
using testing::OperationRow;
using testing::Outcome;
using testing::Row;

constexpr char kEnoent[] = " failed, No such file or directory";

const OperationRow kNandswapRows[] = {
    Row("read_life_protect", call(&Performance::readNandswapProc, "life_protect"),
        "/proc/nandswap_vnd/life_protect", "a 1\nb", kUnchanged, {"a 1\nb\n", {}},
        {"null, open proc fail", {Error("nandswap: open {node} fail")}}),
    Row("read_parent_path_refused", call(&Performance::readNandswapProc, "../fn_enable"),
        "/proc/nandswap_vnd/fn_enable", "1\n", kUnchanged,
        {"null, no such proc", {Error("nandswap: no such proc ../fn_enable")}},
        {"null, no such proc", {Error("nandswap: no such proc ../fn_enable")}}),
    // Read-write without truncation: the value and its newline overwrite the start.
    Row("write_fn_enable", call(&Performance::writeNandswapProc, "fn_enable", "1"),
        "/proc/nandswap_vnd/fn_enable", "stale\n", "1\nale\n", {"0", {}},
        {"-22", {Error("nandswap: open {node} fail")}}, Outcome{"0", {}}),
    Row("write_life_protect_refused", call(&Performance::writeNandswapProc, "life_protect", "1"),
        "/proc/nandswap_vnd/life_protect", "0\n", kUnchanged,
        {"-3", {Error("nandswap: no such proc life_protect")}},
        {"-3", {Error("nandswap: no such proc life_protect")}}),
    Row("write_trailing_newline_refused", call(&Performance::writeNandswapProc, "fn_enable\n", "1"),
        "/proc/nandswap_vnd/fn_enable", "0\n", kUnchanged,
        {"-3", {Error("nandswap: no such proc fn_enable\n")}},
        {"-3", {Error("nandswap: no such proc fn_enable\n")}}),
};
INSTANTIATE_OPERATION_ROWS(Nandswap, kNandswapRows);

const std::string kLong(5000, 'z');

const OperationRow kHybridswapRows[] = {
    Row("zram_write_0", call(&Performance::hybridswap_zram_para_write, 0, "1"),
        "/sys/block/zram0/hybridswap_enable", "0\n", "1\n", {"0", {}},
        {"-1", {Error(std::string("open file {node}") + kEnoent)}},
        Outcome{"-1", {Error("write file {node} val 1 failed, No space left on device")}}),
    Row("zram_write_7_refused", call(&Performance::hybridswap_zram_para_write, 7, "1"),
        "/sys/block/zram0/hybridswap_vmstat", "swapped 1\n", kUnchanged,
        {"-1", {Error("action 7 can not be write")}}, {"-1", {Error("action 7 can not be write")}}),
    Row("zram_read_7", call(&Performance::hybridswap_zram_para_read, 7),
        "/sys/block/zram0/hybridswap_vmstat", "swapped 1\n", kUnchanged, {"swapped 1\n", {}},
        {"Invalid action 7!!", {Error(std::string("open file {node}") + kEnoent)}}),
    Row("zram_read_bounded", call(&Performance::hybridswap_zram_para_read, 9),
        "/sys/block/zram0/hybridswap_report", kLong, kUnchanged, {kLong.substr(0, 4095), {}},
        {"Invalid action 9!!", {Error(std::string("open file {node}") + kEnoent)}}),
    Row("zram_write_31", call(&Performance::hybridswap_zram_para_write, 31, "1"),
        "/dev/memcg/memory.psi", "some", kUnchanged,
        {"-1", {Error("action 31 is invalid"), Error("action 31, can not find file node")}},
        {"-1", {Error("action 31 is invalid"), Error("action 31, can not find file node")}}),
    // Above the tables: the vm watermark scale factor, written and read whole.
    Row("zram_write_65537", call(&Performance::hybridswap_zram_para_write, 65537, "150"),
        "/proc/sys/vm/watermark_scale_factor", "10\n", "150",
        {"0", {Debug("writeMMParameters:65537\n")}}, {"-1", {Debug("writeMMParameters:65537\n")}}),
    Row("zram_read_65537", call(&Performance::hybridswap_zram_para_read, 65537),
        "/proc/sys/vm/watermark_scale_factor", "10\n", kUnchanged,
        {"10\n", {Debug("readMMParameters:65537\n")}},
        {"-ERROR", {Debug("readMMParameters:65537\n")}}),
    Row("zram_write_65538", call(&Performance::hybridswap_zram_para_write, 65538, "1"),
        "/proc/sys/vm/watermark_scale_factor", "10\n", kUnchanged,
        {"-22", {Debug("writeMMParameters:65538\n")}},
        {"-22", {Debug("writeMMParameters:65538\n")}}),
    Row("zram_read_65538", call(&Performance::hybridswap_zram_para_read, 65538),
        "/proc/sys/vm/watermark_scale_factor", "10\n", kUnchanged,
        {"-ERROR", {Debug("readMMParameters:65538\n")}},
        {"-ERROR", {Debug("readMMParameters:65538\n")}}),
    // Application uid 10123 of user 10.
    Row("memcg_write_app_uid", call(&Performance::hybridswap_memcg_para_write, 2, "1010123", "x"),
        "/dev/memcg/apps/uid_1010123/memory.app_uid", "", "x", {"0", {}},
        {"-1", {Error(std::string("open file {node}") + kEnoent)}}),
    Row("memcg_read_root", call(&Performance::hybridswap_memcg_para_read, 1, "/"),
        "/dev/memcg/memory.swap_stat", "swap 3\n", kUnchanged, {"swap 3\n", {}},
        {"Invalid action 1 memcg /!!", {Error(std::string("open file {node}") + kEnoent)}}),
    Row("memcg_write_system_uid", call(&Performance::hybridswap_memcg_para_write, 0, "1000", "v"),
        "/dev/memcg/memory.name", "root\n", kUnchanged,
        {"-1", {Error("action 0, can not find file node")}},
        {"-1", {Error("action 0, can not find file node")}}),
    Row("memcg_read_9", call(&Performance::hybridswap_memcg_para_read, 9, "apps"),
        "/dev/memcg/apps/memory.name", "apps\n", kUnchanged,
        {"Invalid action 9 memcg apps!!",
         {Error("action 9 is invalid"), Error("action 9, can not find file node")}},
        {"Invalid action 9 memcg apps!!",
         {Error("action 9 is invalid"), Error("action 9, can not find file node")}}),
    Row("memcg_write_empty_cgroup", call(&Performance::hybridswap_memcg_para_write, 0, "", "v"),
        "/dev/memcg/memory.name", "root\n", kUnchanged,
        {"-1", {Error("cgroup is empty"), Error("action 0, can not find file node")}},
        {"-1", {Error("cgroup is empty"), Error("action 0, can not find file node")}}),
};
INSTANTIATE_OPERATION_ROWS(Hybridswap, kHybridswapRows);

constexpr char kDamon[] = "/sys/module/damon_reclaim/parameters/";
std::string damonFail(const char* node) {
    return std::string("[damon_reclaim] Failed to open ") + kDamon + node +
           " (2): No such file or directory, Linux version {version}";
}

constexpr char kMinAge[] = "/sys/module/damon_reclaim/parameters/min_age";
constexpr char kColdRange[] = "[damon_reclaim] cold time must be in the interval [30, 3600].";
constexpr char kColdSet[] = "[damon_reclaim] set cold_time success.";

const OperationRow kDamonRows[] = {
    Row("enable", call(&Performance::enableDamonReclaim),
        "/sys/module/damon_reclaim/parameters/enabled", "N\n", "1",
        {"0", {Debug("[damon_reclaim] enabled.")}}, {"-1", {Error(damonFail("enabled"))}}),
    Row("disable", call(&Performance::disableDamonReclaim),
        "/sys/module/damon_reclaim/parameters/enabled", "Y\n", "0",
        {"0", {Debug("[damon_reclaim] disable.")}}, {"-1", {Error(damonFail("enabled"))}}),
    // Every node is truncated on open, before the argument is checked.
    Row("cold_time_29", call(&Performance::setDamonReclaimColdTime, 29), kMinAge, "60000000", "",
        {"-1", {Error(kColdRange)}}, {"-1", {Error(damonFail("min_age"))}}),
    Row("cold_time_30", call(&Performance::setDamonReclaimColdTime, 30), kMinAge, "", "30000000",
        {"0", {Debug(kColdSet)}}, {"-1", {Error(damonFail("min_age"))}}),
    Row("cold_time_3600", call(&Performance::setDamonReclaimColdTime, 3600), kMinAge, "",
        "3600000000", {"0", {Debug(kColdSet)}}, {"-1", {Error(damonFail("min_age"))}}),
    Row("cold_time_3601", call(&Performance::setDamonReclaimColdTime, 3601), kMinAge, "", "",
        {"-1", {Error(kColdRange)}}, {"-1", {Error(damonFail("min_age"))}}),
};
INSTANTIATE_OPERATION_ROWS(DamonReclaim, kDamonRows);

class SwapTuningTest : public NodeRootTest {};

// Nodes of a multi-node call, each a link to one FIFO, so what the FIFO holds afterwards is the
// bytes each node received, in the order the kernel saw them.
struct DamonCase {
    const char* name;
    testing::Call call;
    std::vector<const char*> nodes;
    // A directory stands at this node's path, so it cannot be opened.
    const char* absent;
    const char* received;
    const char* result;
    std::vector<LogLine> logs;
};

TEST_F(SwapTuningTest, MultiNodeCallsCheckThenWriteInOrder) {
    const std::vector<const char*> wmarks = {"wmarks_metric", "wmarks_high", "wmarks_mid",
                                             "wmarks_low"};
    const char* const wmarksSet = "[damon_reclaim] set wmarks_metric success.";
    const char* const outOfRange =
        "[damon_reclaim] wmarks out of range, must be in the interval [0,1000].";
    const DamonCase cases[] = {
        {"ordered",
         call(&Performance::setDamonReclaimWmarks, 1, 1000, 500, 0),
         wmarks,
         nullptr,
         "110005000",
         "0",
         {Debug("[damon_reclaim] set wmarks success."), Debug(wmarksSet)}},
        {"high too high",
         call(&Performance::setDamonReclaimWmarks, 1, 1001, 500, 0),
         wmarks,
         nullptr,
         "1",
         "0",
         {Debug(wmarksSet)}},
        {"metric 0",
         call(&Performance::setDamonReclaimWmarks, 0, 9, 5, 1),
         wmarks,
         nullptr,
         "0",
         "0",
         {Debug(wmarksSet)}},
        {"metric 4",
         call(&Performance::setDamonReclaimWmarks, 4, 9, 5, 1),
         wmarks,
         nullptr,
         "",
         "-1",
         {Error(outOfRange)}},
        {"metric -1",
         call(&Performance::setDamonReclaimWmarks, -1, 9, 5, 1),
         wmarks,
         nullptr,
         "",
         "-1",
         {Error(outOfRange)}},
        {"wmarks node missing",
         call(&Performance::setDamonReclaimWmarks, 1, 9, 5, 1),
         {"wmarks_metric", "wmarks_high", "wmarks_low"},
         "wmarks_mid",
         "",
         "-1",
         {Error("[damon_reclaim] Failed to open wmarks_xxx, Linux version 5.15.78")}},
        {"quota on a full module",
         call(&Performance::setDamonReclaimQuota, 10, 1, 10),
         {"quota_ms", "quota_sz", "quota_reset_interval_ms"},
         nullptr,
         "",
         "-1",
         {Error("[damon_reclaim] Failed to open quota_xxx, Linux version 5.15.78")}},
        {"quota without reset",
         call(&Performance::setDamonReclaimQuota, 10, 1, 10),
         {"quota_ms", "quota_sz"},
         "quota_reset_interval_ms",
         "101048576",
         "0",
         {Debug("[damon_reclaim] set quota success.")}},
        {"quota over interval",
         call(&Performance::setDamonReclaimQuota, 11, 1, 10),
         {"quota_ms", "quota_sz"},
         "quota_reset_interval_ms",
         "",
         "-1",
         {Debug("[damon_reclaim] quota_ms must <= reset_interval.")}},
        {"aggregation twice the sample",
         call(&Performance::setDamonReclaimMonitoring, 5, 10),
         {"sample_interval", "aggr_interval"},
         nullptr,
         "",
         "-1",
         {Debug("[damon_reclaim] sample must < aggr/2.")}},
        {"monitoring",
         call(&Performance::setDamonReclaimMonitoring, 5, 11),
         {"sample_interval", "aggr_interval"},
         nullptr,
         "500011000",
         "0",
         {Debug("[damon_reclaim] set damon reclaim monitoring interval success.")}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove_all(path("/sys"));
        const std::string fifo = path("/fifo");
        unlink(fifo.c_str());
        ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
        android::base::unique_fd reader(open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        makeDirectoryAt(kDamon);
        for (const char* node : c.nodes) {
            ASSERT_EQ(symlink(fifo.c_str(), path(std::string(kDamon) + node).c_str()), 0);
        }
        if (c.absent != nullptr) makeDirectoryAt(std::string(kDamon) + c.absent);
        auto service = makeService("5.15.78");
        clearLogs();
        EXPECT_EQ(c.call(*service), c.result);
        char received[64] = {};
        EXPECT_GE(read(reader, received, sizeof(received) - 1), 0);
        EXPECT_STREQ(received, c.received);
        EXPECT_EQ(logs(), c.logs);
    }
}

TEST_F(SwapTuningTest, UnifiedHierarchyGroupsLiveUnderSysFsCgroup) {
    writeNode("/proc/mounts", "none /sys/fs/cgroup cgroup rw,memory 0 0\n");
    writeNode("/sys/fs/cgroup/memory.name", "root\n");
    writeNode("/sys/fs/cgroup/uid_10123/memory.name", "app\n");
    auto service = makeService("6.1.25");
    std::string text;
    ASSERT_TRUE(service->hybridswap_memcg_para_read(0, "/", &text).isOk());
    EXPECT_EQ(text, "root\n");
    ASSERT_TRUE(service->hybridswap_memcg_para_read(0, "10123", &text).isOk());
    EXPECT_EQ(text, "app\n");
    clearLogs();
    ASSERT_TRUE(service->hybridswap_memcg_para_read(0, "apps", &text).isOk());
    EXPECT_EQ(text, "Invalid action 0 memcg apps!!");
    EXPECT_EQ(logs(), std::vector<LogLine>{Error("action 0, can not find file node")});
}

TEST_F(SwapTuningTest, CgroupThatIsNotANumberEndsTheProcess) {
    auto service = makeService("5.15.78");
    std::string text;
    EXPECT_DEATH((void)service->hybridswap_memcg_para_read(0, "uid_x", &text), "");
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
