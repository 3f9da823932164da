// The cpufreq governor of the policies, and the audio performance switch.

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

using testing::Debug, testing::Error, testing::row;

const std::string kNoEntry = " (2): No such file or directory";
const testing::Outcome kAudio = {"0", {Debug("enableAudioPerf with 10")}};
const LogLine kNoPolicy = Error("Failed to open {node}" + kNoEntry + ", Linux version {version}");
// "governer" is the service's own spelling.
const LogLine kFull = Error("Failed to write governer schedutil (28): No space left on device");

// clang-format off
const testing::OperationRow kRows[] = {
    row(OP(setFreqGoverner, "schedutil", std::vector<int32_t>{4})).holding("walt")
        .at("/sys/devices/system/cpu/cpufreq/policy4/scaling_governor").leaves("schedutil")
        .whenPresent({"0", {Debug("setFreqGoverner: write path {node} with gov schedutil")}})
        .whenAbsent({"-2", {kNoPolicy}}).whenRefused({"-28", {kFull}}),
    // Only the first byte of the value goes; a refused stream write goes unnoticed.
    row(OP(enableAudioPerf, "10")).at("/proc/vyren_scheduler/sched_assist/audio/enable")
        .holding("0").leaves("1").whenPresent(kAudio).whenRefused(kAudio)
        .whenAbsent({"-1", {Error("Failed to enableAudioPerf {node} with 10, error:" + kNoEntry)}}),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(Governor, kRows);

TEST_F(NodeRootTest, GovernorStopsAtTheFirstFailingPolicy) {
    const std::string policy0 = "/sys/devices/system/cpu/cpufreq/policy0/scaling_governor";
    const std::string policy4 = "/sys/devices/system/cpu/cpufreq/policy4/scaling_governor";
    writeNode(policy0, "walt");
    writeNode(policy4, "walt");
    Governor governor(nodes());
    EXPECT_EQ(governor.setFreqGoverner("schedutil", {0, -1, 9, 4}), -ENOENT);
    EXPECT_EQ(readNode(policy0), "schedutil");
    EXPECT_EQ(readNode(policy4), "walt");
    EXPECT_EQ(governor.setFreqGoverner("schedutil", {}), 0);
}

}  // namespace aidl::vendor::vyren::hardware::performance
