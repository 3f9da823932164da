// A client built against version 1 of the interface, calling the version 2 daemon. This binary
// holds only the version 1 stubs; perfctl, built against version 2, gives the answers to compare.

#include <aidl/vendor/vyren/hardware/performance/IPerformance.h>
#include <android-base/file.h>
#include <android-base/strings.h>

#include <functional>

#include "DeviceFixture.h"

namespace e2e {
namespace {

using ::aidl::vendor::vyren::hardware::performance::IPerformance;

constexpr char kNewer[] = "/proc/vyren_mem/memleak_detect/";

// The answer as perfctl prints it.
ndk::ScopedAStatus Print(ndk::ScopedAStatus status, int32_t value, std::string* out) {
    if (status.isOk()) *out = std::to_string(value) + "\n";
    return status;
}
ndk::ScopedAStatus Print(ndk::ScopedAStatus status, const std::string& value, std::string* out) {
    if (status.isOk()) *out = value;
    return status;
}

using Call = std::function<ndk::ScopedAStatus(IPerformance&, std::string*)>;

template <typename Method>
Call IntResult(Method method) {
    return [method](IPerformance& service, std::string* out) {
        int32_t value = 0;
        ndk::ScopedAStatus status = (service.*method)(&value);
        return Print(std::move(status), value, out);
    };
}

template <typename Method>
Call TextResult(Method method) {
    return [method](IPerformance& service, std::string* out) {
        std::string value;
        ndk::ScopedAStatus status = (service.*method)(&value);
        return Print(std::move(status), value, out);
    };
}

template <typename Method, typename Arg>
Call IntResultOf(Method method, Arg arg) {
    return [method, arg](IPerformance& service, std::string* out) {
        int32_t value = 0;
        ndk::ScopedAStatus status = (service.*method)(arg, &value);
        return Print(std::move(status), value, out);
    };
}

struct V1Case {
    std::vector<std::string> command;  // the same call through perfctl
    Call call;
    bool built;
    // When set, the node afterwards starts with `content` (a value write does not truncate), or
    // holds the answer itself when content is null.
    const char* node;
    const char* content;
};

// In slot order, from slot 0 to the last of version 1, with every built operation of version 1
// and unbuilt ones around them. A proxy sending the wrong code would land on a neighbour.
const std::vector<V1Case>& Cases() {
    static const std::vector<V1Case> cases = {
        {{"addAcmDirName", "/data/media", "1"},
         [](IPerformance& s, std::string* out) {
             int32_t value = 0;
             ndk::ScopedAStatus status = s.addAcmDirName("/data/media", 1, &value);
             return Print(std::move(status), value, out);
         },
         true,
         nullptr,
         nullptr},
        {{"disableKmallocDebug"},
         IntResult(&IPerformance::disableKmallocDebug),
         true,
         "kmalloc_debug_enable",
         "0"},
        {{"disableVmallocDebug"},
         IntResult(&IPerformance::disableVmallocDebug),
         true,
         "vmalloc_debug_enable",
         "0"},
        {{"enableKmallocDebug"},
         IntResult(&IPerformance::enableKmallocDebug),
         true,
         "kmalloc_debug_enable",
         "1"},
        {{"enableVmallocDebug"},
         IntResult(&IPerformance::enableVmallocDebug),
         true,
         "vmalloc_debug_enable",
         "1"},
        {{"getHIAllocWait"},
         [](IPerformance& s, std::string* out) {
             ::aidl::vendor::vyren::hardware::performance::ProcReqHal record;
             ndk::ScopedAStatus status = s.getHIAllocWait(&record);
             std::vector<std::string> items;
             for (const auto& item : record.items) {
                 items.push_back(R"({"key":")" + item.key + R"(","separator":")" + item.separator +
                                 R"(","flag":)" + std::to_string(item.flag) + "}");
             }
             *out = R"({"path":")" + record.path + R"(","items":[)" +
                    android::base::Join(items, ',') + "]}\n";
             return status;
         },
         true,
         nullptr,
         nullptr},
        {{"getKernelVersion"}, IntResult(&IPerformance::getKernelVersion), true, nullptr, nullptr},
        {{"getKmallocDebug"},
         TextResult(&IPerformance::getKmallocDebug),
         true,
         "kmalloc_debug",
         nullptr},
        {{"getKmallocOrigin"},
         TextResult(&IPerformance::getKmallocOrigin),
         true,
         "kmalloc_origin",
         nullptr},
        {{"getKmallocUsed"}, TextResult(&IPerformance::getKmallocUsed), true, "kmalloc_used", nullptr},
        {{"getVmallocDebug"}, TextResult(&IPerformance::getVmallocDebug), true, "stack_hash", nullptr},
        {{"getVmallocHashCal"},
         TextResult(&IPerformance::getVmallocHashCal),
         true,
         "vmalloc_hash_cal",
         nullptr},
        {{"getVmallocUsed"}, TextResult(&IPerformance::getVmallocUsed), true, "vmalloc_used", nullptr},
        {{"getallocwait"}, TextResult(&IPerformance::getallocwait), true, nullptr, nullptr},
        {{"readKmallocDebugCreate"},
         TextResult(&IPerformance::readKmallocDebugCreate),
         true,
         "kmalloc_debug_create",
         nullptr},
        {{"readMemleakDetectThread"},
         TextResult(&IPerformance::readMemleakDetectThread),
         true,
         "memleak_detect_thread",
         nullptr},
        {{"readMemoryByPids", "580,1000", "0"},
         [](IPerformance& s, std::string* out) {
             // No flags: the query fails before it reaches the device.
             ::aidl::vendor::vyren::hardware::performance::ProcMemStatRet record;
             ndk::ScopedAStatus status = s.readMemoryByPids({580, 1000}, 0, &record);
             EXPECT_TRUE(record.stats.empty());
             return Print(std::move(status),
                          "{\"result\":" + std::to_string(record.result) + ",\"stats\":[]}\n", out);
         },
         true,
         nullptr,
         nullptr},
        {{"readVaFeature"}, TextResult(&IPerformance::readVaFeature), true, "va_feature", nullptr},
        {{"writeKmallocDebugCreate", "12"},
         IntResultOf(&IPerformance::writeKmallocDebugCreate, 12),
         true,
         nullptr,
         nullptr},
        {{"writeKmallocDebugCreateWithType", "kmalloc-128"},
         IntResultOf(&IPerformance::writeKmallocDebugCreateWithType, std::string("kmalloc-128")),
         true,
         nullptr,
         nullptr},
        {{"writeMemleakDetectThread", "1"},
         IntResultOf(&IPerformance::writeMemleakDetectThread, 1),
         true,
         "memleak_detect_thread",
         "1"},
        {{"writeUxState", "1", "580", "580"},
         [](IPerformance& s, std::string* out) {
             int32_t value = 0;
             return Print(s.writeUxState("1", "580", "580", &value), value, out);
         },
         true,
         nullptr,
         nullptr},
        {{"writeVaFeature", "5"},
         IntResultOf(&IPerformance::writeVaFeature, 5),
         true,
         "va_feature",
         "5"},
    };
    return cases;
}

