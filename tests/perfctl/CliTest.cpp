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

using ::aidl::vendor::vyren::hardware::performance::DeviceContext;
using ::aidl::vendor::vyren::hardware::performance::IPerformance;
using ::aidl::vendor::vyren::hardware::performance::Performance;
using ::aidl::vendor::vyren::hardware::performance::QuilbexVersionRet;
using ::ndk::ScopedAStatus;

constexpr char kAbsent[] = "perfctl.test/absent";
constexpr char kGeneralUsage[] =
    "[--service INSTANCE] OPERATION [ARG...]\n       perfctl [--service INSTANCE] --dump [ARG...]\n"
    "       perfctl --list\n       perfctl --help";
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
    ScopedAStatus readVersion(std::string* ret) override {
        *ret = kStringResult;
        return ScopedAStatus::ok();
    }
    ScopedAStatus readQuilbexVersion(QuilbexVersionRet*) override {
        return ScopedAStatus::fromServiceSpecificErrorWithMessage(-22, "bad\nrequest");
    }
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        const std::vector<std::string> words(args, args + numArgs);
        if (!words.empty() && words[0] == "fail") return STATUS_BAD_VALUE;
        const std::string text = "state [" + android::base::Join(words, '|') + "]\n";
        return android::base::WriteStringToFd(text, fd) ? STATUS_OK : STATUS_UNKNOWN_ERROR;
    }

    std::vector<std::string> calls;  // with their arguments
};

struct Case {
    std::vector<std::string> words;  // after --service with this test's service
    int status;
    std::string out;
    std::string err;
};
Case Row(std::vector<std::string> words, int status, std::string out, std::string err) {
    return {std::move(words), status, std::move(out), std::move(err)};
}

class CliTest : public ::testing::Test {
  protected:
    void SetUp() override {
        mService = ::ndk::SharedRefBase::make<TestService>(DeviceContext{mRoot.path});
        ASSERT_EQ(AServiceManager_addService(mService->asBinder().get(), mInstance.c_str()),
                  EX_NONE);
        // A service of another interface.
        static AIBinder_Class* other = AIBinder_Class_define(
            "perfctl.test.IOther", [](void* args) { return args; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                return STATUS_UNKNOWN_TRANSACTION;
            });
        mOtherBinder.set(AIBinder_new(other, nullptr));
        ASSERT_EQ(AServiceManager_addService(mOtherBinder.get(), mOther.c_str()), EX_NONE);
    }

    // Runs perfctl with --service naming this test's service, then the words.
    Case Call(std::vector<std::string> words) {
        TemporaryFile out;
        std::ostringstream err;
        Case outcome{words, 0, "", ""};
        words.insert(words.begin(), {"--service", mInstance});
        outcome.status = perfctl::Run(words, out.fd, err);
        EXPECT_TRUE(android::base::ReadFileToString(out.path, &outcome.out));
        outcome.err = err.str();
        return outcome;
    }

    TemporaryDir mRoot;
    std::shared_ptr<TestService> mService;
    const std::string mInstance = std::string("perfctl.test/") +
                                  ::testing::UnitTest::GetInstance()->current_test_info()->name();
    const std::string mOther = mInstance + "/other";
    ndk::SpAIBinder mOtherBinder;
};

TEST_F(CliTest, ListPrintsEveryOperationOnItsOwnLine) {
    const Case outcome = Call({"--list"});
    EXPECT_EQ(outcome.status, kExitOk);
    const std::vector<std::string> lines = android::base::Split(outcome.out, "\n");
    ASSERT_EQ(lines.size(), Operations().size + 1);  // the text after the last newline is empty
    EXPECT_EQ(lines[0], "0 addAcmDirName(String, long) -> int");
    EXPECT_EQ(lines[169], "169 setWakeSeedThread(String, boolean, boolean) -> int");
    EXPECT_EQ(lines[170], "170 getWakeThreadsAffinityOrdered(String, int) -> TaskWakeInfo");
    // Listing needs no service.
    EXPECT_EQ(Call({"--service", kAbsent, "--list"}).out, outcome.out);
}

