// The command line end to end in one process: a test service registered by name, and Run()
// looking it up, calling it and printing what it answered.

#include <android-base/file.h>
#include <android-base/strings.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "Cli.h"
#include "Operation.h"
#include "Performance.h"

namespace perfctl {
namespace {

using ::aidl::vendor::vyren::hardware::performance::IPerformance;
using ::aidl::vendor::vyren::hardware::performance::Performance;
using ::aidl::vendor::vyren::hardware::performance::ProcReqHal;
using ::aidl::vendor::vyren::hardware::performance::QuilbexVersionRet;
using ::ndk::ScopedAStatus;

constexpr char kAbsent[] = "perfctl.test/absent";
const std::string kStringResult("line 1\nline 2 \xc3\xa9\0tail", 20);

// Answers a few operations itself and records the arguments they receive.
class TestService : public Performance {
  public:
    using Performance::Performance;

    ScopedAStatus addAcmDirName(const std::string& dir, int64_t flag, int32_t* ret) override {
        received = "addAcmDirName " + dir + " " + std::to_string(flag);
        *ret = -7;
        return ScopedAStatus::ok();
    }
    ScopedAStatus isJankTaskTrackEnable(bool* ret) override {
        *ret = true;
        return ScopedAStatus::ok();
    }
    ScopedAStatus clearTaskTrackGroup(int32_t group) override {
        received = "clearTaskTrackGroup " + std::to_string(group);
        return ScopedAStatus::ok();
    }
    ScopedAStatus setFreqGoverner(const std::string& governor, const std::vector<int32_t>& policies,
                                  int32_t* ret) override {
        received = "setFreqGoverner " + governor;
        for (const int32_t policy : policies) received += " " + std::to_string(policy);
        *ret = static_cast<int32_t>(policies.size());
        return ScopedAStatus::ok();
    }
    ScopedAStatus readVersion(std::string* ret) override {
        *ret = kStringResult;
        return ScopedAStatus::ok();
    }
    ScopedAStatus getHIAllocWait(ProcReqHal* ret) override {
        ret->path = "/proc/hi";
        ret->items = {{"total", "\t", 1}};
        return ScopedAStatus::ok();
    }
    ScopedAStatus readQuilbexVersion(QuilbexVersionRet*) override {
        return ScopedAStatus::fromServiceSpecificErrorWithMessage(-22, "bad\nrequest");
    }
    ScopedAStatus getKernelVersion(int32_t*) override {
        return ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
    }
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        const std::vector<std::string> words(args, args + numArgs);
        if (!words.empty() && words[0] == "fail") return STATUS_BAD_VALUE;
        const std::string text = "state [" + android::base::Join(words, '|') + "]\n";
        return android::base::WriteStringToFd(text, fd) ? STATUS_OK : STATUS_UNKNOWN_ERROR;
    }

    std::string received;  // the arguments of the last call that records them
};

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

class CliTest : public ::testing::Test {
  protected:
    void SetUp() override {
        mService = ::ndk::SharedRefBase::make<TestService>(mRoot.path);
        mInstance = std::string("perfctl.test/") +
                    ::testing::UnitTest::GetInstance()->current_test_info()->name();
        ASSERT_EQ(AServiceManager_addService(mService->asBinder().get(), mInstance.c_str()),
                  EX_NONE);
    }

    static Outcome Perfctl(const std::vector<std::string>& args) {
        TemporaryFile out;
        std::ostringstream err;
        Outcome outcome;
        outcome.status = perfctl::Run(args, out.fd, err);
        EXPECT_TRUE(android::base::ReadFileToString(out.path, &outcome.out));
        outcome.err = err.str();
        return outcome;
    }

    // Runs perfctl against this test's service.
    Outcome Call(std::vector<std::string> words) {
        words.insert(words.begin(), {"--service", mInstance});
        return Perfctl(words);
    }

