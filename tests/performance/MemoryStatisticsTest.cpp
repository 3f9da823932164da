// The memory-statistics engine and queries, against a model of the driver and smaps files in the
// node root.

#include <fcntl.h>
#include <quilbex/proc-memstat.h>
#include <quilbex/util.h>

#include <cstring>
#include <functional>
#include <map>
#include <thread>

#include "OperationNodes.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

namespace quilbex = ::vyren::quilbex;
using MemStat = quilbex::memstat::ProcMemStat;

// The driver: checks each request's code and layout (by byte offset), fills records whose u32 at
// offset o reads pid * 100 + o, and fails on demand.
struct FakeDriver {
    std::mutex lock;
    int interruptions = 0;  // opens and requests interrupted before the next one goes through
    int error = 0;          // every request fails with it when set
    std::map<uint32_t, uint32_t> uidRecords = {{10123, 3}};
    std::vector<unsigned long> requests;
} gDriver;

void Fill(uint8_t* ms, uint32_t pid) {
    snprintf(reinterpret_cast<char*>(ms), 16, "proc-%u", pid);
    ms[16] = pid & 1;
    ms[18] = 0xe9;
    for (uint32_t at = 20; at < 84; at += 4) {
        const uint32_t value = at == 28 ? pid : pid * 100 + at;
        memcpy(ms + at, &value, 4);
    }
}

bool Interrupted() {
    if (gDriver.interruptions == 0) return false;
    --gDriver.interruptions;
    errno = EINTR;
    return true;
}

int FakeOpen(const char* path, int flags) {
    std::lock_guard<std::mutex> lock(gDriver.lock);
    EXPECT_EQ(flags, O_RDONLY | O_CLOEXEC);
    return Interrupted() ? -1 : open(path, flags);
}

int FakeIoctl(int, unsigned long request, void* arg) {
    std::lock_guard<std::mutex> lock(gDriver.lock);
    gDriver.requests.push_back(request);
    if (Interrupted()) return -1;
    if (gDriver.error != 0) return errno = gDriver.error, -1;
    auto* bytes = static_cast<uint8_t*>(arg);
    uint32_t word[3];
    if (request != 0xFA01) memcpy(word, bytes, sizeof(word));
    switch (request) {
        case 0xFA01:
            EXPECT_EQ(arg, nullptr);
            return 2 << 16 | 14;
        case 0xFB01:
            if (word[1] > 1000) return errno = ESRCH, -1;
            Fill(bytes + 8, word[1]);
            return 0;
        case 0xFB02:
        case 0xFB03:
            EXPECT_EQ(word[2], request == 0xFB02 ? word[2] : 400u);
            word[2] = request == 0xFB02 ? std::min(word[2], 5u) : gDriver.uidRecords[word[1]];
            for (uint32_t i = 0; i < word[2]; ++i) Fill(bytes + 12 + 84 * i, 580 + i);
            memcpy(bytes + 8, &word[2], 4);
            return 0;
    }
    return errno = ENOTTY, -1;
}

LogLine Engine(const std::string& text) {
    return {"quilbex", ANDROID_LOG_ERROR, text};
}

std::vector<int64_t> Fields(const ProcMemStat& s) {
    return {s.flag,     s.value18,         s.value20,           s.value24, s.pid,     s.value32,
            s.value36,  s.value40,         s.value44,           s.value48, s.value52, s.smapsTotal,
            s.reserved, s.smapsDalvikHeap, s.smapsNativeMalloc, s.value72, s.value76, s.value80};
}

std::string Text(const ProcMemStatRet& ret) {
    std::string text = std::to_string(ret.result);
    for (const auto& stat : ret.stats) text += " " + stat.name + "/" + std::to_string(stat.pid);
    return text;
}

class MemoryStatisticsTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        quilbex::util::SetDeviceCalls({FakeOpen, FakeIoctl});
        gDriver.uidRecords = {{10123, 3}};
        writeNode("/dev/quilbex", "");
        service = makeService("5.15.78");
        clearLogs();
    }
    ProcMemStatRet byPids(const std::vector<int32_t>& pids, int32_t flags) {
        ProcMemStatRet ret;
        EXPECT_TRUE(service->readMemoryByPids(pids, flags, &ret).isOk());
        return ret;
    }
    std::shared_ptr<Performance> service;
};

using testing::Call;
using testing::Error;
const LogLine kNoDevice = Engine("util:26 Failed to open /dev/quilbex:No such file or directory\n");

Call Query(std::function<std::string(Performance&)> body) {
    return [body](Performance& service) {
        quilbex::util::SetDeviceCalls({FakeOpen, FakeIoctl});
        return body(service);
    };
}