// A usage error, found before any lookup, so the words name an absent service: its message, then
// how to call perfctl or the operation.
Case UsageRow(std::vector<std::string> words, const std::string& message,
              const char* usage = kGeneralUsage) {
    words.insert(words.begin(), {"--service", kAbsent});
    return Row(std::move(words), kExitUsage, "",
               "perfctl: " + message + "\nusage: perfctl " + usage + "\n");
}

// Each command line gives its exit status, prints its result and nothing else, or fails with one
// message on stderr.
TEST_F(CliTest, CommandLinesGiveTheirStatusResultAndMessage) {
    const std::string absent = std::string("perfctl: service ") + kAbsent + " is not running\n";
    const char* addAcmDirName = "addAcmDirName String long -> int";
    const Case cases[] = {
        Row({"addAcmDirName", "/data/a b", "-9223372036854775808"}, kExitOk, "-7\n", ""),
        // After the operation, words that look like options are arguments: not a usage error.
        Row({"clearTaskTrackGroup", "-1"}, kExitOk, "", ""),
        Row({"readVersion"}, kExitOk, kStringResult, ""),
        Row({"readQuilbexVersion"}, kExitCallFailed, "",
            "perfctl: readQuilbexVersion failed: Exception EX_SERVICE_SPECIFIC (-8), "
            "service-specific error -22: 'bad request'\n"),
        // Every word after --dump goes to the service, option-like ones included.
        Row({"--dump", "-a", "two words", "--list"}, kExitOk, "state [-a|two words|--list]\n", ""),
        Row({"--dump", "fail"}, kExitCallFailed, "",
            "perfctl: dump of " + mInstance +
                " failed: Transaction failed: STATUS_BAD_VALUE (-22)\n"),
        Row({"--service", kAbsent, "readVersion"}, kExitCallFailed, "", absent),
        Row({"--service", kAbsent, "--dump"}, kExitCallFailed, "", absent),
        Row({"--service", mOther, "readVersion"}, kExitCallFailed, "",
            "perfctl: service " + mOther + " is not an " + IPerformance::descriptor + "\n"),
        UsageRow({}, "no operation given"),
        UsageRow({"--bogus"}, "unknown option --bogus"),
        UsageRow({"--service"}, "--service needs an instance name"),
        UsageRow({"--list", "extra"}, "--list takes no arguments"),
        UsageRow({"AddAcmDirName", "d", "1"},
                 "unknown operation AddAcmDirName (perfctl --list shows them all)"),
        UsageRow({"addAcmDirName", "d"}, "addAcmDirName takes 2 arguments, got 1", addAcmDirName),
        UsageRow({"writeKmallocDebugCreate"}, "writeKmallocDebugCreate takes 1 argument, got 0",
                 "writeKmallocDebugCreate int -> int"),
        UsageRow({"addAcmDirName", "d", "12x"}, "addAcmDirName: argument 2 is not a long: \"12x\"",
                 addAcmDirName),
        UsageRow({"addAcmDirName", "\xff", "1"}, "addAcmDirName: argument 1 is not valid UTF-8",
                 addAcmDirName),
        UsageRow({"setFreqGoverner", "g", "1,,2"},
                 "setFreqGoverner: argument 2 is not an int[]: \"1,,2\"",
                 "setFreqGoverner String int[] -> int"),
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(android::base::Join(c.words, ' '));
        const Case outcome = Call(c.words);
        EXPECT_EQ(outcome.status, c.status);
        EXPECT_EQ(outcome.out, c.out);
        EXPECT_EQ(outcome.err, c.err);
    }
    EXPECT_EQ(mService->calls,
              std::vector<std::string>{"addAcmDirName /data/a b -9223372036854775808"});
}

}  // namespace
}  // namespace perfctl
