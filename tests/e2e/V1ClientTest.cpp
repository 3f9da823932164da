// A client built against version 1 of the interface, calling the version 2 daemon. This binary
// holds only the version 1 stubs; perfctl, built against version 2, gives the answers to compare.

#include <aidl/vendor/vyren/hardware/performance/IPerformance.h>
#include <android-base/file.h>
#include <android-base/strings.h>

#include <functional>
#include <optional>
#include <tuple>

#include "DeviceFixture.h"

namespace e2e {
namespace {

using ::aidl::vendor::vyren::hardware::performance::IPerformance;

using Call = std::function<ndk::ScopedAStatus(IPerformance&, std::optional<std::string>*)>;

// Calls the method and keeps its answer as perfctl prints it; records are only compared by status.
template <typename... Params, typename... Args>
Call Of(ndk::ScopedAStatus (IPerformance::*method)(Params...), Args... args) {
    return [=](IPerformance& service, std::optional<std::string>* out) {
        using Last = std::tuple_element_t<sizeof...(Params) - 1, std::tuple<Params...>>;
        std::remove_pointer_t<Last> value{};
        ndk::ScopedAStatus status = (service.*method)(args..., &value);
        if (!status.isOk()) return status;
        if constexpr (std::is_same_v<decltype(value), int32_t>) *out = std::to_string(value) + "\n";
        if constexpr (std::is_same_v<decltype(value), std::string>) *out = value;
        return status;
    };
}

struct V1Row {
    std::vector<std::string> command;  // the same call through perfctl
    Call call;
    // A node of the newer tree and what it starts with after the version 1 call.
    const char* node = nullptr;
    const char* content = nullptr;
};

using V1ClientTest = DeviceTest;

TEST_F(V1ClientTest, SeesTheServersVersionAndReachesTheSameOperationsAsPerfctl) {
    ASSERT_NO_FATAL_FAILURE(copyTree("kernel-5.15"));
    ASSERT_NE(startDaemon(), nullptr);
    const std::shared_ptr<IPerformance> service = IPerformance::fromBinder(lookUp());
    ASSERT_NE(service, nullptr);
    // The version and hash come from the server, not from this client's own stubs.
    int32_t version = 0;
    ASSERT_TRUE(service->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 2);
    std::string serverHash, hash;
    ASSERT_TRUE(android::base::ReadFileToString(E2E_V2_HASH_FILE, &serverHash));
    ASSERT_TRUE(service->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, android::base::Trim(serverHash));

    // One call per way the server handles them, in slot order from slot 0 to the last of version 1:
    // a proxy whose codes were shifted would land on a neighbour that answers differently.
    using P = IPerformance;
    // clang-format off
    const V1Row rows[] = {
        {{"addAcmDirName", "/data/media", "1"}, Of(&P::addAcmDirName, std::string("/data/media"), int64_t{1})},
        {{"enableKmallocDebug"}, Of(&P::enableKmallocDebug), "kmalloc_debug_enable", "1"},
        {{"getVmallocUsed"}, Of(&P::getVmallocUsed)},
        {{"readMemoryByPids", "580,1000", "0"}, Of(&P::readMemoryByPids, std::vector<int32_t>{580, 1000}, 0)},
        {{"writeKmallocDebugCreateWithType", "kmalloc-128"}, Of(&P::writeKmallocDebugCreateWithType, std::string("kmalloc-128")), "kmalloc_debug_create", "kmalloc-128"},
        {{"writeVaFeature", "5"}, Of(&P::writeVaFeature, 5), "va_feature", "5"},
    };
    // clang-format on
    for (const V1Row& row : rows) {
        SCOPED_TRACE(android::base::Join(row.command, ' '));
        std::optional<std::string> answer;
        const ndk::ScopedAStatus status = row.call(*service, &answer);
        if (row.node != nullptr) {
            const std::string node =
                readNode(std::string("/proc/vyren_mem/memleak_detect/") + row.node);
            EXPECT_TRUE(android::base::StartsWith(node, row.content)) << node;
        }
        const RunResult printed = perfctl(row.command);
        EXPECT_TRUE(printed.exitedWith(status.isOk() ? 0 : 1)) << printed.describe();
        EXPECT_EQ(answer.value_or(printed.out), printed.out);
    }
}

}  // namespace
}  // namespace e2e
