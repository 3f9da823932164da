// Filesystem fragmentation: the ext4 fragmentation reports of a block device, and the blocks that
// f2fs garbage collection has moved on the busiest f2fs device.

#define LOG_TAG "PerformanceService"

#include "Fragmentation.h"

#include <android-base/parseint.h>
#include <android-base/strings.h>
#include <dirent.h>
#include <log/log.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kExt4Dir[] = "/proc/fs/ext4/";
constexpr char kFreeFrag[] = "/free_frag";
constexpr char kFragScore[] = "/frag_score";
constexpr size_t kExt4ReportSize = 4096;

constexpr char kF2fsDir[] = "/sys/fs/f2fs/";
constexpr char kMovedForeground[] = "moved_blocks_foreground";
constexpr char kMovedBackground[] = "moved_blocks_background";

// Garbage collection that matters runs on device-mapper volumes and on the tmemory cache.
bool isF2fsDataDevice(const char* name) {
    return strstr(name, "dm") != nullptr || strstr(name, "tmemory") != nullptr;
}

// One moved-blocks count of the f2fs device at prefix: a whole int, in hexadecimal after 0x.
// Anything else counts 0.
int32_t movedBlocks(const KernelNodes& nodes, const std::string& prefix, const char* node) {
    std::string text;
    int32_t value = 0;
    if (!nodes.ReadFileToStringT(prefix + "/" + node, &text)) return 0;
    text = android::base::Trim(text);
    if (!android::base::ParseInt(text, &value)) return 0;
    ALOGI("ScopedAStatus:%s:buf = %s tmp = %d", node, text.c_str(), value);
    return value;
}

}  // namespace

int Fragmentation::GetMaxValueNode(const std::string& path) const {
    std::string text;
    if (!mNodes.readSmallNode(path, &text)) {
        ALOGI("get GetMaxValueNode fd failed!");
        return 0;
    }
    // A node that does not start with a number, or holds one beyond int, counts as nothing
    // moved; it must not take the service down.
    errno = 0;
    char* end = nullptr;
    const long value = strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || errno == ERANGE || value < INT_MIN || value > INT_MAX) {
        ALOGI("GetMaxValueNode: %s holds no int value", path.c_str());
        return 0;
    }
    ALOGI("GetMaxValueNode:maxValue = %d\n", static_cast<int>(value));
    return static_cast<int>(value);
}

std::string Fragmentation::GetDevName(const std::string& directory) const {
    std::string device;
    int best = 0;
    // Directory order; on a tie the later device wins, and so does an unreadable one while
    // nothing better has been seen.
    (void)mNodes.forEachEntry(directory.c_str(), [&](const dirent& entry) {
        if (!isF2fsDataDevice(entry.d_name)) return true;
        const int value =
            GetMaxValueNode(std::string(kF2fsDir) + entry.d_name + "/" + kMovedBackground);
        if (value >= best) {
            ALOGI("GetDevName:getMaxValue = %d flag_value = %d str = %s", value, best, entry.d_name);
            device = entry.d_name;
            best = value;
        }
        return true;
    });
    return device;
}

std::string Fragmentation::getExt4FreefragInfo(const std::string& device) const {
    return mNodes.readNode((kExt4Dir + Component(device) + kFreeFrag).c_str(), kExt4ReportSize);
}

std::string Fragmentation::getExt4FragScore(const std::string& device) const {
    return mNodes.readNode((kExt4Dir + Component(device) + kFragScore).c_str(), kExt4ReportSize);
}

std::string Fragmentation::getF2fsMovedBlks() const {
    // With no f2fs device the prefix is the f2fs directory itself, and both counts are 0.
    const std::string prefix = kF2fsDir + GetDevName(kF2fsDir);
    ALOGI("ScopedAStatus:pathPrefix %s", prefix.c_str());
    const int32_t foreground = movedBlocks(mNodes, prefix, kMovedForeground);
    const int32_t background = movedBlocks(mNodes, prefix, kMovedBackground);
    // The sum wraps as a 32-bit int does.
    return std::to_string(static_cast<int32_t>(static_cast<uint32_t>(foreground) +
                                               static_cast<uint32_t>(background)));
}

}  // namespace aidl::vendor::vyren::hardware::performance
