// The daemon as a separate process on a copy of a simulated device: serving each tree, perfctl's
// exit status against it, a second daemon on its name, its callers' uids, and its clients when it
// dies mid-call.

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "DeviceFixture.h"

namespace e2e {
namespace {

class DaemonTest : public DeviceTest {
  protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(DeviceTest::SetUp());
        ASSERT_NO_FATAL_FAILURE(copyTree("kernel-5.15"));
        ASSERT_NE(mDaemon = startDaemon(), nullptr);
    }

    Child* mDaemon = nullptr;
};

// Usage is checked before any lookup: no daemon needed.
TEST_F(DeviceTest, PerfctlExitsWithTwoOnAUsageError) {
    const RunResult result = perfctl({"writeKmallocDebugCreate", "abc"});
    EXPECT_TRUE(result.exitedWith(2)) << result.describe();
    EXPECT_EQ(result.out, "");
}

TEST_F(DaemonTest, SecondDaemonAbortsOnTheSameNameOrRefusesWithoutANodeRoot) {
    // Without --root a host daemon would serve, and let callers change, this machine's nodes.
    const RunResult rootless = RunProgram({kDaemon});
    EXPECT_TRUE(rootless.exitedWith(2)) << rootless.describe();
    EXPECT_NE(rootless.err.find("--root /"), std::string::npos) << rootless.err;
    EXPECT_NE(rootless.err.find("tools/serve.sh"), std::string::npos) << rootless.err;

    // The abort is expected; its core is not wanted. Children inherit the limit.
    const rlimit noCore = {0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_CORE, &noCore), 0);
    const RunResult second = RunProgram({kDaemon, "--root", mDevice});
    EXPECT_TRUE(second.killedBy(SIGABRT)) << second.describe();
    EXPECT_NE(second.err.find("Check failed: status == STATUS_OK"), std::string::npos) << second.err;

    // The first daemon keeps its name.
    EXPECT_FALSE(mDaemon->ended()) << mDaemon->result().describe();
    const RunResult used = perfctl({"getVmallocUsed"});
    EXPECT_TRUE(used.exitedWith(0)) << used.describe();
}

TEST_F(DaemonTest, ClientOfADaemonKilledMidCallFailsInsteadOfWaiting) {
    // A pipe that is open for writing but never written holds the daemon inside its one read of
    // the node. The daemon's open waits for a writer; opening the writing end succeeds only once
    // the daemon has begun opening the reading end.
    const std::string node = mDevice + "/sys/block/zram0/hybridswap_enable";
    ASSERT_EQ(unlink(node.c_str()), 0);
    ASSERT_EQ(mkfifo(node.c_str(), 0600), 0);
    Child client({kPerfctl, "hybridswap_zram_para_read", "0"});
    android::base::unique_fd writer;
    ASSERT_TRUE(WaitFor(
        [&] {
            writer.reset(open(node.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
            return writer.ok();
        },
        kLimit));
    ASSERT_FALSE(client.ended()) << client.result().describe();

    mDaemon->stop();  // SIGKILL: the daemon gets no chance to answer or close anything
    ASSERT_TRUE(client.waitForEnd(kLimit)) << "the client still waits for a dead daemon";
    EXPECT_TRUE(client.result().exitedWith(1)) << client.result().describe();
    EXPECT_EQ(client.result().out, "");
}

// The daemon on each simulated tree reads that tree's kernel version and uses its nodes.
// Name, directory under sim/, the line of the dump naming the kernel, where the leak nodes are.
using Tree = std::tuple<std::string, std::string, std::string, std::string>;
class TreeTest : public DeviceTest, public ::testing::WithParamInterface<Tree> {};

TEST_P(TreeTest, DaemonServesTheTreesNodes) {
    const auto& [name, dir, kernelLine, nodeDir] = GetParam();
    ASSERT_NO_FATAL_FAILURE(copyTree(dir));
    ASSERT_NE(startDaemon(), nullptr);
    const RunResult dump = perfctl({"--dump"}), used = perfctl({"getVmallocUsed"});
    EXPECT_TRUE(dump.exitedWith(0)) << dump.describe();
    EXPECT_TRUE(used.exitedWith(0)) << used.describe();
    EXPECT_NE(dump.out.find("\n" + kernelLine + "\n"), std::string::npos) << dump.out;
    EXPECT_EQ(used.out, readNode(nodeDir + "vmalloc_used"));
}

INSTANTIATE_TEST_SUITE_P(
    Trees, TreeTest,
    ::testing::Values(Tree("Kernel515", "kernel-5.15", "kernel version: 5.15.94 (newer node tree)",
                           "/proc/vyren_mem/memleak_detect/"),
                      Tree("Kernel419", "kernel-4.19", "kernel version: 4.19.157 (older node tree)",
                           "/proc/vyren_healthinfo/")),
    [](const auto& info) { return std::get<0>(info.param); });

// Who may call the daemon, through the one operation whose result depends on its caller: on a
// kernel 6.1 device whose UX setting leaves UX state to apps, only an app uid may set it.
TEST_F(DeviceTest, OnlyAllowedAppsSetUxState) {
    if (geteuid() != 0) GTEST_SKIP() << "running clients under other uids needs root";
    ASSERT_NO_FATAL_FAILURE(copyTree("kernel-5.15"));
    writeNode("/proc/version", "Linux version 6.1.25-android14-11-g8d9a2b3c4e5f (build@host)\n");
    writeNode("/proc/vyren_scheduler/sched_assist/disable_setting", "1\n");
    ASSERT_NE(startDaemon({"--allow-uid", "1000,10123"}), nullptr);

    // A non-app uid is turned away by the service itself; here an app passes, but may not dump.
    const RunResult dump = perfctl({"--dump"}, 10123);
    EXPECT_TRUE(dump.exitedWith(1)) << dump.describe();
    const RunResult write = perfctl({"writeUxState", "2", "580", "612"}, 10123);
    EXPECT_TRUE(write.exitedWith(0)) << write.describe();
    EXPECT_EQ(readNode("/proc/vyren_scheduler/sched_assist/ux_task"), "p 612 2");
}

}  // namespace
}  // namespace e2e
