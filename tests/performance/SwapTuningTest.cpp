// Nandswap, hybrid-swap and DAMON reclaim tuning.

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using P = Performance;
using testing::call, testing::Debug, testing::Error, testing::kUnchanged, testing::OperationRow,
    testing::Outcome, testing::Row, testing::unreached;

const LogLine kNandOpen = Error("nandswap: open {node} fail");
Outcome noProc(const char* result, const std::string& proc) {
    return {result, {Error("nandswap: no such proc " + proc)}};
}

#define NANDSWAP "/proc/nandswap_vnd/"
#define ZRAM "/sys/block/zram0/"
const OperationRow kNandswapRows[] = {
    Row("read_life_protect", call(&P::readNandswapProc, "life_protect"), NANDSWAP "life_protect",
        "a 1\nb", kUnchanged, {"a 1\nb\n", {}}, {"null, open proc fail", {kNandOpen}}),
    unreached("read_parent_path_refused", call(&P::readNandswapProc, "../fn_enable"),
              NANDSWAP "fn_enable", noProc("null, no such proc", "../fn_enable")),
    // Read-write without truncation: the value and its newline overwrite the start.
    Row("write_fn_enable", call(&P::writeNandswapProc, "fn_enable", "1"), NANDSWAP "fn_enable",
        "stale\n", "1\nale\n", {"0", {}}, {"-22", {kNandOpen}}, Outcome{"0", {}}),
    unreached("write_life_protect_refused", call(&P::writeNandswapProc, "life_protect", "1"),
              NANDSWAP "life_protect", noProc("-3", "life_protect")),
};
INSTANTIATE_OPERATION_ROWS(Nandswap, kNandswapRows);

const std::string kLong(5000, 'z');
const LogLine kOpenFail = Error("open file {node} failed, No such file or directory");
constexpr char kScale[] = "/proc/sys/vm/watermark_scale_factor";
Outcome invalid(const std::string& result, int action) {
    const std::string prefix = "action " + std::to_string(action);
    return {result, {Error(prefix + " is invalid"), Error(prefix + ", can not find file node")}};
}
Outcome mm(const char* result, const char* op, int action) {
    return {result, {Debug(op + std::string("MMParameters:") + std::to_string(action) + "\n")}};
}
const Outcome kNoFileNode = {"-1", {Error("action 0, can not find file node")}};

const OperationRow kHybridswapRows[] = {
    Row("zram_write_0", call(&P::hybridswap_zram_para_write, 0, "1"), ZRAM "hybridswap_enable",
        "0\n", "1\n", {"0", {}}, {"-1", {kOpenFail}},
        Outcome{"-1", {Error("write file {node} val 1 failed, No space left on device")}}),
    unreached("zram_write_7_refused", call(&P::hybridswap_zram_para_write, 7, "1"),
              ZRAM "hybridswap_vmstat", {"-1", {Error("action 7 can not be write")}}),
    Row("zram_read_bounded", call(&P::hybridswap_zram_para_read, 9), ZRAM "hybridswap_report",
        kLong, kUnchanged, {kLong.substr(0, 4095), {}}, {"Invalid action 9!!", {kOpenFail}}),
    unreached("zram_write_31", call(&P::hybridswap_zram_para_write, 31, "1"),
              "/dev/memcg/memory.psi", invalid("-1", 31)),
    // Above the tables: the vm watermark scale factor, written and read whole.
    Row("zram_write_65537", call(&P::hybridswap_zram_para_write, 65537, "150"), kScale, "10\n",
        "150", mm("0", "write", 65537), mm("-1", "write", 65537)),
    Row("zram_read_65537", call(&P::hybridswap_zram_para_read, 65537), kScale, "10\n", kUnchanged,
        mm("10\n", "read", 65537), mm("-ERROR", "read", 65537)),
    unreached("zram_write_65538", call(&P::hybridswap_zram_para_write, 65538, "1"), kScale,
              mm("-22", "write", 65538)),
    unreached("zram_read_65538", call(&P::hybridswap_zram_para_read, 65538), kScale,
              mm("-ERROR", "read", 65538)),
    // Application uid 10123 of user 10.
    Row("memcg_write_app_uid", call(&P::hybridswap_memcg_para_write, 2, "1010123", "x"),
        "/dev/memcg/apps/uid_1010123/memory.app_uid", "", "x", {"0", {}}, {"-1", {kOpenFail}}),
    Row(OP(hybridswap_memcg_para_read, 1, "/"), "/dev/memcg/memory.swap_stat", "swap 3\n",
        kUnchanged, {"swap 3\n", {}}, {"Invalid action 1 memcg /!!", {kOpenFail}}),
    unreached("memcg_write_system_uid", call(&P::hybridswap_memcg_para_write, 0, "1000", "v"),
              "/dev/memcg/memory.name", kNoFileNode),
    unreached("memcg_read_9", call(&P::hybridswap_memcg_para_read, 9, "apps"),
              "/dev/memcg/apps/memory.name", invalid("Invalid action 9 memcg apps!!", 9)),
    unreached("memcg_write_empty_cgroup", call(&P::hybridswap_memcg_para_write, 0, "", "v"),
              "/dev/memcg/memory.name", {"-1", {Error("cgroup is empty"), kNoFileNode.logs[0]}}),
};
INSTANTIATE_OPERATION_ROWS(Hybridswap, kHybridswapRows);

