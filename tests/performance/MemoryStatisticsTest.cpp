// The memory-statistics engine and queries, against a model of the driver and smaps files in the
// node root or among the canned ones.

#include <android-base/stringprintf.h>
#include <android/log.h>
#include <fcntl.h>
#include <quilbex/proc-memstat.h>

#include <filesystem>
#include <map>
#include <thread>

#include "NodeRootFixture.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using ::android::base::StringPrintf;
using namespace std::string_literals;
using ::vyren::quilbex::memstat::ProcMemStatHelper;
using MemStat = ::vyren::quilbex::memstat::ProcMemStat;

// The driver: checks request codes and layouts (by byte offset), fills records whose u32 at
// offset o reads pid * 100 + o, and fails on demand.
struct Driver : ::vyren::quilbex::util::DeviceIo {
    std::mutex lock;
    int interruptions = 0;  // of the next opens and requests
    int error = 0;          // of every request
    std::map<uint32_t, uint32_t> uidRecords = {{10123, 3}};

    static int Fail(int code) { return errno = code, -1; }
    bool Interrupted() { return interruptions > 0 && interruptions--; }
    static void Fill(uint8_t* ms, uint32_t pid) {
        snprintf(reinterpret_cast<char*>(ms), 16, "proc-%u", pid);
        ms[16] = pid & 1;
        ms[18] = 0xe9;
        ms[19] = 0x20;
        for (uint32_t at = 20, value; at < 84; at += 4) {
            memcpy(ms + at, &(value = at == 28 ? pid : pid * 100 + at), 4);
        }
    }
    int open(const char* path, int flags) override {
        std::lock_guard<std::mutex> guard(lock);
        EXPECT_EQ(flags, O_RDONLY | O_CLOEXEC);
        return Interrupted() ? Fail(EINTR) : ::open(path, flags);
    }
    int ioctl(int, unsigned long request, void* arg) override {
        std::lock_guard<std::mutex> guard(lock);
        if (Interrupted()) return Fail(EINTR);
        if (error != 0) return Fail(error);
        if (request == 0xFA01) return arg == nullptr ? 2 << 16 | 14 : Fail(EFAULT);
        auto* bytes = static_cast<uint8_t*>(arg);
        uint32_t word[3];
        memcpy(word, bytes, sizeof(word));
        if (request == 0xFB01) return word[1] > 1000 ? Fail(ESRCH) : (Fill(bytes + 8, word[1]), 0);
        if (request != 0xFB02 && (request != 0xFB03 || word[2] != 400)) return Fail(EINVAL);
        word[2] = request == 0xFB02 ? std::min(word[2], 5u) : uidRecords[word[1]];
        for (uint32_t i = 0; i < word[2]; ++i) Fill(bytes + 12 + 84 * i, 580 + i);
        memcpy(bytes + 8, &word[2], 4);
        return 0;
    }
};

LogLine Engine(const std::string& text) {
    return {"quilbex", ANDROID_LOG_ERROR, text + "\n"};
}

class MemoryStatisticsTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        DeviceContext device = context();
        device.deviceIo = mDriver;
        mStats = std::make_unique<MemoryStatistics>(device);
        writeNode("/dev/quilbex", "");
    }
    // The result, then each record's name and pid.
    std::string query(bool byPid, const std::vector<int32_t>& ids, int flags) {
        const ProcMemStatRet ret =
            byPid ? mStats->readMemoryByPids(ids, flags) : mStats->readMemoryByUids(ids, flags);
        std::string text = std::to_string(ret.result);
        for (const auto& s : ret.stats) text += " " + s.name + "/" + std::to_string(s.pid);
        return text;
    }
    std::string version() {
        const QuilbexVersionRet v = mStats->readQuilbexVersion();
        return StringPrintf("%d %d.%d", v.result, v.major, v.minor);
    }

    std::shared_ptr<Driver> mDriver = std::make_shared<Driver>();
    std::unique_ptr<MemoryStatistics> mStats;
};

