// The daemon as a separate process on a copy of a simulated device, called through perfctl and
// through the generated proxy of this process.

#include <aidl/vendor/vyren/hardware/performance/IPerformance.h>
#include <android-base/file.h>
#include <android-base/strings.h>
#include <android/binder_ibinder.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <future>
#include <thread>

#include "DeviceFixture.h"
#include "FixedRecords.h"

namespace e2e {
namespace {

using performance::IPerformance;

constexpr char kVmallocUsed[] = "/proc/vyren_mem/memleak_detect/vmalloc_used";
constexpr char kStackHash[] = "/proc/vyren_mem/memleak_detect/stack_hash";
constexpr char kKmallocDebugEnable[] = "/proc/vyren_mem/memleak_detect/kmalloc_debug_enable";
constexpr char kKmallocDebugCreate[] = "/proc/vyren_mem/memleak_detect/kmalloc_debug_create";

std::shared_ptr<IPerformance> Proxy(const ndk::SpAIBinder& binder) {
    return IPerformance::fromBinder(binder);
}

// The daemon on a copy of the kernel 5.15 device.
class DaemonTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        if (HasFatalFailure()) return;
        mDaemon = startDaemon();
        ASSERT_NE(mDaemon, nullptr);
        mBinder = lookUp();
        ASSERT_NE(mBinder.get(), nullptr);
        mService = Proxy(mBinder);
        ASSERT_NE(mService, nullptr);
    }

    // Still running, and answering a fresh client with the node's text.
    void expectServing() {
        EXPECT_FALSE(mDaemon->ended()) << DescribeStatus(mDaemon->status());
        const RunResult used = perfctl({"getVmallocUsed"});
        EXPECT_TRUE(used.exitedWith(0)) << used.describe();
        EXPECT_EQ(used.out, readNode(kVmallocUsed));
    }

    Child* mDaemon = nullptr;
    ndk::SpAIBinder mBinder;
    std::shared_ptr<IPerformance> mService;
};

// ---- perfctl ------------------------------------------------------------------------------------

// A successful command and what it leaves in a node.
struct CommandCase {
    std::vector<std::string> args;
    const char* out;
    const char* node;        // nullptr: the command only reads
    const char* nodePrefix;  // what the node starts with afterwards
};

const CommandCase kCommands[] = {
    {{"enableKmallocDebug"}, "0\n", kKmallocDebugEnable, "1"},
    {{"disableVmallocDebug"}, "0\n", "/proc/vyren_mem/memleak_detect/vmalloc_debug_enable", "0"},
    {{"writeKmallocDebugCreate", "-1"}, "2\n", kKmallocDebugCreate, "-1"},
    {{"writeKmallocDebugCreateWithType", "slab-4096"}, "9\n", kKmallocDebugCreate, "slab-4096"},
    {{"writeMemleakDetectThread", "300"},
     "3\n",
     "/proc/vyren_mem/memleak_detect/memleak_detect_thread",
     "300"},
    {{"writeVaFeature", "0"}, "1\n", "/proc/vyren_mem/memleak_detect/va_feature", "0"},
    {{"readVaFeature"}, "0\n", nullptr, nullptr},
};

TEST_F(DaemonTest, PerfctlPrintsResultsAndTheNodesChange) {
    for (const auto& command : kCommands) {
        SCOPED_TRACE(android::base::Join(command.args, ' '));
        const RunResult result = perfctl(command.args);
        ASSERT_TRUE(result.exitedWith(0)) << result.describe();
        EXPECT_EQ(result.out, command.out);
        EXPECT_EQ(result.err, "");
        if (command.node != nullptr) {
            EXPECT_TRUE(android::base::StartsWith(readNode(command.node), command.nodePrefix))
                << readNode(command.node);
        }
    }
}

TEST_F(DaemonTest, PerfctlPrintsReportsAsTheirExactBytes) {
    const std::pair<const char*, const char*> reports[] = {{"getVmallocUsed", kVmallocUsed},
                                                           {"getVmallocDebug", kStackHash}};
    for (const auto& [op, node] : reports) {
        SCOPED_TRACE(op);
        const RunResult result = perfctl({op});
        ASSERT_TRUE(result.exitedWith(0)) << result.describe();
        EXPECT_EQ(result.out, readNode(node));
    }
}

