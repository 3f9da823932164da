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
using ::aidl::vendor::vyren::hardware::performance::ProcReqItemHal;
using ::aidl::vendor::vyren::hardware::performance::QuilbexVersionRet;
using ::ndk::ScopedAStatus;

constexpr char kAbsent[] = "perfctl.test/absent";
const std::string kStringResult("line 1\nline 2 \xc3\xa9\0tail", 20);

// Answers a few operations itself and records the arguments they receive.
class TestService : public Performance {
  public:
    using Performance::Performance;

    ScopedAStatus addAcmDirName(const std::string& dir, int64_t flag, int32_t* ret) override {
        calls.push_back("addAcmDirName " + dir + " " + std::to_string(flag));
        *ret = -7;
        return ScopedAStatus::ok();
    }
    ScopedAStatus isJankTaskTrackEnable(bool* ret) override {
        *ret = true;
        return ScopedAStatus::ok();
    }
    ScopedAStatus clearTaskTrackGroup(int32_t group) override {
        calls.push_back("clearTaskTrackGroup " + std::to_string(group));
        return ScopedAStatus::ok();
    }
    ScopedAStatus setFreqGoverner(const std::string& governor, const std::vector<int32_t>& policies,
                                  int32_t* ret) override {
        std::vector<std::string> words;
        for (const int32_t policy : policies) words.push_back(std::to_string(policy));
        calls.push_back("setFreqGoverner " + governor + " [" + android::base::Join(words, ' ') +
                        "]");
        *ret = static_cast<int32_t>(policies.size());
        return ScopedAStatus::ok();
    }
    ScopedAStatus readVersion(std::string* ret) override {
        *ret = kStringResult;
        return ScopedAStatus::ok();
    }
    ScopedAStatus getHIAllocWait(ProcReqHal* ret) override {
        ProcReqItemHal item;
        item.key = "total";
        item.separator = "\t";
        item.flag = 1;
        ret->path = "/proc/hi";
        ret->items = {item};
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

    std::vector<std::string> calls;
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
    const char* const kGeneral = "usage: perfctl [--service INSTANCE] OPERATION [ARG...]\n";
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, kGeneral},
        {{"--bogus"}, kGeneral},
        {{"--service"}, kGeneral},
        {{"--list", "extra"}, kGeneral},
        {{"AddAcmDirName", "d", "1"}, "unknown operation AddAcmDirName"},
        {{"addAcmDirName", "d"},
         "perfctl: addAcmDirName takes 2 arguments, got 1\n"
         "usage: perfctl addAcmDirName String long -> int\n"},
        {{"getKernelVersion", "1"}, "usage: perfctl getKernelVersion -> int\n"},
        {{"addAcmDirName", "d", "12x"},
         "perfctl: addAcmDirName: argument 2 is not a long: \"12x\"\n"
         "usage: perfctl addAcmDirName String long -> int\n"},
        {{"readVyrenReserve3", "0", "2147483648"},
         "argument 2 is not an int: \"2147483648\"\n"
         "usage: perfctl readVyrenReserve3 int int -> String\n"},
        {{"setWakeSeedThread", "1", "true", "yes"},
         "usage: perfctl setWakeSeedThread String boolean boolean -> int\n"},
        {{"setFreqGoverner", "g", "1,,2"}, "usage: perfctl setFreqGoverner String int[] -> int\n"},
    };
    for (const auto& [words, message] : cases) {
        // An absent service: usage is checked before any lookup.
        std::vector<std::string> args = {"--service", kAbsent};
        args.insert(args.end(), words.begin(), words.end());
        SCOPED_TRACE(android::base::Join(args, ' '));
        const Outcome outcome = Perfctl(args);
        EXPECT_EQ(outcome.status, kExitUsage);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
    }
}

TEST_F(CliTest, ResultsPrintedByType) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"addAcmDirName", "/data/a b", "-9223372036854775808"}, "-7\n"},
        {{"isJankTaskTrackEnable"}, "true\n"},
        {{"clearTaskTrackGroup", "3"}, ""},
        {{"setFreqGoverner", "schedutil", ""}, "0\n"},
        {{"readVersion"}, kStringResult},
        {{"getHIAllocWait"},
         R"({"path":"/proc/hi","items":[{"key":"total","separator":"\t","flag":1}]})"
         "\n"},
    };
    for (const auto& [words, out] : cases) {
        SCOPED_TRACE(android::base::Join(words, ' '));
        const Outcome outcome = Call(words);
        EXPECT_EQ(outcome.status, kExitOk);
        EXPECT_EQ(outcome.out, out);
        EXPECT_EQ(outcome.err, "");
    }
}

TEST_F(CliTest, ArgumentsReachTheServiceConverted) {
    EXPECT_EQ(Call({"addAcmDirName", "/data/a b", "+12"}).status, kExitOk);
    // After the operation, words that look like options are arguments.
    EXPECT_EQ(Call({"clearTaskTrackGroup", "-1"}).status, kExitOk);
    EXPECT_EQ(Call({"setFreqGoverner", "performance", "2147483647,-2147483648"}).status, kExitOk);
    EXPECT_EQ(mService->calls, (std::vector<std::string>{
                                   "addAcmDirName /data/a b 12",
                                   "clearTaskTrackGroup -1",
                                   "setFreqGoverner performance [2147483647 -2147483648]",
                               }));
}

TEST_F(CliTest, FailedCallsReportOneLine) {
    for (const std::string op : {"readQuilbexVersion", "getKernelVersion"}) {
        const Outcome outcome = Call({op});
        EXPECT_EQ(outcome.status, kExitCallFailed) << op;
        EXPECT_EQ(outcome.out, "") << op;
        EXPECT_EQ(outcome.err.find("perfctl: " + op + " failed: "), 0u) << outcome.err;
        EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
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

TEST_F(CliTest, DumpWritesTheServiceStateToStdout) {
    // Every word after --dump goes to the service, option-like ones included.
    Outcome outcome = Call({"--dump", "-a", "two words", "--list"});
    EXPECT_EQ(outcome.status, kExitOk);
    EXPECT_EQ(outcome.out, "state [-a|two words|--list]\n");

    outcome = Call({"--dump", "fail"});
    EXPECT_EQ(outcome.status, kExitCallFailed);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.find("perfctl: dump of " + mInstance + " failed: "), 0u);
}

}  // namespace
}  // namespace perfctl
