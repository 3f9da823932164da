// The service object's start-up state and the node-access conventions every operation shares.

#include <android-base/properties.h>
#include <android/log.h>
#include <sys/stat.h>

#include "NodeRootFixture.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

constexpr char kTag[] = "PerformanceService";
constexpr char kOlderKmallocSwitch[] = "/proc/vyren_healthinfo/kmalloc_debug_enable";
constexpr char kNewerKmallocSwitch[] = "/proc/vyren_mem/memleak_detect/kmalloc_debug_enable";

using StartupTest = NodeRootTest;

TEST_F(StartupTest, LogsKernelVersionDebugFlagAndMemcgRoot) {
    struct Case {
        const char* versionLine;
        const char* mounts;
        bool debug;
        std::string expectedVersion;
        std::string expectedMemcg;
    };
    const Case cases[] = {
        {"Linux version 5.10.66-android12-9-00001-g1234 (build@host) #1 SMP\n",
         "none /dev/memcg cgroup rw,nosuid,nodev,noexec,relatime,memory 0 0\n", false,
         "Linux version 5.10.66 Debug is 0\n", "MemcgRootPath is initialized to /dev/memcg/\n"},
        {"Linux version 4.19 #1 SMP PREEMPT\n",
         "cgroup /sys/fs/cgroup/memory/ cgroup rw,memory 0 0\n", true,
         "Linux version 4.19.0 Debug is 1\n",
         "MemcgRootPath is initialized to /sys/fs/cgroup/memory/\n"},
        {"not a version line\n", "none /dev/cpuset cgroup rw,cpuset 0 0\n", false,
         "Linux version 0.0.0 Debug is 0\n", "MemcgRootPath is initialized to /dev/memcg/\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.versionLine);
        writeNode("/proc/version", c.versionLine);
        writeNode("/proc/mounts", c.mounts);
        android::base::SetProperty("persist.sys.assert.panic", c.debug ? "true" : "false");
        clearLogs();
        makeService();
        EXPECT_EQ(logsOf(kTag), (std::vector<LogLine>{{kTag, ANDROID_LOG_DEBUG, c.expectedVersion},
                                                      {kTag, ANDROID_LOG_DEBUG, c.expectedMemcg}}));
    }
}

TEST_F(StartupTest, UnreadableVersionSelectsOlderNodesAndReportsZeroVersion) {
    auto service = makeService();  // no proc/version at all
    EXPECT_EQ(logsOf(kTag), (std::vector<LogLine>{{kTag, ANDROID_LOG_ERROR,
                                                   "Failed to open /proc/version (2): No such file "
                                                   "or directory"}}));
    writeNode(kOlderKmallocSwitch, "0");
    int32_t result = 99;
    ASSERT_TRUE(service->enableKmallocDebug(&result).isOk());
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readNode(kOlderKmallocSwitch), "1");

    clearLogs();
    char buffer[8];
    EXPECT_EQ(service->readInterface("/proc/absent", 0, buffer, sizeof(buffer)), -1);
    EXPECT_EQ(logsOf(kTag),
              (std::vector<LogLine>{{kTag, ANDROID_LOG_DEBUG,
                                     "open /proc/absent failed! err:No such file or directory, "
                                     "Linux version 0.0.0"}}));
}

TEST_F(StartupTest, NewNodeTreeFromKernel5_10RegardlessOfPatch) {
    const std::pair<const char*, const char*> cases[] = {
        {"4.19.157", kOlderKmallocSwitch}, {"5.4.233", kOlderKmallocSwitch},
        {"5.9.99", kOlderKmallocSwitch},   {"5.10.0", kNewerKmallocSwitch},
        {"5.15.78", kNewerKmallocSwitch},  {"6.0.1", kNewerKmallocSwitch},
    };
    for (const auto& [release, expected] : cases) {
        SCOPED_TRACE(release);
        writeNode(kOlderKmallocSwitch, "0");
        writeNode(kNewerKmallocSwitch, "0");
        int32_t result = 99;
        ASSERT_TRUE(makeService(release)->enableKmallocDebug(&result).isOk());
        EXPECT_EQ(result, 0);
        EXPECT_EQ(readNode(expected), "1");
        EXPECT_EQ(
            readNode(expected == kOlderKmallocSwitch ? kNewerKmallocSwitch : kOlderKmallocSwitch),
            "0");
    }
}

