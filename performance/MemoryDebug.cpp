// Memory debugging: kernel leak-detection switches, tunables and reports.

#define LOG_TAG "PerformanceService"

#include "MemoryDebug.h"

#include <android-base/stringprintf.h>
#include <log/log.h>

#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

using ::android::base::StringPrintf;

namespace {

constexpr NodePair kKmallocDebugEnable = {"/proc/vyren_healthinfo/kmalloc_debug_enable",
                                          "/proc/vyren_mem/memleak_detect/kmalloc_debug_enable"};
constexpr NodePair kVmallocDebugEnable = {"/proc/vyren_healthinfo/vmalloc_debug_enable",
                                          "/proc/vyren_mem/memleak_detect/vmalloc_debug_enable"};
constexpr NodePair kKmallocDebugCreate = {"/proc/vyren_healthinfo/kmalloc_debug_create",
                                          "/proc/vyren_mem/memleak_detect/kmalloc_debug_create"};
constexpr NodePair kMemleakDetectThread = {"/proc/vyren_healthinfo/memleak_detect_thread",
                                           "/proc/vyren_mem/memleak_detect/memleak_detect_thread"};
constexpr NodePair kVaFeature = {"/proc/vyren_healthinfo/va_feature",
                                 "/proc/vyren_mem/memleak_detect/va_feature"};

constexpr ReportNode kKmallocDebugCreateReport = {kKmallocDebugCreate, 4096, 4096};
constexpr ReportNode kKmallocOriginReport = {
    {"/proc/vyren_healthinfo/kmalloc_origin", "/proc/vyren_mem/memleak_detect/kmalloc_origin"},
    4096,
    4096};
constexpr ReportNode kKmallocUsedReport = {
    {"/proc/vyren_healthinfo/kmalloc_used", "/proc/vyren_mem/memleak_detect/kmalloc_used"}, 512, 512};
constexpr ReportNode kKmallocDebugReport = {
    {"/proc/vyren_healthinfo/kmalloc_debug", "/proc/vyren_mem/memleak_detect/kmalloc_debug"},
    4096,
    4096};
constexpr ReportNode kMemleakDetectThreadReport = {kMemleakDetectThread, 32, 32};
constexpr ReportNode kVaFeatureReport = {kVaFeature, 32, 32};
// Newer kernels report vmalloc allocations by stack hash, which can be large.
constexpr ReportNode kVmallocDebugReport = {
    {"/proc/vyren_healthinfo/vmalloc_debug", "/proc/vyren_mem/memleak_detect/stack_hash"},
    4096,
    524288};
constexpr ReportNode kVmallocUsedReport = {
    {"/proc/vyren_healthinfo/vmalloc_used", "/proc/vyren_mem/memleak_detect/vmalloc_used"}, 128, 128};
constexpr ReportNode kVmallocHashCalReport = {
    {"/proc/vyren_healthinfo/vmalloc_hash_cal", "/proc/vyren_mem/memleak_detect/vmalloc_hash_cal"},
    128,
    128};

}  // namespace

int32_t MemoryDebug::enableKmallocDebug() const {
    return mNodes.switchWrite(mNodes.choose(kKmallocDebugEnable), true,
                              NODE_ERROR_LOG("Failed to enable %s (%d): %s"),
                              "enable Kmalloc debug");
}

int32_t MemoryDebug::disableKmallocDebug() const {
    return mNodes.switchWrite(mNodes.choose(kKmallocDebugEnable), false,
                              NODE_ERROR_LOG("Failed to disable %s (%d): %s"),
                              "disable Kmalloc debug");
}

int32_t MemoryDebug::enableVmallocDebug() const {
    // "eable" is matched by log readers as it stands.
    return mNodes.switchWrite(mNodes.choose(kVmallocDebugEnable), true,
                              NODE_ERROR_LOG("Failed to eable %s (%d): %s"), "eable Vmalloc debug");
}

int32_t MemoryDebug::disableVmallocDebug() const {
    return mNodes.switchWrite(mNodes.choose(kVmallocDebugEnable), false,
                              NODE_ERROR_LOG("Failed to disable %s (%d): %s"),
                              "disable Vmalloc debug");
}

int32_t MemoryDebug::writeKmallocDebugCreate(int32_t value) const {
    return mNodes.valueWrite(mNodes.choose(kKmallocDebugCreate), std::to_string(value),
                             WriteCheck::kNotPositive,
                             StringPrintf("enable WriteKmallocDebugCreate=%d", value));
}

int32_t MemoryDebug::writeKmallocDebugCreateWithType(const std::string& type) const {
    // Typed creation exists only on the newer tree; an older kernel fails to open it.
    return mNodes.valueWrite(kKmallocDebugCreate.newer, type, WriteCheck::kNotPositive,
                             StringPrintf("enable WriteKmallocDebugCreate=%s", type.c_str()));
}

int32_t MemoryDebug::writeMemleakDetectThread(int32_t value) const {
    return mNodes.valueWrite(mNodes.choose(kMemleakDetectThread), std::to_string(value),
                             WriteCheck::kNotPositive,
                             StringPrintf("enable writeMemleakDetectThread=%d", value));
}

int32_t MemoryDebug::writeVaFeature(int32_t value) const {
    return mNodes.valueWrite(mNodes.choose(kVaFeature), std::to_string(value),
                             WriteCheck::kNegative, StringPrintf("enable writeVaFeature=%d", value));
}

std::string MemoryDebug::readKmallocDebugCreate() const {
    return mNodes.readNode(kKmallocDebugCreateReport);
}

std::string MemoryDebug::getKmallocOrigin() const {
    return mNodes.readNode(kKmallocOriginReport);
}

std::string MemoryDebug::getKmallocUsed() const {
    return mNodes.readNode(kKmallocUsedReport);
}

std::string MemoryDebug::getKmallocDebug() const {
    return mNodes.readNode(kKmallocDebugReport);
}

std::string MemoryDebug::readMemleakDetectThread() const {
    return mNodes.readNode(kMemleakDetectThreadReport);
}

std::string MemoryDebug::readVaFeature() const {
    return mNodes.readNode(kVaFeatureReport);
}

std::string MemoryDebug::getVmallocDebug() const {
    return mNodes.readNode(kVmallocDebugReport);
}

std::string MemoryDebug::getVmallocUsed() const {
    return mNodes.readNode(kVmallocUsedReport);
}

std::string MemoryDebug::getVmallocHashCal() const {
    return mNodes.readNode(kVmallocHashCalReport);
}

}  // namespace aidl::vendor::vyren::hardware::performance
