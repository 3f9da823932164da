// CPU frequency governor of the cpufreq policies, and the scheduler's audio performance mode.

#define LOG_TAG "PerformanceService"

#include "Governor.h"

#include <android-base/stringprintf.h>
#include <log/log.h>

#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kAudioEnable[] = "/proc/vyren_scheduler/sched_assist/audio/enable";

}  // namespace

int32_t Governor::setFreqGoverner(const std::string& governor,
                                  const std::vector<int32_t>& policies) const {
    // Policies already switched keep their new governor when a later one fails.
    for (const int32_t policy : policies) {
        if (policy < 0) continue;
        const std::string node = android::base::StringPrintf(
            "/sys/devices/system/cpu/cpufreq/policy%d/scaling_governor", policy);
        const WriteOutcome outcome = mNodes.writeText(
            node.c_str(), governor, WriteOpen::kDescriptor, mNodes.openFailureOnKernel());
        if (outcome.failed == WriteOutcome::Failed::kWrite) {
            // "governer" is matched by log readers as it stands.
            ALOGE("Failed to write governer %s (%d): %s", governor.c_str(), outcome.err,
                  strerror(outcome.err));
        }
        if (outcome.failed != WriteOutcome::Failed::kNothing) return -outcome.err;
        ALOGD("setFreqGoverner: write path %s with gov %s", node.c_str(), governor.c_str());
    }
    // Also the answer for an empty list, which changes nothing.
    return 0;
}

int32_t Governor::enableAudioPerf(const std::string& value) const {
    // The node takes a one-digit switch: only the first byte goes, the terminator for "".
    const WriteOutcome outcome =
        mNodes.writeText(kAudioEnable, {value.c_str(), 1}, WriteOpen::kStream);
    if (outcome.failed == WriteOutcome::Failed::kOpen) {
        ALOGE("Failed to enableAudioPerf %s with %s, error: (%d): %s", kAudioEnable, value.c_str(),
              outcome.err, strerror(outcome.err));
        return -1;
    }
    ALOGD("enableAudioPerf with %s", value.c_str());
    return 0;
}

}  // namespace aidl::vendor::vyren::hardware::performance