class V1ClientTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        if (HasFatalFailure()) return;
        ASSERT_NE(startDaemon(), nullptr);
        mService = IPerformance::fromBinder(lookUp());
        ASSERT_NE(mService, nullptr);
    }

    std::shared_ptr<IPerformance> mService;
};

TEST_F(V1ClientTest, ReachesTheSameOperationsWithTheSameAnswersAsPerfctl) {
    for (const V1Case& c : Cases()) {
        SCOPED_TRACE(android::base::Join(c.command, ' '));
        std::string answer;
        const ndk::ScopedAStatus status = c.call(*mService, &answer);
        const RunResult printed = perfctl(c.command);
        if (!c.built) {
            EXPECT_EQ(status.getExceptionCode(), EX_UNSUPPORTED_OPERATION)
                << status.getDescription();
            EXPECT_TRUE(printed.exitedWith(1)) << printed.describe();
            continue;
        }
        ASSERT_TRUE(status.isOk()) << status.getDescription();
        ASSERT_TRUE(printed.exitedWith(0)) << printed.describe();
        EXPECT_EQ(answer, printed.out);
        if (c.node != nullptr) {
            const std::string node = readNode(std::string(kNewer) + c.node);
            if (c.content == nullptr) {
                EXPECT_EQ(node, answer);
            } else {
                EXPECT_TRUE(android::base::StartsWith(node, c.content)) << node;
            }
        }
    }
}

TEST_F(V1ClientTest, SeesTheServersVersionAndHash) {
    int32_t version = 0;
    ASSERT_TRUE(mService->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 2);
    EXPECT_EQ(int32_t{IPerformance::version}, 1);

    std::string serverHash;
    ASSERT_TRUE(android::base::ReadFileToString(E2E_V2_HASH_FILE, &serverHash));
    std::string hash;
    ASSERT_TRUE(mService->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, android::base::Trim(serverHash));
    EXPECT_NE(hash, IPerformance::hash);
}

}  // namespace
}  // namespace e2e