TEST_F(DaemonTest, FullSizeReportCrossesWhole) {
    // Longer than the report's 524288-byte buffer, which comes back full: 1 MiB as UTF-16.
    std::string node;
    while (node.size() < 600000) node += "hash:0x5e1f00d7 count:42 size:4096 frames:12\n";
    writeNode(kStackHash, node);
    const std::string report = node.substr(0, 524288);

    std::string text;
    ASSERT_TRUE(mService->getVmallocDebug(&text).isOk());
    EXPECT_TRUE(text == report) << text.size() << " bytes";
    const RunResult printed = perfctl({"getVmallocDebug"});
    ASSERT_TRUE(printed.exitedWith(0)) << printed.err;
    EXPECT_TRUE(printed.out == report) << printed.out.size() << " bytes";
}

TEST_F(DaemonTest, PerfctlReportsAnUnbuiltOperationOnOneLine) {
    const RunResult result = perfctl({"getDdrResidency"});
    EXPECT_TRUE(result.exitedWith(1)) << result.describe();
    EXPECT_EQ(result.out, "");
    ASSERT_FALSE(result.err.empty());
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
}

TEST_F(DaemonTest, PerfctlRefusesBadCommandLinesBeforeCalling) {
    const std::string before = readNode(kKmallocDebugCreate);
    const std::vector<std::vector<std::string>> commands = {
        {},
        {"noSuchOperation"},
        {"writeKmallocDebugCreate"},
        {"writeKmallocDebugCreate", "abc"},
        {"writeKmallocDebugCreate", "1", "2"},
        {"writeKmallocDebugCreate", "2147483648"},
        {"writeKmallocDebugCreate", "0x10"},
        {"--service"},
    };
    for (const auto& args : commands) {
        SCOPED_TRACE(android::base::Join(args, ' '));
        const RunResult result = perfctl(args);
        EXPECT_TRUE(result.exitedWith(2)) << result.describe();
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err, "");
    }
    EXPECT_EQ(readNode(kKmallocDebugCreate), before);
}

TEST_F(DaemonTest, PerfctlListsEveryOperationInSlotOrder) {
    const RunResult result = perfctl({"--list"});
    ASSERT_TRUE(result.exitedWith(0)) << result.describe();
    ASSERT_FALSE(result.out.empty());
    ASSERT_EQ(result.out.back(), '\n');
    const std::vector<std::string> lines =
        android::base::Split(result.out.substr(0, result.out.size() - 1), "\n");
    ASSERT_EQ(lines.size(), 171u);
    EXPECT_EQ(lines[0], "0 addAcmDirName(String, long) -> int");
    EXPECT_EQ(lines[57], "57 getVmallocUsed() -> String");
    EXPECT_EQ(lines[152], "152 writeVaFeature(int) -> int");
    EXPECT_EQ(lines[170], "170 getWakeThreadsAffinityOrdered(String, int) -> TaskWakeInfo");
}

TEST_F(DaemonTest, PerfctlFailsWhenNoServiceHasTheName) {
    const RunResult result = perfctl({"--service", "no.such.IService/default", "getVmallocUsed"});
    EXPECT_TRUE(result.exitedWith(1)) << result.describe();
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err, "");
}

// ---- the generated proxy ------------------------------------------------------------------------

