// The service object: its start-up state, the interface version it reports, its dump, and an
// answer at every transaction code.

#include <android-base/file.h>
#include <android-base/properties.h>
#include <android-base/strings.h>
#include <android-base/unique_fd.h>
#include <android/log.h>
#include <sys/mman.h>

#include "NodeRootFixture.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

constexpr char kTag[] = "PerformanceService";

using StartupTest = NodeRootTest;
using ServiceTest = NodeRootTest;

TEST_F(StartupTest, LogsKernelVersionDebugFlagAndMemcgRoot) {
    struct Case {
        const char* versionLine;
        const char* mounts;
        const char* debugProperty;
        std::string expectedVersion;
        std::string expectedMemcg;
    };
    const Case cases[] = {
        {"Linux version 5.10.66-android12-9-00001-g1234 (build@host) #1 SMP\n",
         "none /dev/memcg cgroup rw,nosuid,nodev,noexec,relatime,memory 0 0\n", "false",
         "Linux version 5.10.66 Debug is 0\n", "MemcgRootPath is initialized to /dev/memcg/\n"},
        {"Linux version 4.19 #1 SMP PREEMPT\n",
         "cgroup /sys/fs/cgroup/memory/ cgroup rw,memory 0 0\n", "true",
         "Linux version 4.19.0 Debug is 1\n",
         "MemcgRootPath is initialized to /sys/fs/cgroup/memory/\n"},
        {"not a version line\n", "none /dev/cpuset cgroup rw,cpuset 0 0\n", "1",
         "Linux version 0.0.0 Debug is 1\n", "MemcgRootPath is initialized to /dev/memcg/\n"},
        // An empty version node still gives both lines; an unset or non-boolean property is off.
        {"", "", "", "Linux version 0.0.0 Debug is 0\n",
         "MemcgRootPath is initialized to /dev/memcg/\n"},
        {"Linux version 6.1.25\n", "", "maybe", "Linux version 6.1.25 Debug is 0\n",
         "MemcgRootPath is initialized to /dev/memcg/\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.versionLine);
        writeNode("/proc/version", c.versionLine);
        writeNode("/proc/mounts", c.mounts);
        android::base::SetProperty("persist.sys.assert.panic", c.debugProperty);
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
    const char* const older = "/proc/vyren_healthinfo/kmalloc_debug_enable";
    writeNode(older, "0");
    int32_t result = 99;
    ASSERT_TRUE(service->enableKmallocDebug(&result).isOk());
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readNode(older), "1");

    clearLogs();
    char buffer[8];
    EXPECT_EQ(service->readInterface("/proc/absent", 0, buffer, sizeof(buffer)), -1);
    EXPECT_EQ(logsOf(kTag),
              (std::vector<LogLine>{{kTag, ANDROID_LOG_DEBUG,
                                     "open /proc/absent failed! err:No such file or directory, "
                                     "Linux version 0.0.0"}}));
}

TEST_F(ServiceTest, ReportsFrozenVersionAndHash) {
    auto service = makeService("5.15.78");
    int32_t version = 0;
    ASSERT_TRUE(service->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 2);
    std::string frozen;
    ASSERT_TRUE(android::base::ReadFileToString(PERFORMANCE_V2_HASH_FILE, &frozen));
    std::string hash;
    ASSERT_TRUE(service->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, android::base::Trim(frozen));
}

TEST_F(ServiceTest, DumpPrintsTheServiceState) {
    auto service = makeService("5.15.78");
    android::base::unique_fd file(memfd_create("dump", MFD_CLOEXEC));
    ASSERT_GE(file, 0);
    const char* args[] = {"-a"};
    ASSERT_EQ(service->dump(file, args, 1), STATUS_OK);
    std::string text;
    ASSERT_EQ(lseek(file, 0, SEEK_SET), 0);
    ASSERT_TRUE(android::base::ReadFdToString(file, &text));
    EXPECT_EQ(text, "node root: " + mRoot +
                        "\n"
                        "kernel version: 5.15.78 (newer node tree)\n"
                        "debug: 0\n"
                        "memcg root: /dev/memcg/\n"
                        "jank version: (not read yet)\n"
                        "task tracking: disabled\n"
                        "task-track table: (empty)\n"
                        "storage nodes:\n"
                        "  hpb_params: 1\n"
                        "  hpb_stats: 0\n"
                        "memory statistics device: fd -1, buffers none, capacity 400\n");
}

// Every operation answers at its code, built or not, whatever its arguments; past the last code
// nothing does. Zero words decode as default arguments of any signature.
TEST_F(ServiceTest, EveryTransactionCodeAnswers) {
    constexpr int kOperations = 171;
    auto service = makeService("5.15.78");
    ndk::SpAIBinder binder = service->asBinder();
    for (int slot = 0; slot <= kOperations; ++slot) {
        SCOPED_TRACE("slot " + std::to_string(slot));
        ::ndk::ScopedAParcel in;
        ASSERT_EQ(AIBinder_prepareTransaction(binder.get(), in.getR()), STATUS_OK);
        for (int i = 0; i < 32; ++i) AParcel_writeInt32(in.get(), 0);
        ::ndk::ScopedAParcel out;
        const binder_status_t status = AIBinder_transact(
            binder.get(), FIRST_CALL_TRANSACTION + slot, in.getR(), out.getR(), 0);
        if (slot == kOperations) {
            EXPECT_EQ(status, STATUS_UNKNOWN_TRANSACTION);
            break;
        }
        ASSERT_EQ(status, STATUS_OK);
        ::ndk::ScopedAStatus reply;
        ASSERT_EQ(AParcel_readStatusHeader(out.get(), reply.getR()), STATUS_OK);
        EXPECT_TRUE(reply.isOk() || reply.getExceptionCode() == EX_UNSUPPORTED_OPERATION)
            << reply.getDescription();
    }
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