#define DAMON "/sys/module/damon_reclaim/parameters/"
Outcome damonFail(const char* node) {
    return {"-1",
            {Error(std::string("[damon_reclaim] Failed to open " DAMON) + node +
                   " (2): No such file or directory, Linux version {version}")}};
}
const Outcome kColdRange = {
    "-1", {Error("[damon_reclaim] cold time must be in the interval [30, 3600].")}};
const Outcome kColdSet = {"0", {Debug("[damon_reclaim] set cold_time success.")}};
// Every node is truncated on open, before the argument is checked.
OperationRow cold(int seconds, const char* content, const char* written, const Outcome& outcome) {
    return Row("cold_time_" + std::to_string(seconds), call(&P::setDamonReclaimColdTime, seconds),
               DAMON "min_age", content, written, outcome, damonFail("min_age"));
}

const OperationRow kDamonRows[] = {
    Row("enable", call(&P::enableDamonReclaim), DAMON "enabled", "N\n", "1",
        {"0", {Debug("[damon_reclaim] enabled.")}}, damonFail("enabled")),
    Row("disable", call(&P::disableDamonReclaim), DAMON "enabled", "Y\n", "0",
        {"0", {Debug("[damon_reclaim] disable.")}}, damonFail("enabled")),
    cold(29, "60000000", "", kColdRange),
    cold(30, "", "30000000", kColdSet),
    cold(3600, "", "3600000000", kColdSet),
    cold(3601, "", "", kColdRange)};
INSTANTIATE_OPERATION_ROWS(DamonReclaim, kDamonRows);

using SwapTuningTest = NodeRootTest;