TEST_F(DaemonTest, ProxyCallsReachTheDaemonsNodes) {
    EXPECT_TRUE(AIBinder_isRemote(mBinder.get()));

    std::string used;
    ASSERT_TRUE(mService->getVmallocUsed(&used).isOk());
    EXPECT_EQ(used, readNode(kVmallocUsed));

    // The largest reply the daemon sends: the whole stack-hash report.
    std::string stackHash;
    ASSERT_TRUE(mService->getVmallocDebug(&stackHash).isOk());
    EXPECT_EQ(stackHash, readNode(kStackHash));

    int32_t result = -100;
    ASSERT_TRUE(mService->enableKmallocDebug(&result).isOk());
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readNode(kKmallocDebugEnable), "1");

    ASSERT_TRUE(mService->writeKmallocDebugCreate(-1, &result).isOk());
    EXPECT_EQ(result, 2);
    EXPECT_TRUE(android::base::StartsWith(readNode(kKmallocDebugCreate), "-1"));

    // Text the caller chose arrives byte for byte, multi-byte UTF-8 included.
    const std::string type = "kmalloc-\xc3\xa9\xf0\x9f\x98\x80";
    ASSERT_TRUE(mService->writeKmallocDebugCreateWithType(type, &result).isOk());
    EXPECT_EQ(result, static_cast<int32_t>(type.size()));
    EXPECT_TRUE(android::base::StartsWith(readNode(kKmallocDebugCreate), type));

    // A request larger than a socket buffer arrives whole.
    const std::string large(300 * 1024, 'k');
    ASSERT_TRUE(mService->writeKmallocDebugCreateWithType(large, &result).isOk());
    EXPECT_EQ(result, static_cast<int32_t>(large.size()));
    EXPECT_EQ(readNode(kKmallocDebugCreate), large);
}

TEST_F(DaemonTest, ProxyGetsFailureValuesAndExceptions) {
    // Failures of built operations travel in the result, with an OK status.
    std::filesystem::remove_all(nodePath("/proc/vyren_mem"));
    std::string used = "unchanged";
    ASSERT_TRUE(mService->getVmallocUsed(&used).isOk());
    EXPECT_EQ(used, "");
    int32_t result = 0;
    ASSERT_TRUE(mService->enableKmallocDebug(&result).isOk());
    EXPECT_EQ(result, -1);
    ASSERT_TRUE(mService->writeVaFeature(1, &result).isOk());
    EXPECT_EQ(result, -2);

    // Operations not built answer an exception.
    std::string text;
    ndk::ScopedAStatus status = mService->getDdrResidency(&text);
    EXPECT_EQ(status.getExceptionCode(), EX_UNSUPPORTED_OPERATION) << status.getDescription();
    performance::TaskWakeInfo wake;
    status = mService->getWakeThreadsAffinityOrdered(kWakeHandle, 2, &wake);
    EXPECT_EQ(status.getExceptionCode(), EX_UNSUPPORTED_OPERATION) << status.getDescription();

    int32_t version = 0;
    ASSERT_TRUE(mService->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 2);
    std::string hash;
    ASSERT_TRUE(mService->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, IPerformance::hash);
}

// ---- several clients ----------------------------------------------------------------------------

TEST_F(DaemonTest, FourConcurrentClientsEachGetTheirOwnAnswers) {
    constexpr int kClients = 4;
    constexpr int kCalls = 150;
    const std::string used = readNode(kVmallocUsed);
    const std::string stackHash = readNode(kStackHash);

    std::promise<void> go;
    std::shared_future<void> started = go.get_future().share();
    std::atomic<int> wrong{0};
    std::vector<std::string> firstFault(kClients);
    std::vector<std::thread> clients;
    for (int client = 0; client < kClients; ++client) {
        clients.emplace_back([&, client] {
            // Each client looks the service up on its own.
            std::shared_ptr<IPerformance> service = Proxy(lookUp());
            if (service == nullptr) {
                firstFault[client] = "no service";
                ++wrong;
                return;
            }
            started.wait();
            auto fault = [&](const std::string& what) {
                if (firstFault[client].empty()) firstFault[client] = what;
                ++wrong;
            };
            for (int call = 0; call < kCalls; ++call) {
                std::string text;
                int32_t result = 0;
                switch (call % 3) {
                    case 0:
                        if (!service->getVmallocUsed(&text).isOk() || text != used) {
                            fault("getVmallocUsed: \"" + text + "\"");
                        }
                        break;
                    case 1: {
                        // A length no other client sends at this step, so a reply delivered to
                        // the wrong caller shows.
                        const std::string type(1 + (client * kCalls + call) % 400, 'a' + client);
                        if (!service->writeKmallocDebugCreateWithType(type, &result).isOk() ||
                            result != static_cast<int32_t>(type.size())) {
                            fault("writeKmallocDebugCreateWithType(" + std::to_string(type.size()) +
                                  " bytes) = " + std::to_string(result));
                        }
                        break;
                    }
                    default:
                        if (!service->getVmallocDebug(&text).isOk() || text != stackHash) {
                            fault("getVmallocDebug: " + std::to_string(text.size()) + " bytes");
                        }
                }
            }
        });
    }
    go.set_value();
    for (auto& client : clients) client.join();

    EXPECT_EQ(wrong.load(), 0);
    for (int client = 0; client < kClients; ++client) {
        EXPECT_EQ(firstFault[client], "") << "client " << client;
    }
    expectServing();
}

