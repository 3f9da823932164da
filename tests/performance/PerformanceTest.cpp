// The service object: its start-up state, the kernel version it goes by, its dump, and an answer
// at every transaction code.

#include <android-base/file.h>
#include <android-base/properties.h>
#include <android-base/unique_fd.h>
#include <sys/mman.h>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Debug, testing::Error;

using StartupTest = NodeRootTest;
using ServiceTest = NodeRootTest;

TEST_F(StartupTest, LogsKernelVersionDebugFlagAndMemcgRoot) {
    // The version node, the mounts and the debug property; the version and memcg root logged.
    const std::tuple<const char*, const char*, const char*, const char*, const char*> cases[] = {
        {"Linux version 5.10.66-android12-9-00001-g1234 (build@host) #1 SMP\n",
         "none /dev/memcg cgroup rw,nosuid,nodev,noexec,relatime,memory 0 0\n", "false",
         "5.10.66 Debug is 0", "/dev/memcg/"},
        {"Linux version 4.19 #1 SMP PREEMPT\n",
         "cgroup /sys/fs/cgroup/memory/ cgroup rw,memory 0 0\n", "true", "4.19.0 Debug is 1",
         "/sys/fs/cgroup/memory/"},
        {"not a version line\n", "none /dev/cpuset cgroup rw,cpuset 0 0\n", "1", "0.0.0 Debug is 1",
         "/dev/memcg/"},
        // An empty version node still gives both lines; an unset property is off.
        {"", "", "", "0.0.0 Debug is 0", "/dev/memcg/"},
    };
    for (const auto& [version, mounts, property, logged, memcg] : cases) {
        SCOPED_TRACE(version);
        writeNode("/proc/version", version);
        writeNode("/proc/mounts", mounts);
        android::base::SetProperty("persist.sys.assert.panic", property);
        clearLogs();
        makeService();
        EXPECT_EQ(
            logs(),
            std::vector({Debug(std::string("Linux version ") + logged + "\n"),
                         Debug(std::string("MemcgRootPath is initialized to ") + memcg + "\n")}));
    }
}

TEST_F(StartupTest, UnreadableVersionSelectsOlderNodesAndReportsZeroVersion) {
    auto service = makeService();  // no proc/version at all
    EXPECT_EQ(logs(),
              std::vector{Error("Failed to open /proc/version (2): No such file or directory")});
    const char* const older = "/proc/vyren_healthinfo/kmalloc_debug_enable";
    writeNode(older, "0");
    EXPECT_EQ(testing::call(&Performance::enableKmallocDebug)(*service), "0");
    EXPECT_EQ(readNode(older), "1");
    clearLogs();
    EXPECT_EQ(testing::call(&Performance::getVmallocUsed)(*service), "");
    EXPECT_EQ(logs(), std::vector{Debug("open /proc/vyren_healthinfo/vmalloc_used failed! err:No "
                                        "such file or directory, Linux version 0.0.0")});
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
        ::ndk::ScopedAParcel in, out;
        ASSERT_EQ(AIBinder_prepareTransaction(binder.get(), in.getR()), STATUS_OK);
        for (int i = 0; i < 32; ++i) AParcel_writeInt32(in.get(), 0);
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
