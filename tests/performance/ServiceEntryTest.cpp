// The daemon's entry point, built into this test under another name.

#include <android/binder_manager.h>
#include <android/log.h>

#include "NodeRootFixture.h"

int ServiceMain(int argc, char** argv);

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using ServiceEntryTest = NodeRootTest;

TEST_F(ServiceEntryTest, AbortsWhenTheInstanceNameIsTaken) {
    setKernel("5.15.78");
    auto holder = makeService();
    const std::string instance = std::string(IPerformance::descriptor) + "/default";
    ASSERT_EQ(AServiceManager_addService(holder->asBinder().get(), instance.c_str()), STATUS_OK);

    // The fatal report goes to the log; send it to stderr, where the death test reads it.
    __android_log_set_logger(__android_log_stderr_logger);
    std::string program = "performance-service";
    std::string rootOption = "--root";
    char* argv[] = {program.data(), rootOption.data(), mRoot.data(), nullptr};
    EXPECT_DEATH(ServiceMain(3, argv),
                 "vendor\\.vyren\\.hardware\\.performance-V1-service F .*Service\\.cpp:35\\] "
                 "Check failed: status == STATUS_OK \n");
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