TEST_F(DaemonTest, DaemonServesOnAfterClientsAreKilledMidCall) {
    // A report large enough that each call spends its time moving bytes, so a kill lands inside
    // a call rather than between two.
    std::string report = "stack_hash report\n";
    while (report.size() < 400 * 1024) report += "hash:0x5e1f00d7 count:42 size:4096 frames:12\n";
    writeNode(kStackHash, report);

    // Each kill lands inside some call only with some likelihood; enough rounds make a daemon
    // that dies with a caller all but certain to be caught.
    constexpr int kRounds = 12;
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        auto client =
            Child::Spawn({kClient, kDefaultInstance, "loop"},
                         mDir + "/client-" + std::to_string(round) + ".log", Child::Output::kPipe);
        ASSERT_NE(client, nullptr);
        for (int call = 0; call < 2 + round % 3; ++call) {
            std::string line;
            ASSERT_TRUE(client->readLine(&line, kCallLimit)) << client->log();
            ASSERT_EQ(line, std::to_string(report.size()));
        }
        client->sendSignal(SIGKILL);
        ASSERT_TRUE(client->waitForEnd(kCallLimit));
        EXPECT_TRUE(WIFSIGNALED(client->status()) && WTERMSIG(client->status()) == SIGKILL)
            << DescribeStatus(client->status()) << "\n"
            << client->log();
        ASSERT_FALSE(mDaemon->ended()) << DescribeStatus(mDaemon->status());
    }

    std::string text;
    ASSERT_TRUE(mService->getVmallocDebug(&text).isOk());
    EXPECT_EQ(text, report);
    expectServing();
}

// ---- process life -------------------------------------------------------------------------------

TEST_F(DaemonTest, SecondDaemonOnTheSameNameAbortsAndTheFirstKeepsIt) {
    const RunResult second = RunProgram({kDaemon, "--root", mDevice}, kStartLimit, [] {
        // The abort is expected; its core is not wanted.
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
    });
    EXPECT_TRUE(second.killedBy(SIGABRT)) << second.describe();
    const bool checkFailed =
        second.err.find("Check failed: status == STATUS_OK") != std::string::npos;
    EXPECT_TRUE(checkFailed) << second.err;

    expectServing();
    std::string used;
    ASSERT_TRUE(mService->getVmallocUsed(&used).isOk());
    EXPECT_EQ(used, readNode(kVmallocUsed));
}

using StartTest = DeviceTest;

