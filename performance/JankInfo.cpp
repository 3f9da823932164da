// Jank monitoring: the CPU findings of the kernel's jank monitor, text nodes under
// /proc/jank_info/cpu_jank_info/, and the monitor's version, read once.

#include <android/log.h>

#include <mutex>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kCpuInfo[] = "/proc/jank_info/cpu_jank_info/cpu_info";
constexpr char kCpuInfoSig[] = "/proc/jank_info/cpu_jank_info/cpu_info_sig";
constexpr char kCpuLoad[] = "/proc/jank_info/cpu_jank_info/cpu_load";
constexpr char kCpuLoad32[] = "/proc/jank_info/cpu_jank_info/cpu_load32";
constexpr char kCpuLoad32Scale[] = "/proc/jank_info/cpu_jank_info/cpu_load32_scale";
constexpr char kLoadIndicator[] = "/proc/jank_info/cpu_jank_info/load_indicator";
constexpr char kCallStack[] = "/proc/jank_info/cpu_jank_info/callstack";
constexpr char kVersion[] = "/proc/jank_info/cpu_jank_info/version";

using Read = Performance::WholeNodeRead;
using LineOpen = Performance::LineOpen;

constexpr Read kJankRead = {LineOpen::kRead, kOpenFileError};
// The CPU load nodes are the ones the jank tooling depends on, so a missing one is reported.
constexpr Read kLoggedJankRead = {LineOpen::kRead, kOpenFileError,
                                  Performance::OpenFailureLog::kPathPathError, ANDROID_LOG_ERROR,
                                  "DEBUG QXTR: open jank file %s : %s failed, %s"};
}  // namespace

::ndk::ScopedAStatus Performance::readJankCpuInfo(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kCpuInfo, kJankRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readJankCpuInfoSig(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kCpuInfoSig, kJankRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readJankCpuLoad(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kCpuLoad, kLoggedJankRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readJankCpuLoad32(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kCpuLoad32, kLoggedJankRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readJankCpuLoad32Scale(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kCpuLoad32Scale, kJankRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readJankCpuIndicator(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kLoadIndicator, kJankRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readCallStack(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kCallStack, kJankRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readJankVersion(std::string* _aidl_return) {
    {
        std::lock_guard<std::mutex> lock(mJankVersionLock);
        if (!mJankVersion.empty()) {
            *_aidl_return = mJankVersion;
            return ::ndk::ScopedAStatus::ok();
        }
    }
    // The node is read without the lock: two first calls may both read it, and store the same.
    std::string first;
    bool any = false;
    if (!forEachLine(kVersion, LineOpen::kRead, [&](std::string_view line) {
            if (!any) first = line;
            any = true;
        })) {
        *_aidl_return = "cannot access jank version";
        return ::ndk::ScopedAStatus::ok();
    }
    // An empty first line leaves the cache empty, so the next call reads the node again.
    if (!first.empty()) {
        std::lock_guard<std::mutex> lock(mJankVersionLock);
        mJankVersion = first;
    }
    *_aidl_return = first;
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