    TemporaryDir mRoot;
    std::shared_ptr<TestService> mService;
    std::string mInstance;
};

TEST_F(CliTest, ListPrintsEveryOperationOnItsOwnLine) {
    const Outcome outcome = Perfctl({"--list"});
    EXPECT_EQ(outcome.status, kExitOk);
    const std::vector<std::string> lines = android::base::Split(outcome.out, "\n");
    ASSERT_EQ(lines.size(), Operations().size + 1);  // the text after the last newline is empty
    EXPECT_EQ(lines[0], "0 addAcmDirName(String, long) -> int");
    EXPECT_EQ(lines[94], "94 readMemoryByPids(int[], int) -> ProcMemStatRet");
    EXPECT_EQ(lines[170], "170 getWakeThreadsAffinityOrdered(String, int) -> TaskWakeInfo");
    EXPECT_EQ(lines.back(), "");
    // Listing needs no service.
    EXPECT_EQ(Perfctl({"--service", kAbsent, "--list"}).out, outcome.out);
}

TEST_F(CliTest, UsageErrorsNameTheExpectedSignature) {
    const char* const kGeneral =
        "[--service INSTANCE] OPERATION [ARG...]\n       perfctl [--service INSTANCE] --dump "
        "[ARG...]\n       perfctl --list\n       perfctl --help";
    const std::tuple<std::vector<std::string>, const char*, const char*> cases[] = {
        // words, message, usage
        {{}, "no operation given", kGeneral},
        {{"--bogus"}, "unknown option --bogus", kGeneral},
        {{"--service"}, "--service needs an instance name", kGeneral},
        {{"--list", "extra"}, "--list takes no arguments", kGeneral},
        {{"AddAcmDirName", "d", "1"},
         "unknown operation AddAcmDirName (perfctl --list shows them all)",
         kGeneral},
        {{"addAcmDirName", "d"},
         "addAcmDirName takes 2 arguments, got 1",
         "addAcmDirName String long -> int"},
        {{"getKernelVersion", "1"},
         "getKernelVersion takes 0 arguments, got 1",
         "getKernelVersion -> int"},
        {{"addAcmDirName", "d", "12x"},
         "addAcmDirName: argument 2 is not a long: \"12x\"",
         "addAcmDirName String long -> int"},
        {{"readVyrenReserve3", "0", "2147483648"},
         "readVyrenReserve3: argument 2 is not an int: \"2147483648\"",
         "readVyrenReserve3 int int -> String"},
        {{"setWakeSeedThread", "1", "true", "yes"},
         "setWakeSeedThread: argument 3 is not a boolean: \"yes\"",
         "setWakeSeedThread String boolean boolean -> int"},
        {{"setFreqGoverner", "g", "1,,2"},
         "setFreqGoverner: argument 2 is not an int[]: \"1,,2\"",
         "setFreqGoverner String int[] -> int"},
    };
    for (const auto& [words, message, usage] : cases) {
        // An absent service: usage is checked before any lookup.
        std::vector<std::string> args = {"--service", kAbsent};
        args.insert(args.end(), words.begin(), words.end());
        SCOPED_TRACE(android::base::Join(args, ' '));
        const Outcome outcome = Perfctl(args);
        EXPECT_EQ(outcome.status, kExitUsage);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err,
                  std::string("perfctl: ") + message + "\nusage: perfctl " + usage + "\n");
    }
}

// Each call prints its result and nothing else, or fails with one line on stderr.
TEST_F(CliTest, CallsPrintTheirResultOrTheirFailure) {
    const std::tuple<std::vector<std::string>, std::string, std::string, std::string> cases[] = {
        // words, stdout, stderr, what the service received if it records it
        {{"addAcmDirName", "/data/a b", "-9223372036854775808"},
         "-7\n",
         "",
         "addAcmDirName /data/a b -9223372036854775808"},
        {{"isJankTaskTrackEnable"}, "true\n", "", ""},
        // After the operation, words that look like options are arguments.
        {{"clearTaskTrackGroup", "-1"}, "", "", "clearTaskTrackGroup -1"},
        {{"setFreqGoverner", "schedutil", ""}, "0\n", "", "setFreqGoverner schedutil"},
        {{"setFreqGoverner", "performance", "2147483647,-2147483648"},
         "2\n",
         "",
         "setFreqGoverner performance 2147483647 -2147483648"},
        {{"readVersion"}, kStringResult, "", ""},
        {{"getHIAllocWait"},
         R"({"path":"/proc/hi","items":[{"key":"total","separator":"\t","flag":1}]})"
         "\n",
         "",
         ""},
        {{"readQuilbexVersion"},
         "",
         "perfctl: readQuilbexVersion failed: Exception EX_SERVICE_SPECIFIC (-8), service-specific "
         "error -22: 'bad request'\n",
         ""},
        {{"getKernelVersion"},
         "",
         "perfctl: getKernelVersion failed: Exception EX_UNSUPPORTED_OPERATION (-7)\n",
         ""},
        // Every word after --dump goes to the service, option-like ones included.
        {{"--dump", "-a", "two words", "--list"}, "state [-a|two words|--list]\n", "", ""},
        {{"--dump", "fail"},
         "",
         "perfctl: dump of " + mInstance + " failed: Transaction failed: STATUS_BAD_VALUE (-22)\n",
         ""},
    };
    for (const auto& [words, out, err, received] : cases) {
        SCOPED_TRACE(android::base::Join(words, ' '));
        mService->received.clear();
        const Outcome outcome = Call(words);
        EXPECT_EQ(outcome.status, err.empty() ? kExitOk : kExitCallFailed);
        EXPECT_EQ(outcome.out, out);
        EXPECT_EQ(outcome.err, err);
        EXPECT_EQ(mService->received, received);
    }
}

TEST_F(CliTest, MissingOrForeignServiceFailsTheCall) {
    for (const char* option : {"isJankTaskTrackEnable", "--dump"}) {
        const Outcome outcome = Perfctl({"--service", kAbsent, option});
        EXPECT_EQ(outcome.status, kExitCallFailed) << option;
        EXPECT_EQ(outcome.err, std::string("perfctl: service ") + kAbsent + " is not running\n");
    }

    AIBinder_Class* clazz = AIBinder_Class_define(
        "perfctl.test.IOther", [](void* args) { return args; }, [](void*) {},
        [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
            return STATUS_UNKNOWN_TRANSACTION;
        });
    ndk::SpAIBinder other(AIBinder_new(clazz, nullptr));
    const std::string instance = mInstance + "/other";
    ASSERT_EQ(AServiceManager_addService(other.get(), instance.c_str()), EX_NONE);
    const Outcome outcome = Perfctl({"--service", instance, "isJankTaskTrackEnable"});
    EXPECT_EQ(outcome.status, kExitCallFailed);
    EXPECT_EQ(outcome.err,
              "perfctl: service " + instance + " is not an " + IPerformance::descriptor + "\n");
}

}  // namespace
}  // namespace perfctl