TEST_F(MemoryStatisticsTest, EngineRefusesBadArgumentsAndReportsDriverFailures) {
    ProcMemStatHelper h(mRoot, mDriver);
    std::lock_guard<ProcMemStatHelper> lock(h);
    // Whether a query succeeded, and the lines it logged.
    using Outcome = std::pair<bool, std::vector<LogLine>>;
    const auto outcome = [this](bool ok) {
        Outcome seen(ok, logs());
        clearLogs();
        return seen;
    };
    const auto failed = [](std::string l) { return Outcome(false, {Engine("proc-memstat:" + l)}); };
    EXPECT_EQ(outcome(MemStat::PidMemStat(h, 0, 1)), failed("96 Invalid argument flag 0x0"));
    EXPECT_EQ(outcome(MemStat::SizeMemStats(h, 0x40000, 1)),
              failed("127 Invalid argument flag 0x40000"));
    EXPECT_EQ(outcome(MemStat::UidSizeMemStats(h, 0, 1)), failed("167 Invalid argument flag 0x0"));
    EXPECT_EQ(outcome(MemStat::SizeMemStats(h, 1, 0)), failed("132 Invalid size 0x0"));
    EXPECT_EQ(outcome(MemStat::SizeMemStats(h, 1, 401)), failed("132 Invalid size 0x401"));
    EXPECT_EQ(outcome(MemStat::SizeMemStats(h, 1, 1)), Outcome(true, {}));
    EXPECT_EQ(outcome(MemStat::SizeMemStats(h, 1, 400)), Outcome(true, {}));
    mDriver->error = EIO;
    const std::string eio = " Failed to ioctl Input/output error";
    EXPECT_EQ(outcome(MemStat::PidMemStat(h, 1, 1)), failed("112" + eio));
    EXPECT_EQ(outcome(MemStat::SizeMemStats(h, 1, 400)), failed("148" + eio));
    EXPECT_EQ(outcome(MemStat::UidSizeMemStats(h, 1, 0)), failed("184" + eio));
}

TEST_F(MemoryStatisticsTest, MissingDeviceFailsEveryQueryUntilItAppears) {
    std::filesystem::remove(path("/dev/quilbex"));
    const LogLine noDevice =
        Engine("util:26 Failed to open /dev/quilbex:No such file or directory");
    EXPECT_EQ(version(), "1 0.0");
    EXPECT_EQ(query(false, {10123}, 0x2), "1");
    EXPECT_EQ(logs(),
              std::vector({noDevice, noDevice, Engine("proc-memstat:173 Helper init failed.")}));
    writeNode("/dev/quilbex", "");
    mDriver->interruptions = 2;
    EXPECT_EQ(version(), "0 2.14");
    EXPECT_EQ(logs().back(),
              (LogLine{"PerformanceService", ANDROID_LOG_ERROR, "quilbex version 2.14"}));
}

TEST_F(MemoryStatisticsTest, SmapsWalkAddsPssAndSwapPssInPagesByMapping) {
    // What the walk of the file adds to the total, dalvik-heap and native-malloc pages.
    const auto walk = [](const std::string& path, unsigned int flags) {
        ::vyren::quilbex::memstat::proc_ms ms = {};
        ms.smaps_total = 0xffffffff;  // added to, wrapping
        ms.smaps_dalvik_heap = ms.smaps_native_malloc = 7;
        EXPECT_TRUE(::vyren::quilbex::memstat::iterate_vma_file(path.c_str(), flags, &ms));
        return std::vector<uint32_t>(
            {ms.smaps_total + 1, ms.smaps_dalvik_heap - 7, ms.smaps_native_malloc - 7});
    };
    using Pages = std::vector<uint32_t>;
    const std::string canned = SMAPS_TESTDATA_DIR "/";
    // Only the first of its two mappings is in the dalvik heap.
    EXPECT_EQ(walk(canned + "dalvik-heap.smaps", 0x4000), Pages({6, 0, 0}));
    EXPECT_EQ(walk(canned + "dalvik-heap.smaps", 0x10000), Pages({6, 3, 0}));
    // The alloc space is in the heap only where its name ends at the space.
    EXPECT_EQ(walk(canned + "dalvik-alloc-space.smaps", 0x10000), Pages({3, 0, 0}));
    writeNode("/smaps", "Name: [anon:dalvik-alloc space\0]\nPss: 10 kB\nSwapPss: 4 kB\n"s);
    EXPECT_EQ(walk(path("/smaps"), 0x10000), Pages({3, 3, 0}));
    // Its last line has no newline.
    EXPECT_EQ(walk(canned + "native-malloc.smaps", 0x18000), Pages({3, 0, 3}));
    EXPECT_EQ(walk(canned + "native-malloc.smaps", 0x10000), Pages({3, 0, 0}));
    EXPECT_EQ(walk("/dev/null", 0x4000), Pages({0, 0, 0}));
}