TEST_F(StartTest, DaemonRefusesToServeWithoutANodeRoot) {
    // Without --root a host daemon would serve, and let callers change, this machine's nodes.
    const RunResult result = RunProgram({kDaemon}, kStartLimit);
    EXPECT_TRUE(result.exitedWith(2)) << result.describe();
    EXPECT_NE(result.err.find("--root /"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("tools/serve.sh"), std::string::npos) << result.err;
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

TEST_F(DaemonTest, RestartedDaemonTakesItsNameBackAfterACrash) {
    mDaemon->sendSignal(SIGKILL);
    ASSERT_TRUE(mDaemon->waitForEnd(kCallLimit));

    // The old proxy fails instead of waiting, and so does a new client.
    std::string used;
    EXPECT_FALSE(mService->getVmallocUsed(&used).isOk());
    const RunResult orphan = perfctl({"getVmallocUsed"});
    EXPECT_TRUE(orphan.exitedWith(1)) << orphan.describe();

    // As init would after the crash: the same daemon on the same name.
    mDaemon = startService(kDaemon, kDefaultInstance);
    ASSERT_NE(mDaemon, nullptr);
    expectServing();
}

// ---- both device trees --------------------------------------------------------------------------

struct TreeCase {
    const char* name;
    const char* tree;
    const char* kernelLine;
    const char* nodeDir;
};

void PrintTo(const TreeCase& c, std::ostream* os) {
    *os << c.tree;
}

class TreeTest : public DeviceTest, public ::testing::WithParamInterface<TreeCase> {};

TEST_P(TreeTest, DumpShowsTheServedTreeAndCallsUseItsNodes) {
    ASSERT_NE(startDaemon(GetParam().tree), nullptr);
    const std::string dir = GetParam().nodeDir;

    const RunResult dump = perfctl({"--dump"});
    ASSERT_TRUE(dump.exitedWith(0)) << dump.describe();
    const std::vector<std::string> lines = android::base::Split(dump.out, "\n");
    auto has = [&lines](const std::string& line) {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    };
    EXPECT_TRUE(has("node root: " + mDevice)) << dump.out;
    EXPECT_TRUE(has(GetParam().kernelLine)) << dump.out;
    EXPECT_TRUE(has("debug: 0")) << dump.out;

    const RunResult used = perfctl({"getVmallocUsed"});
    ASSERT_TRUE(used.exitedWith(0)) << used.describe();
    EXPECT_EQ(used.out, readNode(dir + "vmalloc_used"));

    const RunResult enable = perfctl({"enableKmallocDebug"});
    ASSERT_TRUE(enable.exitedWith(0)) << enable.describe();
    EXPECT_EQ(enable.out, "0\n");
    EXPECT_EQ(readNode(dir + "kmalloc_debug_enable"), "1");
}

INSTANTIATE_TEST_SUITE_P(Trees, TreeTest,
                         ::testing::Values(TreeCase{"Kernel515", "kernel-5.15",
                                                    "kernel version: 5.15.94 (newer node tree)",
                                                    "/proc/vyren_mem/memleak_detect/"},
                                           TreeCase{"Kernel419", "kernel-4.19",
                                                    "kernel version: 4.19.157 (older node tree)",
                                                    "/proc/vyren_healthinfo/"}),
                         [](const ::testing::TestParamInfo<TreeCase>& info) {
                             return info.param.name;
                         });

// ---- records, through the test service ----------------------------------------------------------

class RecordTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        if (HasFatalFailure()) return;
        copyTree("kernel-5.15");
        ASSERT_NE(startService(kTestService, kTestInstance), nullptr);
        mService = Proxy(lookUp(kTestInstance));
        ASSERT_NE(mService, nullptr);
    }

    RunResult call(std::vector<std::string> args) const {
        args.insert(args.begin(), {"--service", kTestInstance});
        return perfctl(args);
    }

    std::shared_ptr<IPerformance> mService;
};

TEST_F(RecordTest, ProcReqHalCrossesWhole) {
    performance::ProcReqHal record;
    ASSERT_TRUE(mService->getHIIowaitHung(&record).isOk());
    const performance::ProcReqHal expected = IowaitHungRecord();
    EXPECT_EQ(record.path, expected.path);
    ASSERT_EQ(record.items.size(), expected.items.size());
    for (size_t i = 0; i < expected.items.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(record.items[i].key, expected.items[i].key);
        EXPECT_EQ(record.items[i].separator, expected.items[i].separator);
        EXPECT_EQ(record.items[i].flag, expected.items[i].flag);
    }

    const RunResult printed = call({"getHIIowaitHung"});
    ASSERT_TRUE(printed.exitedWith(0)) << printed.describe();
    EXPECT_EQ(printed.out,
              R"({"path":"/proc/vyren_healthinfo/iowait_hung","items":[)"
              R"({"key":"hung_count","separator":":","flag":3},)"
              R"({"key":"max \"ms\"\tlast\\","separator":"=\n","flag":-2147483648},)"
              "{\"key\":\"d\xc3\xa9lai \xe5\x90\x8d \xf0\x9f\x98\x80\",\"separator\":\"\","
              "\"flag\":2147483647}]}\n");
}

