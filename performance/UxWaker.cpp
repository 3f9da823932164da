// UX state and waker identification: marking a thread as critical to the user experience, naming
// a seed thread for the kernel's waker identification, and asking which threads wake a thread.

#define LOG_TAG "PerformanceService"

#include <android/binder_ibinder.h>
#include <log/log.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "Performance.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// Each operation reports a failed write in words of its own.
constexpr TextWrite kWrite = {WriteOpen::kDescriptor,
                              "Failed to open %s (%d): %s, Linux version %d.%d.%d", nullptr};

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
    ThreadInfo info = gWakerDefaultInfo.threads.front();
    for (size_t i = 0; i < std::min(tokens.size(), std::size(kTokenFields)); ++i) {
        if (kTokenFields[i] != nullptr) info.*kTokenFields[i] = atoi(tokens[i].c_str());
    }
    return info;
}

}  // namespace

::ndk::ScopedAStatus Performance::writeUxState(const std::string& value, const std::string& pid,
                                               const std::string& tid, int32_t* _aidl_return) {
    if (mKernelMajor >= 6) {
        int32_t setting = gUxSettingSwitch.load();
        if (setting == -1) {
            // Read once per process, unless the kernel itself answers -1.
            char text[16] = {};
            setting = readInterface(kDisableSetting, 0, text, kSettingBytes) > 0 ? atoi(text) : 1;
            gUxSettingSwitch.store(setting);
        }
        if (setting != 0) {
            const uid_t caller = AIBinder_getCallingUid();
            // Refused without a word, and without a result.
            if (caller < kFirstAppUid || caller > kLastAppUid) return ::ndk::ScopedAStatus::ok();
        }
    }
    const bool shared = usesNewNodeTree();
    const std::string target = shared ? kUxTask : "/proc/" + pid + "/task/" + tid + "/ux_state";
    const std::string text = shared ? "p " + tid + " " + value : value;
    const WriteOutcome outcome = writeText(target.c_str(), text, kWrite);
    if (outcome.failed == WriteOutcome::Failed::kWrite) {
        ALOGE("Failed to write pid %s with ux_state %s (%d): %s", tid.c_str(), text.c_str(),
              outcome.err, strerror(outcome.err));
    } else if (outcome.failed == WriteOutcome::Failed::kNothing && mDebug) {
        ALOGE("writeUxState: write path %s with value %s, tid is %s", target.c_str(), text.c_str(),
              tid.c_str());
    }
    *_aidl_return = -outcome.err;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setWakeSeedThread(const std::string& tid, bool first, bool second,
                                                    int32_t* _aidl_return) {
    // The kernel reads the second flag first.
    const std::string message = tid + (second ? ";1" : ";0") + (first ? ";1" : ";0");
    if (!usesNewNodeTree()) {
        ALOGE("Linux version not support, Linux version %d.%d.%d", mKernelMajor, mKernelMinor,
              mKernelPatch);
        *_aidl_return = -1;
        return ::ndk::ScopedAStatus::ok();
    }
    // A seed and its read-back are one exchange with the kernel.
    std::lock_guard<std::mutex> lock(gWakerSeedLock);
    const WriteOutcome outcome = writeText(kRtInfo, message, kWrite);
    if (outcome.failed != WriteOutcome::Failed::kNothing) {
        if (outcome.failed == WriteOutcome::Failed::kWrite) {
            ALOGE("Failed to set seed tid %s (%d): %s", tid.c_str(), outcome.err,
                  strerror(outcome.err));
        }
        *_aidl_return = -outcome.err;
        return ::ndk::ScopedAStatus::ok();
    }
    ALOGE("[WAKER_IDENTIFY] pid message %s is writen to proc", message.c_str());
    // The spare byte keeps a full reply terminated.
    char reply[kSeedReplyBytes + 1] = {};
    *_aidl_return = readInterface(kRtInfo, 0, reply, kSeedReplyBytes) > 0 ? atoi(reply) : -1;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getWakeThreadsAffinityOrdered(const std::string& handle,
                                                                int32_t count,
                                                                TaskWakeInfo* _aidl_return) {
    *_aidl_return = gWakerDefaultInfo;
    if (!usesNewNodeTree()) {
        ALOGE("Linux version not support, Linux version %d.%d.%d", mKernelMajor, mKernelMinor,
              mKernelPatch);
        return ::ndk::ScopedAStatus::ok();
    }
    // The kernel answers the handle written last, so a query and its answer are one exchange.
    std::lock_guard<std::mutex> lock(gWakerInfoLock);
    const WriteOutcome outcome = writeText(kWakerInfo, handle, kWrite);
    if (outcome.failed == WriteOutcome::Failed::kWrite) {
        ALOGE("Failed to write handle %s", handle.c_str());
    }
    if (outcome.failed != WriteOutcome::Failed::kNothing) return ::ndk::ScopedAStatus::ok();

    char reply[kWakerReplyBytes + 1] = {};
    if (readInterface(kWakerInfo, 0, reply, kWakerReplyBytes) <= 0 || strcmp(reply, "NULL") == 0) {
        return ::ndk::ScopedAStatus::ok();
    }
    std::vector<std::string> lines;
    splitString(reply, "\n", &lines);
    // The kernel's order is kept, and a short reply is not padded.
    const size_t wanted = count > 0 ? std::min(lines.size(), static_cast<size_t>(count)) : 0;
    TaskWakeInfo info;
    info.status = 1;
    for (size_t i = 0; i < wanted; ++i) info.threads.push_back(parseWakerLine(lines[i]));
    *_aidl_return = std::move(info);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