TEST_F(MemoryStatisticsTest, QueriesCopySelectedFieldsAndFailOrStopAsAWhole) {
    const ProcMemStat s = mStats->readMemoryByPids({580}, 0x23fff).stats.at(0);
    EXPECT_EQ(std::vector<int64_t>({s.flag, s.value18, s.value20, s.value24, s.pid, s.value32,
                                    s.value36, s.value40, s.value44, s.value48, s.value52,
                                    s.smapsTotal, s.reserved, s.smapsDalvikHeap,
                                    s.smapsNativeMalloc, s.value72, s.value76, s.value80}),
              std::vector<int64_t>({0, 0x20e9, 58020, 58024, 580, 58032, 58036, 58040, 58044, 58048,
                                    58052, 0, 0, 0, 0, 58072, 58076, 58080}));
    // Bit 14 alone walks smaps but hands out nothing; a vanished process keeps its record.
    EXPECT_EQ(query(true, {580}, 0x4000), "0 /0");
    EXPECT_EQ(logs().back(),
              Engine("proc-memstat:117 Failed to iterate vma No such file or directory"));
    writeNode("/proc/580/smaps", "Pss: 400 kB\n");
    ProcMemStatHelper helper(mRoot, mDriver);
    std::lock_guard<ProcMemStatHelper> lock(helper);
    ASSERT_TRUE(MemStat::PidMemStat(helper, 0x4000, 580));
    EXPECT_EQ(helper.pidRequest()->ms.smaps_total, 58056u + 100);

    EXPECT_EQ(query(true, {1, 4000}, 0x2), "1");
    EXPECT_EQ(query(true, {}, 0x20), "0 proc-580/0 proc-581/0 proc-582/0 proc-583/0 proc-584/0");

    mDriver->uidRecords = {{1, 300}, {2, 150}, {3, 99}};
    auto records = [&](const std::vector<int32_t>& uids) {
        const std::string text = query(false, uids, 0x2);
        return text[0] == '0' ? std::count(text.begin(), text.end(), ' ') : -1;
    };
    EXPECT_EQ(records({1, 2, 3}), 300);
    EXPECT_EQ(records({1, 3}), 399);
    mDriver->error = EIO;  // no uids, no request
    EXPECT_EQ(records({}), 0);
}

TEST_F(MemoryStatisticsTest, ConcurrentQueriesEachGetTheirOwnRecords) {
    writeNode("/proc/580/smaps", "Pss: 4 kB\n");
    std::vector<std::thread> threads;
    for (int32_t pid = 580; pid < 584; ++pid) {
        threads.emplace_back([this, pid] {
            for (int i = 0; i < 200; ++i) {
                EXPECT_EQ(query(true, {pid}, 0x4022), StringPrintf("0 proc-%d/%d", pid, pid));
                EXPECT_EQ(query(false, {10123}, 0x2), "0 /580 /581 /582");
                EXPECT_EQ(version(), "0 2.14");
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
