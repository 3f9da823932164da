// UX state and waker identification: marking a thread as critical to the user experience, naming
// a seed thread for the kernel's waker identification, and asking which threads wake a thread.

#define LOG_TAG "PerformanceService"

#include "UxWaker.h"

#include <android/binder_ibinder.h>
#include <log/log.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kDisableSetting[] = "/proc/vyren_scheduler/sched_assist/disable_setting";
constexpr char kUxTask[] = "/proc/vyren_scheduler/sched_assist/ux_task";
constexpr char kRtInfo[] = "/proc/waker_identify/rt_info";
constexpr char kWakerInfo[] = "/proc/waker_identify/waker_info";

constexpr int kSettingBytes = 4;
constexpr int kSeedReplyBytes = 16;
constexpr int kWakerReplyBytes = 1024;

// The uids of apps, the only callers allowed while the kernel's UX setting is on.
constexpr uid_t kFirstAppUid = 10000;
constexpr uid_t kLastAppUid = 19999;

// A thread's waker affinity field by field, while nothing is known of it.
constexpr std::array<int32_t, 7> kNoAffinity = {-1, -1, -1, -1, -1, -1, -1};
constexpr int32_t ThreadInfo::*kAffinityFields[] = {
    &ThreadInfo::field1, &ThreadInfo::field2, &ThreadInfo::field3, &ThreadInfo::field4,
    &ThreadInfo::field5, &ThreadInfo::field6, &ThreadInfo::field7};
static_assert(std::size(kAffinityFields) == kNoAffinity.size());

ThreadInfo unknownThread() {
    ThreadInfo info;
    for (size_t i = 0; i < kNoAffinity.size(); ++i) info.*kAffinityFields[i] = kNoAffinity[i];
    return info;
}

// The answer when the kernel gives none: status -1 and one thread of which nothing is known.
TaskWakeInfo noWakers() {
    TaskWakeInfo info;
    info.status = -1;
    info.threads.push_back(unknownThread());
    return info;
}

// The field each token of a waker report line fills, in token order; the third is not used.
constexpr int32_t ThreadInfo::*kTokenFields[] = {
    &ThreadInfo::field1, &ThreadInfo::field2, nullptr,
    &ThreadInfo::field6, &ThreadInfo::field4, &ThreadInfo::field3,
    &ThreadInfo::field5, &ThreadInfo::field7};

// A line of fewer tokens leaves the fields of the missing ones at -1; tokens past the eighth are
// ignored.
ThreadInfo parseWakerLine(const std::string& line) {
    std::vector<std::string> tokens;
    splitString(line.c_str(), ";", &tokens);
    ThreadInfo info = unknownThread();
    for (size_t i = 0; i < std::min(tokens.size(), std::size(kTokenFields)); ++i) {
        if (kTokenFields[i] != nullptr) info.*kTokenFields[i] = atoi(tokens[i].c_str());
    }
    return info;
}

}  // namespace

void UxWaker::logUnsupported() const {
    const KernelVersion& v = mNodes.version();
    ALOGE("Linux version not support, Linux version %d.%d.%d", v.major, v.minor, v.patch);
}

bool UxWaker::callerAllowed() {
    int32_t setting = mUxSetting.load();
    if (setting == -1) {
        // Read once per service, unless the kernel itself answers -1.
        char text[16] = {};
        setting = mNodes.readInterface(kDisableSetting, 0, text, kSettingBytes) > 0 ? atoi(text) : 1;
        mUxSetting.store(setting);
    }
    if (setting == 0) return true;
    const uid_t caller = AIBinder_getCallingUid();
    return caller >= kFirstAppUid && caller <= kLastAppUid;
}

