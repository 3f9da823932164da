// The jank monitor's CPU load monitor (CLM): load thresholds and switches, text nodes under
// /proc/jank_info/cpu_jank_info/ that are read and written as they stand.

#define LOG_TAG "PerformanceService"

#include <log/log.h>

#include <cerrno>
#include <cstring>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// The CLM nodes are tuned as well as read, so they are opened for reading and writing.
constexpr Performance::WholeNodeRead kClmRead = {Performance::LineOpen::kReadWrite, kOpenFileError};

// Every CLM node has a reader and a writer operation.
enum class Clm {
    kEnable,
    kFgFreqsThreshold,
    kHighLoadAll,
    kHighLoadGrp,
    kLowLoadGrp,
    kMuxSwitch,
    kBgDstatPercent,
    kReportThreshold,
};
constexpr const char* kClmNodes[] = {
    "/proc/jank_info/cpu_jank_info/clm_enable",
    "/proc/jank_info/cpu_jank_info/fg_freqs_threshold",
    "/proc/jank_info/cpu_jank_info/clm_highload_all",
    "/proc/jank_info/cpu_jank_info/clm_highload_grp",
    "/proc/jank_info/cpu_jank_info/clm_lowload_grp",
    "/proc/jank_info/cpu_jank_info/clm_mux_switch",
    "/proc/jank_info/cpu_jank_info/bg_dstat_percent",
    "/proc/jank_info/cpu_jank_info/clm_report_threshold",
};

constexpr const char* node(Clm which) {
    return kClmNodes[static_cast<size_t>(which)];
}

// The threshold pair's selector: 0 the background D-state share, 1 the report threshold. Any
// other value names no node, and is then treated as a node that cannot be opened.
constexpr const char* thresholdNode(int32_t which) {
    return which == 0   ? node(Clm::kBgDstatPercent)
           : which == 1 ? node(Clm::kReportThreshold)
                        : nullptr;
}

// A failed CLM write is reported in the words of a failed open.
constexpr char kClmWriteFailure[] = "Failed to open %s (%d): %s";

}  // namespace

::ndk::ScopedAStatus Performance::readClmEnable(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(node(Clm::kEnable), kClmRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeClmEnable(const std::string& value) {
    (void)writeOnce(node(Clm::kEnable), value, kClmWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readFgFreqsThreshold(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(node(Clm::kFgFreqsThreshold), kClmRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeFgFreqsThreshold(const std::string& value) {
    (void)writeOnce(node(Clm::kFgFreqsThreshold), value, kClmWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readClmHighLoadAll(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(node(Clm::kHighLoadAll), kClmRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeClmHighLoadAll(const std::string& value) {
    (void)writeOnce(node(Clm::kHighLoadAll), value, kClmWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readClmHighLoadGrp(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(node(Clm::kHighLoadGrp), kClmRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeClmHighLoadGrp(const std::string& value) {
    (void)writeOnce(node(Clm::kHighLoadGrp), value, kClmWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readClmLowLoadGrp(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(node(Clm::kLowLoadGrp), kClmRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeClmLowLoadGrp(const std::string& value) {
    (void)writeOnce(node(Clm::kLowLoadGrp), value, kClmWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getClmMuxSwitch(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(node(Clm::kMuxSwitch), kClmRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setClmMuxSwitch(const std::string& value) {
    (void)writeOnce(node(Clm::kMuxSwitch), value, kClmWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getClmThreshold(int32_t which, std::string* _aidl_return) {
    const char* path = thresholdNode(which);
    *_aidl_return = path != nullptr ? readWholeNode(path, kClmRead) : kOpenFileError;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setClmThreshold(const std::string& value, int32_t which) {
    const char* path = thresholdNode(which);
    if (path == nullptr) {
        // The same report as a path that names nothing: an empty path, which open refuses.
        ALOGE("Failed to open %s (%d): %s", "", ENOENT, strerror(ENOENT));
        return ::ndk::ScopedAStatus::ok();
    }
    (void)writeOnce(path, value, kClmWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
