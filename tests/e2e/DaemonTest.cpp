// The daemon as a separate process on a copy of a simulated device: serving each tree, perfctl's
// exit status against it, a second daemon on its name, and its clients when it dies mid-call.

#include <android-base/strings.h>
#include <signal.h>
#include <sys/resource.h>

#include "DeviceFixture.h"

namespace e2e {
namespace {

constexpr char kVmallocUsed[] = "/proc/vyren_mem/memleak_detect/vmalloc_used";

class DaemonTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        if (HasFatalFailure()) return;
        mDaemon = startDaemon();
        ASSERT_NE(mDaemon, nullptr);
    }

    Child* mDaemon = nullptr;
};

TEST_F(DaemonTest, PerfctlExitStatusTellsOkFailedAndUsage) {
    const std::pair<std::vector<std::string>, int> rows[] = {
        {{"getVmallocUsed"}, 0},
        {{"--service", "no.such.IService/default", "getVmallocUsed"}, 1},
        {{"writeKmallocDebugCreate", "abc"}, 2},
        {{}, 2},
    };
    for (const auto& [args, status] : rows) {
        SCOPED_TRACE(android::base::Join(args, ' '));
        const RunResult result = perfctl(args);
        EXPECT_TRUE(result.exitedWith(status)) << result.describe();
        EXPECT_EQ(result.out, status == 0 ? readNode(kVmallocUsed) : "");
        EXPECT_EQ(result.err.empty(), status == 0) << result.err;
    }
}

TEST_F(DaemonTest, SecondDaemonOnTheSameNameAbortsAndTheFirstKeepsIt) {
    const RunResult second = RunProgram({kDaemon, "--root", mDevice}, kStartLimit, [] {
        // The abort is expected; its core is not wanted.
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
    });
    EXPECT_TRUE(second.killedBy(SIGABRT)) << second.describe();
    EXPECT_NE(second.err.find("Check failed: status == STATUS_OK"), std::string::npos) << second.err;

    EXPECT_FALSE(mDaemon->ended()) << DescribeStatus(mDaemon->status());
    const RunResult used = perfctl({"getVmallocUsed"});
    EXPECT_TRUE(used.exitedWith(0)) << used.describe();
    EXPECT_EQ(used.out, readNode(kVmallocUsed));
}

TEST_F(DaemonTest, ClientsOfADaemonKilledMidCallFailInsteadOfWaiting) {
    auto client = Child::Spawn({kClient, kDefaultInstance, "loop"}, mDir + "/client.log",
                               Child::Output::kPipe);
    ASSERT_NE(client, nullptr);
    std::string line;
    ASSERT_TRUE(client->readLine(&line, kCallLimit)) << client->log();

    mDaemon->sendSignal(SIGKILL);
    ASSERT_TRUE(mDaemon->waitForEnd(kCallLimit));
    ASSERT_TRUE(client->waitForEnd(kCallLimit)) << "the client still waits for a dead daemon";
    EXPECT_TRUE(WIFEXITED(client->status()) && WEXITSTATUS(client->status()) == 1)
        << DescribeStatus(client->status()) << "\n"
        << client->log();
}

// The daemon on each simulated tree reads that tree's kernel version and uses its nodes.
struct TreeCase {
    const char* name;
    const char* tree;
    const char* kernelLine;
    const char* nodeDir;
};

class TreeTest : public DeviceTest, public ::testing::WithParamInterface<TreeCase> {};

TEST_P(TreeTest, DaemonServesTheTreesNodes) {
    ASSERT_NE(startDaemon(GetParam().tree), nullptr);
    const std::string dir = GetParam().nodeDir;

    const RunResult dump = perfctl({"--dump"});
    ASSERT_TRUE(dump.exitedWith(0)) << dump.describe();
    EXPECT_NE(dump.out.find(std::string("\n") + GetParam().kernelLine + "\n"), std::string::npos)
        << dump.out;

    const RunResult used = perfctl({"getVmallocUsed"});
    ASSERT_TRUE(used.exitedWith(0)) << used.describe();
    EXPECT_EQ(used.out, readNode(dir + "vmalloc_used"));

    const RunResult enable = perfctl({"enableKmallocDebug"});
    ASSERT_TRUE(enable.exitedWith(0)) << enable.describe();
    EXPECT_EQ(readNode(dir + "kmalloc_debug_enable"), "1");
}

INSTANTIATE_TEST_SUITE_P(Trees, TreeTest,
                         ::testing::Values(TreeCase{"Kernel515", "kernel-5.15",
                                                    "kernel version: 5.15.94 (newer node tree)",
                                                    "/proc/vyren_mem/memleak_detect/"},
                                           TreeCase{"Kernel419", "kernel-4.19",
                                                    "kernel version: 4.19.157 (older node tree)",
                                                    "/proc/vyren_healthinfo/"}),
                         [](const auto& info) { return std::string(info.param.name); });


}  // namespace
}  // namespace e2e
