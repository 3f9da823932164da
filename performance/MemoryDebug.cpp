// Memory debugging: kernel leak-detection switches, tunables and reports.

#include <android-base/stringprintf.h>

#include "Performance.h"

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

::ndk::ScopedAStatus Performance::enableKmallocDebug(int32_t* _aidl_return) {
    *_aidl_return = switchWrite(choose(kKmallocDebugEnable), true, "Failed to enable %s (%d): %s",
                                "enable Kmalloc debug");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::disableKmallocDebug(int32_t* _aidl_return) {
    *_aidl_return = switchWrite(choose(kKmallocDebugEnable), false, "Failed to disable %s (%d): %s",
                                "disable Kmalloc debug");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::enableVmallocDebug(int32_t* _aidl_return) {
    *_aidl_return = switchWrite(choose(kVmallocDebugEnable), true, "Failed to eable %s (%d): %s",
                                "eable Vmalloc debug");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::disableVmallocDebug(int32_t* _aidl_return) {
    *_aidl_return = switchWrite(choose(kVmallocDebugEnable), false, "Failed to disable %s (%d): %s",
                                "disable Vmalloc debug");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeKmallocDebugCreate(int32_t value, int32_t* _aidl_return) {
    *_aidl_return =
        valueWrite(choose(kKmallocDebugCreate), std::to_string(value), WriteCheck::kNotPositive,
                   StringPrintf("enable WriteKmallocDebugCreate=%d", value));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeKmallocDebugCreateWithType(const std::string& type,
                                                                  int32_t* _aidl_return) {
    // Typed creation exists only on the newer tree; an older kernel fails to open it.
    *_aidl_return = valueWrite(kKmallocDebugCreate.newer, type, WriteCheck::kNotPositive,
                               StringPrintf("enable WriteKmallocDebugCreate=%s", type.c_str()));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeMemleakDetectThread(int32_t value, int32_t* _aidl_return) {
    *_aidl_return =
        valueWrite(choose(kMemleakDetectThread), std::to_string(value), WriteCheck::kNotPositive,
                   StringPrintf("enable writeMemleakDetectThread=%d", value));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeVaFeature(int32_t value, int32_t* _aidl_return) {
    *_aidl_return = valueWrite(choose(kVaFeature), std::to_string(value), WriteCheck::kNegative,
                               StringPrintf("enable writeVaFeature=%d", value));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readKmallocDebugCreate(std::string* _aidl_return) {
    *_aidl_return = readNode(kKmallocDebugCreateReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getKmallocOrigin(std::string* _aidl_return) {
    *_aidl_return = readNode(kKmallocOriginReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getKmallocUsed(std::string* _aidl_return) {
    *_aidl_return = readNode(kKmallocUsedReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getKmallocDebug(std::string* _aidl_return) {
    *_aidl_return = readNode(kKmallocDebugReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readMemleakDetectThread(std::string* _aidl_return) {
    *_aidl_return = readNode(kMemleakDetectThreadReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readVaFeature(std::string* _aidl_return) {
    *_aidl_return = readNode(kVaFeatureReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getVmallocDebug(std::string* _aidl_return) {
    *_aidl_return = readNode(kVmallocDebugReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getVmallocUsed(std::string* _aidl_return) {
    *_aidl_return = readNode(kVmallocUsedReport);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getVmallocHashCal(std::string* _aidl_return) {
    *_aidl_return = readNode(kVmallocHashCalReport);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