TEST_F(SwapTuningTest, MultiNodeCallsCheckThenWriteInOrder) {
    // Each node is a link to one FIFO, so what the FIFO holds afterwards is the bytes each node
    // received, in the order the kernel saw them; a directory stands at the absent node's path.
    int count = 0;
    const auto expect = [&](testing::Call c, std::vector<const char*> nodes, const char* absent,
                            const char* received, const char* result,
                            const std::vector<LogLine>& lines) {
        SCOPED_TRACE("case " + std::to_string(++count));
        std::filesystem::remove_all(path("/sys"));
        const std::string fifo = path("/fifo");
        unlink(fifo.c_str());
        ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
        android::base::unique_fd reader(open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        makeDirectoryAt(DAMON);
        for (const char* node : nodes) {
            ASSERT_EQ(symlink(fifo.c_str(), path(std::string(DAMON) + node).c_str()), 0);
        }
        if (absent != nullptr) makeDirectoryAt(std::string(DAMON) + absent);
        auto service = quietService("5.15.78");
        EXPECT_EQ(c(*service), result);
        char bytes[64] = {};
        EXPECT_GE(read(reader, bytes, sizeof(bytes) - 1), 0);
        EXPECT_STREQ(bytes, received);
        EXPECT_EQ(logs(), lines);
    };
    const std::vector<const char*> wmarks = {"wmarks_metric", "wmarks_high", "wmarks_mid",
                                             "wmarks_low"};
    const std::vector<const char*> quota = {"quota_ms", "quota_sz"};
    const std::vector<const char*> monitoring = {"sample_interval", "aggr_interval"};
    const LogLine set = Debug("[damon_reclaim] set wmarks_metric success.");
    const LogLine outOfRange =
        Error("[damon_reclaim] wmarks out of range, must be in the interval [0,1000].");
    const auto wm = [](int32_t metric, int32_t high, int32_t mid, int32_t low) {
        return call(&P::setDamonReclaimWmarks, metric, high, mid, low);
    };
    expect(wm(1, 1000, 500, 0), wmarks, nullptr, "110005000", "0",
           {Debug("[damon_reclaim] set wmarks success."), set});
    expect(wm(1, 1001, 500, 0), wmarks, nullptr, "1", "0", {set});
    expect(wm(0, 9, 5, 1), wmarks, nullptr, "0", "0", {set});
    expect(wm(4, 9, 5, 1), wmarks, nullptr, "", "-1", {outOfRange});
    expect(wm(-1, 9, 5, 1), wmarks, nullptr, "", "-1", {outOfRange});
    expect(wm(1, 9, 5, 1), {"wmarks_metric", "wmarks_high", "wmarks_low"}, "wmarks_mid", "", "-1",
           {Error("[damon_reclaim] Failed to open wmarks_xxx, Linux version 5.15.78")});
    // A full module: the reset interval is there too.
    expect(call(&P::setDamonReclaimQuota, 10, 1, 10),
           {"quota_ms", "quota_sz", "quota_reset_interval_ms"}, nullptr, "", "-1",
           {Error("[damon_reclaim] Failed to open quota_xxx, Linux version 5.15.78")});
    expect(call(&P::setDamonReclaimQuota, 10, 1, 10), quota, "quota_reset_interval_ms", "101048576",
           "0", {Debug("[damon_reclaim] set quota success.")});
    expect(call(&P::setDamonReclaimQuota, 11, 1, 10), quota, "quota_reset_interval_ms", "", "-1",
           {Debug("[damon_reclaim] quota_ms must <= reset_interval.")});
    expect(call(&P::setDamonReclaimMonitoring, 5, 10), monitoring, nullptr, "", "-1",
           {Debug("[damon_reclaim] sample must < aggr/2.")});
    expect(call(&P::setDamonReclaimMonitoring, 5, 11), monitoring, nullptr, "500011000", "0",
           {Debug("[damon_reclaim] set damon reclaim monitoring interval success.")});
}

TEST_F(SwapTuningTest, UnifiedHierarchyGroupsLiveUnderSysFsCgroup) {
    writeNode("/proc/mounts", "none /sys/fs/cgroup cgroup rw,memory 0 0\n");
    writeNode("/sys/fs/cgroup/memory.name", "root\n");
    writeNode("/sys/fs/cgroup/uid_10123/memory.name", "app\n");
    auto service = quietService("6.1.25");
    const auto read = [&](const char* cgroup) {
        return call(&P::hybridswap_memcg_para_read, 0, cgroup)(*service);
    };
    EXPECT_EQ(read("/"), "root\n");
    EXPECT_EQ(read("10123"), "app\n");
    EXPECT_EQ(read("apps"), "Invalid action 0 memcg apps!!");
    EXPECT_EQ(logs(), std::vector<LogLine>{Error("action 0, can not find file node")});
}

TEST_F(SwapTuningTest, CgroupThatIsNotANumberEndsTheProcess) {
    auto service = makeService("5.15.78");
    EXPECT_DEATH(call(&P::hybridswap_memcg_para_read, 0, "uid_x")(*service), "");
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