const testing::OperationRow kRows[] = {
    {"readQuilbexVersion",
     Query([](Performance& s) {
         QuilbexVersionRet v;
         EXPECT_TRUE(s.readQuilbexVersion(&v).isOk());
         return std::to_string(v.result) + " " + std::to_string(v.major) + "." +
                std::to_string(v.minor);
     }),
     {"/dev/quilbex", "/dev/quilbex"},
     testing::Kernels::kAll,
     "",
     std::nullopt,
     {"0 2.14", {Error("quilbex version 2.14")}},
     {"1 0.0", {kNoDevice}},
     std::nullopt},
    {"readMemoryByPids",
     Query([](Performance& s) {
         ProcMemStatRet ret;
         EXPECT_TRUE(s.readMemoryByPids({1, 580}, 0x22, &ret).isOk());
         return Text(ret);
     }),
     {"/dev/quilbex", "/dev/quilbex"},
     testing::Kernels::kAll,
     "",
     std::nullopt,
     {"0 proc-1/1 proc-580/580", {}},
     {"1", {kNoDevice, Engine("proc-memstat:102 Helper init failed.\n")}},
     std::nullopt},
    {"readMemoryByUids",
     Query([](Performance& s) {
         ProcMemStatRet ret;
         EXPECT_TRUE(s.readMemoryByUids({10123}, 0x2, &ret).isOk());
         return Text(ret);
     }),
     {"/dev/quilbex", "/dev/quilbex"},
     testing::Kernels::kAll,
     "",
     std::nullopt,
     {"0 /580 /581 /582", {}},
     {"1", {kNoDevice, Engine("proc-memstat:173 Helper init failed.\n")}},
     std::nullopt},
};
INSTANTIATE_OPERATION_ROWS(MemoryStatistics, kRows);

TEST_F(MemoryStatisticsTest, EngineRefusesBadArgumentsAndReportsDriverFailures) {
    auto& helper = gMemStatHelper;
    const struct {
        std::function<bool()> query;
        int error;
        bool result;
        std::string log;
    } kCases[] = {
        {[&] { return MemStat::PidMemStat(helper, 0, 1); }, 0, false,
         "proc-memstat:96 Invalid argument flag 0x0\n"},
        {[&] { return MemStat::SizeMemStats(helper, 0x40000, 1); }, 0, false,
         "proc-memstat:127 Invalid argument flag 0x40000\n"},
        {[&] { return MemStat::UidSizeMemStats(helper, 0, 1); }, 0, false,
         "proc-memstat:167 Invalid argument flag 0x0\n"},
        {[&] { return MemStat::SizeMemStats(helper, 1, 0); }, 0, false,
         "proc-memstat:132 Invalid size 0x0\n"},
        {[&] { return MemStat::SizeMemStats(helper, 1, 401); }, 0, false,
         "proc-memstat:132 Invalid size 0x401\n"},
        {[&] { return MemStat::SizeMemStats(helper, 1, 1); }, 0, true, ""},
        {[&] { return MemStat::SizeMemStats(helper, 1, 400); }, 0, true, ""},
        {[&] { return MemStat::PidMemStat(helper, 1, 1); }, EIO, false,
         "proc-memstat:112 Failed to ioctl Input/output error\n"},
        {[&] { return MemStat::SizeMemStats(helper, 1, 400); }, EIO, false,
         "proc-memstat:148 Failed to ioctl Input/output error\n"},
        {[&] { return MemStat::UidSizeMemStats(helper, 1, 0); }, EIO, false,
         "proc-memstat:184 Failed to ioctl Input/output error\n"},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.log);
        gDriver.error = c.error;
        clearLogs();
        EXPECT_EQ(c.query(), c.result);
        EXPECT_EQ(logs(), c.log.empty() ? std::vector<LogLine>{} : std::vector{Engine(c.log)});
    }
    gDriver.error = EIO;
    int major = 0, minor = 0;
    clearLogs();
    EXPECT_FALSE(quilbex::util::QuilbexVersion(major, minor));
    EXPECT_EQ(logs(), std::vector{Engine("util:39 Failed to ioctl Input/output error\n")});
}

