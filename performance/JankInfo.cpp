// Jank monitoring: the CPU findings of the kernel's jank monitor, text nodes under
// /proc/jank_info/cpu_jank_info/, and the monitor's version, read once.

#define LOG_TAG "PerformanceService"

#include "JankInfo.h"

#include <android-base/stringprintf.h>
#include <log/log.h>

#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

using ::android::base::StringAppendF;

namespace {

constexpr char kCpuInfo[] = "/proc/jank_info/cpu_jank_info/cpu_info";
constexpr char kCpuInfoSig[] = "/proc/jank_info/cpu_jank_info/cpu_info_sig";
constexpr char kCpuLoad[] = "/proc/jank_info/cpu_jank_info/cpu_load";
constexpr char kCpuLoad32[] = "/proc/jank_info/cpu_jank_info/cpu_load32";
constexpr char kCpuLoad32Scale[] = "/proc/jank_info/cpu_jank_info/cpu_load32_scale";
constexpr char kLoadIndicator[] = "/proc/jank_info/cpu_jank_info/load_indicator";
constexpr char kCallStack[] = "/proc/jank_info/cpu_jank_info/callstack";
constexpr char kVersion[] = "/proc/jank_info/cpu_jank_info/version";

constexpr WholeNodeRead kJankRead = {LineOpen::kRead, kOpenFileError};

// The CPU load nodes are the ones the jank tooling depends on, so a missing one is reported.
void logMissingLoadNode(const char* path, int err) {
    ALOGE("DEBUG QXTR: open jank file %s : %s failed, %s", path, path, strerror(err));
}

}  // namespace

std::string JankInfo::readJankCpuInfo() const {
    return mNodes.readWholeNode(kCpuInfo, kJankRead);
}

std::string JankInfo::readJankCpuInfoSig() const {
    return mNodes.readWholeNode(kCpuInfoSig, kJankRead);
}

std::string JankInfo::readJankCpuLoad() const {
    return mNodes.readWholeNode(kCpuLoad, kJankRead, logMissingLoadNode);
}

std::string JankInfo::readJankCpuLoad32() const {
    return mNodes.readWholeNode(kCpuLoad32, kJankRead, logMissingLoadNode);
}

std::string JankInfo::readJankCpuLoad32Scale() const {
    return mNodes.readWholeNode(kCpuLoad32Scale, kJankRead);
}

std::string JankInfo::readJankCpuIndicator() const {
    return mNodes.readWholeNode(kLoadIndicator, kJankRead);
}

std::string JankInfo::readCallStack() const {
    return mNodes.readWholeNode(kCallStack, kJankRead);
}

std::string JankInfo::readJankVersion() {
    {
        std::lock_guard<std::mutex> lock(mLock);
        if (!mVersion.empty()) return mVersion;
    }
    // The node is read without the lock: two first calls may both read it, and store the same.
    // Only its first line is read, so a node whose writer keeps it open cannot hold the call.
    std::string first;
    if (!mNodes.readFirstLine(kVersion, LineOpen::kRead, &first)) {
        return "cannot access jank version";
    }
    // An empty first line leaves the cache empty, so the next call reads the node again.
    if (!first.empty()) {
        std::lock_guard<std::mutex> lock(mLock);
        mVersion = first;
    }
    return first;
}

void JankInfo::dump(std::string* out) const {
    std::lock_guard<std::mutex> lock(mLock);
    StringAppendF(out, "jank version: %s\n", mVersion.empty() ? "(not read yet)" : mVersion.c_str());
}

}  // namespace aidl::vendor::vyren::hardware::performance
