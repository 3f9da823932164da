// CPU frequency governor of the cpufreq policies, and the scheduler's audio performance mode.

#define LOG_TAG "PerformanceService"

#include <android-base/stringprintf.h>
#include <log/log.h>

#include <cstring>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kGovernorNode[] = "/sys/devices/system/cpu/cpufreq/policy%d/scaling_governor";
constexpr TextWrite kGovernorWrite = {
    WriteOpen::kDescriptor, "Failed to open %s (%d): %s, Linux version %d.%d.%d", nullptr};

constexpr char kAudioEnable[] = "/proc/vyren_scheduler/sched_assist/audio/enable";
constexpr TextWrite kAudioWrite = {WriteOpen::kStream, nullptr, nullptr};

}  // namespace

::ndk::ScopedAStatus Performance::setFreqGoverner(const std::string& governor,
                                                  const std::vector<int32_t>& policies,
                                                  int32_t* _aidl_return) {
    // Policies already switched keep their new governor when a later one fails.
    for (const int32_t policy : policies) {
        if (policy < 0) continue;
        const std::string node = android::base::StringPrintf(kGovernorNode, policy);
        const WriteOutcome outcome = writeText(node.c_str(), governor, kGovernorWrite);
        if (outcome.failed == WriteOutcome::Failed::kWrite) {
            ALOGE("Failed to write governer %s (%d): %s", governor.c_str(), outcome.err,
                  strerror(outcome.err));
        }
        if (outcome.failed != WriteOutcome::Failed::kNothing) {
            *_aidl_return = -outcome.err;
            return ::ndk::ScopedAStatus::ok();
        }
        ALOGD("setFreqGoverner: write path %s with gov %s", node.c_str(), governor.c_str());
    }
    // Also the answer for an empty list, which changes nothing.
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::enableAudioPerf(const std::string& value, int32_t* _aidl_return) {
    // The node takes a one-digit switch: only the first byte goes, the terminator for "".
    const WriteOutcome outcome = writeText(kAudioEnable, {value.c_str(), 1}, kAudioWrite);
    if (outcome.failed == WriteOutcome::Failed::kOpen) {
        ALOGE("Failed to enableAudioPerf %s with %s, error: (%d): %s", kAudioEnable, value.c_str(),
              outcome.err, strerror(outcome.err));
        *_aidl_return = -1;
        return ::ndk::ScopedAStatus::ok();
    }
    ALOGD("enableAudioPerf with %s", value.c_str());
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
