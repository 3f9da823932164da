// The jank monitor's CPU load monitor (CLM): load thresholds and switches, text nodes under
// /proc/jank_info/cpu_jank_info/ that are read and written as they stand.

#define LOG_TAG "PerformanceService"

#include "Clm.h"

#include <log/log.h>

#include <cerrno>
#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// The CLM nodes are tuned as well as read, so they are opened for reading and writing.
constexpr WholeNodeRead kClmRead = {LineOpen::kReadWrite, kOpenFileError};

// Every CLM node has a reader and a writer operation.
enum class ClmNode {
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

constexpr const char* node(ClmNode which) {
    return kClmNodes[static_cast<size_t>(which)];
}

// The threshold pair's selector: 0 the background D-state share, 1 the report threshold. Any
// other value names no node, and is then treated as a node that cannot be opened.
constexpr const char* thresholdNode(int32_t which) {
    return which == 0   ? node(ClmNode::kBgDstatPercent)
           : which == 1 ? node(ClmNode::kReportThreshold)
                        : nullptr;
}

}  // namespace

std::string Clm::readNode(const char* path) const {
    return mNodes.readWholeNode(path, kClmRead);
}

void Clm::writeNode(const char* path, const std::string& value) const {
    // A failed CLM write is reported in the words of a failed open.
    (void)mNodes.writeOnce(path, value, LogOpenFailure);
}

std::string Clm::readClmEnable() const {
    return readNode(node(ClmNode::kEnable));
}

void Clm::writeClmEnable(const std::string& value) const {
    writeNode(node(ClmNode::kEnable), value);
}

std::string Clm::readFgFreqsThreshold() const {
    return readNode(node(ClmNode::kFgFreqsThreshold));
}

void Clm::writeFgFreqsThreshold(const std::string& value) const {
    writeNode(node(ClmNode::kFgFreqsThreshold), value);
}

std::string Clm::readClmHighLoadAll() const {
    return readNode(node(ClmNode::kHighLoadAll));
}

void Clm::writeClmHighLoadAll(const std::string& value) const {
    writeNode(node(ClmNode::kHighLoadAll), value);
}

std::string Clm::readClmHighLoadGrp() const {
    return readNode(node(ClmNode::kHighLoadGrp));
}

void Clm::writeClmHighLoadGrp(const std::string& value) const {
    writeNode(node(ClmNode::kHighLoadGrp), value);
}

std::string Clm::readClmLowLoadGrp() const {
    return readNode(node(ClmNode::kLowLoadGrp));
}

void Clm::writeClmLowLoadGrp(const std::string& value) const {
    writeNode(node(ClmNode::kLowLoadGrp), value);
}

std::string Clm::getClmMuxSwitch() const {
    return readNode(node(ClmNode::kMuxSwitch));
}

void Clm::setClmMuxSwitch(const std::string& value) const {
    writeNode(node(ClmNode::kMuxSwitch), value);
}

std::string Clm::getClmThreshold(int32_t which) const {
    const char* path = thresholdNode(which);
    return path != nullptr ? readNode(path) : kOpenFileError;
}

void Clm::setClmThreshold(const std::string& value, int32_t which) const {
    const char* path = thresholdNode(which);
    if (path == nullptr) {
        // The same report as a path that names nothing: an empty path, which open refuses.
        ALOGE("Failed to open %s (%d): %s", "", ENOENT, strerror(ENOENT));
        return;
    }
    writeNode(path, value);
}

}  // namespace aidl::vendor::vyren::hardware::performance