TEST(ProcessTablesTest, HoldTheirStartingContent) {
    const std::pair<const std::vector<ProcReqItemHal>*, size_t> templates[] = {
        {&gEmcdrvIowaitKeys, 40}, {&gIowaitHungKeys, 2}, {&gSchedLatencyKeys, 11},
        {&gFsyncWaitKeys, 11},    {&gIowaitKeys, 11},    {&gUfsFeatureKeys, 25},
        {&gIonWaitKeys, 5},       {&gAllocWaitKeys, 8},  {&gDStateKeys, 11},
        {&gKswapdLoadingKeys, 2}, {&gScmCallKeys, 11},
    };
    for (const auto& [keys, size] : templates) {
        ASSERT_EQ(keys->size(), size);
        for (const auto& item : *keys) {
            EXPECT_EQ(item.separator, ":") << item.key;
            EXPECT_TRUE(item.flag == 0 || item.flag == 1) << item.key;
        }
    }
    EXPECT_EQ(gEmcdrvIowaitKeys.front().key, "emcdrv_iowait_low_thresh_ms");
    EXPECT_EQ(gEmcdrvIowaitKeys[10].key, "emcdrv_iowait_fg_max_ms");
    EXPECT_EQ(gEmcdrvIowaitKeys[11].key, "flashio_total_latency");
    EXPECT_EQ(gEmcdrvIowaitKeys.back().key, "iosize_4k_write_ms");
    EXPECT_EQ(gSchedLatencyKeys.front().key, "sched_low_thresh_ms");
    EXPECT_EQ(gSchedLatencyKeys.back().key, "sched_fg_max_ms");
    EXPECT_EQ(gIowaitHungKeys[1].key, "iowait_panic_cnt");
    EXPECT_EQ(gIowaitHungKeys[1].flag, 0);
    EXPECT_EQ(gKswapdLoadingKeys[0].key, "critical");

    EXPECT_EQ(gWakerAffinity, std::vector<int32_t>(7, -1));
    EXPECT_EQ(gStorageNodeMap, (std::map<std::string, int>{{"hpb_params", 1}, {"hpb_stats", 0}}));
    EXPECT_TRUE(gTaskTrackTable.empty());
    EXPECT_FALSE(gTaskTrackEnabled);
    EXPECT_EQ(gMemStatHelper.fd(), -1);
    EXPECT_FALSE(gMemStatHelper.hasBuffers());
}

class ReadInterfaceTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        service = makeService("5.15.78");
        clearLogs();
    }
    std::shared_ptr<Performance> service;
};

TEST_F(ReadInterfaceTest, RefusesBadArgumentsWithoutTouchingTheNode) {
    writeNode("/proc/node", "text");
    char buffer[8] = {};
    EXPECT_EQ(service->readInterface("/proc/node", 0, buffer, 0), -1);
    EXPECT_EQ(service->readInterface("/proc/node", -1, buffer, sizeof(buffer)), -1);
    EXPECT_EQ(service->readInterface("/proc/node", 0, nullptr, 8), -1);
    // Even a missing node is not opened, so nothing is logged.
    EXPECT_EQ(service->readInterface("/proc/absent", 0, buffer, 0), -1);
    EXPECT_TRUE(logs().empty());
    EXPECT_EQ(buffer[0], '\0');
}

TEST_F(ReadInterfaceTest, ReadsFromOffsetUpToTheBufferSize) {
    writeNode("/proc/node", "0123456789");
    char buffer[4] = {};
    EXPECT_EQ(service->readInterface("/proc/node", 3, buffer, sizeof(buffer)), 4);
    EXPECT_EQ(std::string(buffer, 4), "3456");
    EXPECT_EQ(service->readInterface("/proc/node", 8, buffer, sizeof(buffer)), 2);
    EXPECT_EQ(std::string(buffer, 2), "89");
    EXPECT_EQ(service->readInterface("/proc/node", 50, buffer, sizeof(buffer)), 0);
    EXPECT_TRUE(logs().empty());
}

TEST_F(ReadInterfaceTest, ReadFailureReportsThePosition) {
    makeDirectoryAt("/proc/dir_node");
    char buffer[8];
    EXPECT_EQ(service->readInterface("/proc/dir_node", 5, buffer, sizeof(buffer)), -1);
    EXPECT_EQ(logs(), (std::vector<LogLine>{{kTag, ANDROID_LOG_DEBUG, "read no content! size:5"}}));
}

TEST_F(ReadInterfaceTest, ReadFileToStringTCutsAt1023Bytes) {
    std::string out = "stale";
    EXPECT_FALSE(service->ReadFileToStringT("/proc/absent", &out));
    EXPECT_EQ(out, "");
    EXPECT_EQ(
        logs(),
        (std::vector<LogLine>{{kTag, ANDROID_LOG_INFO, "get fd of ReadFileToStringT failed!"}}));

    writeNode("/proc/long", std::string(2000, 'x'));
    EXPECT_TRUE(service->ReadFileToStringT("/proc/long", &out));
    EXPECT_EQ(out, std::string(1023, 'x'));

    writeNode("/proc/short", std::string("ab\0cd", 5));
    EXPECT_TRUE(service->ReadFileToStringT("/proc/short", &out));
    EXPECT_EQ(out, "ab");
}

TEST(SplitStringTest, SkipsEmptyTokensAndAppends) {
    std::vector<std::string> out = {"kept"};
    splitString("a,,b", ",", &out);
    EXPECT_EQ(out, (std::vector<std::string>{"kept", "a", "b"}));
    out.clear();
    splitString(";1 2;;3 ", "; ", &out);
    EXPECT_EQ(out, (std::vector<std::string>{"1", "2", "3"}));
    out.clear();
    splitString(",,,", ",", &out);
    EXPECT_TRUE(out.empty());
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