TEST_F(RecordTest, TaskWakeInfoCrossesWithItsArguments) {
    for (const auto& [handle, count] : {std::pair<std::string, int32_t>{kWakeHandle, 7},
                                        std::pair<std::string, int32_t>{"1000", 7}}) {
        SCOPED_TRACE(handle);
        performance::TaskWakeInfo record;
        ASSERT_TRUE(mService->getWakeThreadsAffinityOrdered(handle, count, &record).isOk());
        const performance::TaskWakeInfo expected = WakeRecord(handle, count);
        EXPECT_EQ(record.status, expected.status);
        ASSERT_EQ(record.threads.size(), expected.threads.size());
        for (size_t i = 0; i < expected.threads.size(); ++i) {
            const auto& got = record.threads[i];
            const auto& want = expected.threads[i];
            EXPECT_EQ(std::vector<int32_t>({got.field1, got.field2, got.field3, got.field4,
                                            got.field5, got.field6, got.field7}),
                      std::vector<int32_t>({want.field1, want.field2, want.field3, want.field4,
                                            want.field5, want.field6, want.field7}));
        }
    }

    const RunResult printed = call({"getWakeThreadsAffinityOrdered", kWakeHandle, "7"});
    ASSERT_TRUE(printed.exitedWith(0)) << printed.describe();
    EXPECT_EQ(printed.out,
              R"({"status":7,"threads":[)"
              R"({"field1":1,"field2":2,"field3":3,"field4":4,"field5":5,"field6":6,"field7":7},)"
              R"({"field1":-2147483648,"field2":-1,"field3":0,"field4":2147483647,)"
              R"("field5":10123,"field6":580,"field7":3120}]})"
              "\n");
}

TEST_F(RecordTest, ProcMemStatRetCrossesWithItsArguments) {
    const std::vector<int32_t> pids = {580, 3121, -7};
    performance::ProcMemStatRet record;
    ASSERT_TRUE(mService->readMemoryByPids(pids, 9, &record).isOk());
    const performance::ProcMemStatRet expected = MemoryRecord(pids, 9);
    EXPECT_EQ(record.result, 9);
    ASSERT_EQ(record.stats.size(), expected.stats.size());
    for (size_t i = 0; i < expected.stats.size(); ++i) {
        const auto& got = record.stats[i];
        const auto& want = expected.stats[i];
        SCOPED_TRACE(want.name);
        EXPECT_EQ(got.name, want.name);
        EXPECT_EQ(got.flag, want.flag);
        EXPECT_EQ(got.value18, want.value18);
        EXPECT_EQ(
            std::vector<int32_t>({got.value20, got.value24, got.pid, got.value32, got.value36,
                                  got.value40, got.value44, got.value48, got.value52,
                                  got.smapsTotal, got.reserved, got.smapsDalvikHeap,
                                  got.smapsNativeMalloc, got.value72, got.value76, got.value80}),
            std::vector<int32_t>({want.value20, want.value24, want.pid, want.value32, want.value36,
                                  want.value40, want.value44, want.value48, want.value52,
                                  want.smapsTotal, want.reserved, want.smapsDalvikHeap,
                                  want.smapsNativeMalloc, want.value72, want.value76,
                                  want.value80}));
    }

    const RunResult printed = call({"readMemoryByPids", "580,3121", "3"});
    ASSERT_TRUE(printed.exitedWith(0)) << printed.describe();
    EXPECT_EQ(printed.out,
              R"({"result":3,"stats":[)"
              R"({"name":"proc-580","flag":true,"value18":233,"value20":600,"value24":604,)"
              R"("pid":580,"value32":612,"value36":616,"value40":620,"value44":624,)"
              R"("value48":628,"value52":632,"smapsTotal":-580,"reserved":-2147483648,)"
              R"("smapsDalvikHeap":1160,"smapsNativeMalloc":1740,"value72":652,"value76":656,)"
              R"("value80":2147483647},)"
              R"({"name":"proc-3121","flag":false,"value18":233,"value20":3141,"value24":3145,)"
              R"("pid":3121,"value32":3153,"value36":3157,"value40":3161,"value44":3165,)"
              R"("value48":3169,"value52":3173,"smapsTotal":-3121,"reserved":-2147483648,)"
              R"("smapsDalvikHeap":6242,"smapsNativeMalloc":9363,"value72":3193,)"
              R"("value76":3197,"value80":2147483647}]})"
              "\n");

    // An empty list crosses as an empty list.
    const RunResult empty = call({"readMemoryByPids", "", "0"});
    ASSERT_TRUE(empty.exitedWith(0)) << empty.describe();
    EXPECT_EQ(empty.out, "{\"result\":0,\"stats\":[]}\n");
}