int32_t UxWaker::writeUxState(const std::string& value, const std::string& pid,
                              const std::string& tid) {
    // Refused without a word, as not permitted.
    if (mNodes.version().major >= 6 && !callerAllowed()) return -EPERM;
    const bool shared = mNodes.newTree();
    const std::string target =
        shared ? kUxTask : "/proc/" + Component(pid) + "/task/" + Component(tid) + "/ux_state";
    const std::string text = shared ? "p " + tid + " " + value : value;
    const WriteOutcome outcome = mNodes.writeText(target.c_str(), text, WriteOpen::kDescriptor,
                                                  mNodes.openFailureOnKernel());
    if (outcome.failed == WriteOutcome::Failed::kWrite) {
        ALOGE("Failed to write pid %s with ux_state %s (%d): %s", tid.c_str(), text.c_str(),
              outcome.err, strerror(outcome.err));
    } else if (outcome.failed == WriteOutcome::Failed::kNothing && mDebug) {
        ALOGE("writeUxState: write path %s with value %s, tid is %s", target.c_str(), text.c_str(),
              tid.c_str());
    }
    return -outcome.err;
}

int32_t UxWaker::setWakeSeedThread(const std::string& tid, bool first, bool second) {
    // The kernel reads the second flag first.
    const std::string message = tid + (second ? ";1" : ";0") + (first ? ";1" : ";0");
    if (!mNodes.newTree()) {
        logUnsupported();
        return -1;
    }
    std::lock_guard<std::mutex> lock(mSeedLock);
    return exchangeSeed(tid, message);
}

int32_t UxWaker::exchangeSeed(const std::string& tid, const std::string& message) const {
    const WriteOutcome outcome =
        mNodes.writeText(kRtInfo, message, WriteOpen::kDescriptor, mNodes.openFailureOnKernel());
    if (outcome.failed != WriteOutcome::Failed::kNothing) {
        if (outcome.failed == WriteOutcome::Failed::kWrite) {
            ALOGE("Failed to set seed tid %s (%d): %s", tid.c_str(), outcome.err,
                  strerror(outcome.err));
        }
        return -outcome.err;
    }
    // "writen" is matched by log readers as it stands.
    ALOGE("[WAKER_IDENTIFY] pid message %s is writen to proc", message.c_str());
    // The spare byte keeps a full reply terminated.
    char reply[kSeedReplyBytes + 1] = {};
    return mNodes.readInterface(kRtInfo, 0, reply, kSeedReplyBytes) > 0 ? atoi(reply) : -1;
}

TaskWakeInfo UxWaker::getWakeThreadsAffinityOrdered(const std::string& handle, int32_t count) {
    if (!mNodes.newTree()) {
        logUnsupported();
        return noWakers();
    }
    std::lock_guard<std::mutex> lock(mInfoLock);
    return exchangeWakers(handle, count);
}

TaskWakeInfo UxWaker::exchangeWakers(const std::string& handle, int32_t count) const {
    const WriteOutcome outcome =
        mNodes.writeText(kWakerInfo, handle, WriteOpen::kDescriptor, mNodes.openFailureOnKernel());
    if (outcome.failed == WriteOutcome::Failed::kWrite) {
        ALOGE("Failed to write handle %s", handle.c_str());
    }
    if (outcome.failed != WriteOutcome::Failed::kNothing) return noWakers();

    char reply[kWakerReplyBytes + 1] = {};
    if (mNodes.readInterface(kWakerInfo, 0, reply, kWakerReplyBytes) <= 0 ||
        strcmp(reply, "NULL") == 0) {
        return noWakers();
    }
    std::vector<std::string> lines;
    splitString(reply, "\n", &lines);
    // The kernel's order is kept, and a short reply is not padded.
    const size_t wanted = count > 0 ? std::min(lines.size(), static_cast<size_t>(count)) : 0;
    TaskWakeInfo info;
    info.status = 1;
    for (size_t i = 0; i < wanted; ++i) info.threads.push_back(parseWakerLine(lines[i]));
    return info;
}

}  // namespace aidl::vendor::vyren::hardware::performance