TEST_F(MemoryStatisticsTest, SmapsWalkAddsPssAndSwapPssInPagesByMapping) {
    const std::string kMain = "Name: [anon:dalvik-main space]\n";
    const std::string kAlloc = "Name: [anon:dalvik-alloc space]\n";
    const std::string kMalloc = "Name:   [anon:libc_malloc]\n";
    const std::string kPss = "Rss: 40 kB\nPss:  10 kB\nPss_Anon: 8 kB\nSwapPss: 4 kB\n";
    const struct {
        std::string smaps;
        unsigned flags;
        std::vector<uint32_t> added;  // total, dalvik heap, native malloc
    } kCases[] = {
        {kPss, 0x4000, {3, 0, 0}},
        {kMain + kPss, 0x10000, {3, 3, 0}},
        {kAlloc + kPss, 0x10000, {3, 0, 0}},
        {std::string("Name: [anon:dalvik-alloc space\0]\n", 33) + kPss, 0x10000, {3, 3, 0}},
        {kMalloc + kPss, 0x18000, {3, 0, 3}},
        {kMalloc + kPss, 0x10000, {3, 0, 0}},
        {kMain + kPss + "7000-8000 rw-p 0 00:00 0\n" + kPss, 0x10000, {6, 3, 0}},
        {"", 0x4000, {0, 0, 0}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.smaps);
        writeNode("/proc/580/smaps", c.smaps);
        quilbex::memstat::proc_ms ms = {};
        ms.smaps_total = 0xffffffff;  // the walk adds to the driver's figures, wrapping
        ms.smaps_dalvik_heap = ms.smaps_native_malloc = 7;
        ASSERT_TRUE(quilbex::memstat::iterate_vma(580, c.flags, &ms));
        EXPECT_EQ(std::vector<uint32_t>(
                      {ms.smaps_total + 1, ms.smaps_dalvik_heap - 7u, ms.smaps_native_malloc - 7u}),
                  c.added);
    }
    quilbex::memstat::proc_ms ms = {};
    EXPECT_FALSE(quilbex::memstat::iterate_vma(581, 0x4000, &ms));
}

TEST_F(MemoryStatisticsTest, PidQueriesCopySelectedFieldsAndFailAsAWhole) {
    auto ret = byPids({580}, 0x23fff);
    ASSERT_EQ(Text(ret), "0 proc-580/580");
    EXPECT_EQ(Fields(ret.stats[0]),
              (std::vector<int64_t>{0, 0xe9, 58020, 58024, 580, 58032, 58036, 58040, 58044, 58048,
                                    58052, 0, 0, 0, 0, 58072, 58076, 58080}));
    // Smaps figures are worked out but never handed out; a vanished process keeps its record.
    ret = byPids({580}, 0x4000);
    EXPECT_EQ(Fields(ret.stats[0]), Fields({}));
    EXPECT_EQ(
        logs(),
        std::vector{Engine("proc-memstat:117 Failed to iterate vma No such file or directory\n")});
    writeNode("/proc/580/smaps", "Pss: 400 kB\n");
    byPids({580}, 0x4000);
    EXPECT_EQ(gMemStatHelper.pidRequest()->ms.smaps_total, 58056u + 100);

    clearLogs();
    EXPECT_EQ(Text(byPids({1, 4000}, 0x2)), "1");
    EXPECT_EQ(logs(), std::vector{Engine("proc-memstat:112 Failed to ioctl No such process\n")});
    EXPECT_EQ(Text(byPids({}, 0x20)), "0 proc-580/0 proc-581/0 proc-582/0 proc-583/0 proc-584/0");
    EXPECT_EQ(Text(byPids({}, 0)), "1");
    EXPECT_EQ(gDriver.requests.back(), 0xFB02u);  // the last request came from the query before
}

TEST_F(MemoryStatisticsTest, UidQueriesStopBeforePassing399Records) {
    gDriver.uidRecords = {{1, 300}, {2, 150}, {3, 99}};
    ProcMemStatRet ret;
    ASSERT_TRUE(service->readMemoryByUids({1, 2, 3}, 0x2, &ret).isOk());
    EXPECT_EQ(ret.result, 0);
    ASSERT_EQ(ret.stats.size(), 300u);
    EXPECT_EQ(ret.stats[299].pid, 879);
    ASSERT_TRUE(service->readMemoryByUids({1, 3}, 0x2, &ret).isOk());
    EXPECT_EQ(ret.stats.size(), 399u);

    gDriver.requests.clear();
    ASSERT_TRUE(service->readMemoryByUids({}, 0x2, &ret).isOk());
    EXPECT_EQ(Text(ret), "0");
    EXPECT_TRUE(gDriver.requests.empty());
}

TEST_F(MemoryStatisticsTest, InterruptedCallsAreRepeated) {
    gDriver.interruptions = 2;
    EXPECT_EQ(Text(byPids({1}, 0x2)), "0 /1");
    gDriver.interruptions = 2;
    EXPECT_EQ(Text(byPids({1}, 0x2)), "0 /1");
    EXPECT_EQ(gDriver.requests.size(), 4u);
    EXPECT_TRUE(logs().empty());
}

TEST_F(MemoryStatisticsTest, ConcurrentQueriesEachGetTheirOwnRecords) {
    writeNode("/proc/580/smaps", "Pss: 4 kB\n");
    std::vector<std::thread> threads;
    for (int32_t pid = 580; pid < 584; ++pid) {
        threads.emplace_back([this, pid] {
            for (int i = 0; i < 200; ++i) {
                EXPECT_EQ(Text(byPids({pid}, 0x4022)),
                          "0 proc-" + std::to_string(pid) + "/" + std::to_string(pid));
                ProcMemStatRet ret;
                ASSERT_TRUE(service->readMemoryByUids({10123}, 0x2, &ret).isOk());
                EXPECT_EQ(Text(ret), "0 /580 /581 /582");
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