TEST_F(RecordTest, QuilbexVersionRetCrossesWhole) {
    performance::QuilbexVersionRet record;
    ASSERT_TRUE(mService->readQuilbexVersion(&record).isOk());
    EXPECT_EQ(record.result, 0);
    EXPECT_EQ(record.major, 2);
    EXPECT_EQ(record.minor, 14);

    const RunResult printed = call({"readQuilbexVersion"});
    ASSERT_TRUE(printed.exitedWith(0)) << printed.describe();
    EXPECT_EQ(printed.out, "{\"result\":0,\"major\":2,\"minor\":14}\n");
}

// ---- who may call ------------------------------------------------------------------------------

// The test service admits these app uids besides root, as a device's policy would admit them.
constexpr char kAllowedApps[] = "10100-10199";

class CallerUidTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        if (HasFatalFailure()) return;
        if (geteuid() != 0) GTEST_SKIP() << "running clients under app uids needs root";
        copyTree("kernel-5.15");
        ASSERT_NE(startService(kTestService, kTestInstance, {"--allow-uid", kAllowedApps}), nullptr);
    }
};

struct UidCallCase {
    const char* name;
    uid_t uid;
    std::vector<std::string> argv;  // argv[0] is the program
    int exitCode;
    const char* out;
};

TEST_F(CallerUidTest, ServiceSeesTheUidOfEachCallerAndAdmitsOnlyAllowedOnes) {
    const UidCallCase cases[] = {
        {"proxy_inside", 10123, {kClient, kTestInstance, "uid"}, 0, "10123\n"},
        {"perfctl_inside",
         10123,
         {kPerfctl, "--service", kTestInstance, "getAcmOpstat"},
         0,
         "10123\n"},
        {"perfctl_outside", 10250, {kPerfctl, "--service", kTestInstance, "getAcmOpstat"}, 1, ""},
        {"dump_by_an_app", 10123, {kPerfctl, "--service", kTestInstance, "--dump"}, 1, ""},
    };
    for (const UidCallCase& c : cases) {
        SCOPED_TRACE(c.name);
        const RunResult result = runAsUid(c.uid, c.argv);
        EXPECT_TRUE(result.exitedWith(c.exitCode)) << result.describe();
        EXPECT_EQ(result.out, c.out);
    }

    // Root is always admitted, and its identity is unchanged by the others.
    std::shared_ptr<IPerformance> service = Proxy(lookUp(kTestInstance));
    ASSERT_NE(service, nullptr);
    int32_t uid = -1;
    ASSERT_TRUE(service->getAcmOpstat(&uid).isOk());
    EXPECT_EQ(uid, 0);
    const RunResult dump = perfctl({"--service", kTestInstance, "--dump"});
    EXPECT_TRUE(dump.exitedWith(0)) << dump.describe();
}

}  // namespace
}  // namespace e2e
