// A client built against version 1 of the interface, calling the version 2 daemon. This binary
// holds only the version 1 stubs; perfctl, built against version 2, gives the answers to compare.

#include <aidl/vendor/vyren/hardware/performance/IPerformance.h>
#include <android-base/file.h>
#include <android-base/strings.h>

#include "DeviceFixture.h"

namespace e2e {
namespace {

using ::aidl::vendor::vyren::hardware::performance::IPerformance;

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

    // Slot 0 and the last slot of version 1: a proxy whose codes were shifted would land on a
    // neighbour that answers differently, as perfctl shows.
    int32_t first = 0, last = 0;
    ASSERT_TRUE(service->addAcmDirName("/data/media", 1, &first).isOk());
    ASSERT_TRUE(service->writeVaFeature(5, &last).isOk());
    EXPECT_TRUE(
        android::base::StartsWith(readNode("/proc/vyren_mem/memleak_detect/va_feature"), "5"));
    EXPECT_EQ(perfctl({"addAcmDirName", "/data/media", "1"}).out, std::to_string(first) + "\n");
    EXPECT_EQ(perfctl({"writeVaFeature", "5"}).out, std::to_string(last) + "\n");
}

}  // namespace
}  // namespace e2e
