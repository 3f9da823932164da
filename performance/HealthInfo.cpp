// Health information: where each health node lives and how its lines are keyed, and the raw text
// of the nodes callers read whole.

#include "Performance.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// A health node the caller reads and parses itself, by the keys of its template.
struct Descriptor {
    const char* path;
    const std::vector<ProcReqItemHal>& keys;
};

constexpr Descriptor kEmcdrvIowait = {"/proc/vyren_healthinfo/emcdrv_iowait", gEmcdrvIowaitKeys};
constexpr Descriptor kIowaitHung = {"/proc/vyren_healthinfo/iowait_hung", gIowaitHungKeys};
constexpr Descriptor kSchedLatency = {"/proc/vyren_healthinfo/sched_latency", gSchedLatencyKeys};
constexpr Descriptor kFsyncWait = {"/proc/vyren_healthinfo/fsync_wait", gFsyncWaitKeys};
constexpr Descriptor kIowait = {"/proc/vyren_healthinfo/iowait", gIowaitKeys};
constexpr Descriptor kUfsFeature = {"/proc/vyren_healthinfo/ufs_feature", gUfsFeatureKeys};
constexpr Descriptor kIonWait = {"/proc/vyren_healthinfo/ion_wait", gIonWaitKeys};
constexpr Descriptor kAllocWait = {"/proc/vyren_healthinfo/alloc_wait", gAllocWaitKeys};
constexpr Descriptor kDState = {"/proc/vyren_healthinfo/dstate", gDStateKeys};
constexpr Descriptor kKswapdLoading = {"/proc/vyren_healthinfo/kswapd_loading", gKswapdLoadingKeys};
constexpr Descriptor kScmCall = {"/proc/vyren_healthinfo/scm_call", gScmCallKeys};

// Health nodes returned as their text (some also have a descriptor above), each read into a
// buffer of this size.
constexpr size_t kHealthTextSize = 4096;
constexpr char kCpuLoading[] = "/proc/vyren_healthinfo/cpu_loading";
constexpr char kCpuInfo[] = "/proc/vyren_healthinfo/cpu_info";

// The node is not opened: the caller reads it by the template, whether or not it exists now.
ProcReqHal describe(const Descriptor& node) {
    ProcReqHal request;
    request.path = node.path;
    request.items = node.keys;
    return request;
}

}  // namespace

::ndk::ScopedAStatus Performance::getHIEmcdrvIowait(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kEmcdrvIowait);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIIowaitHung(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kIowaitHung);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHISchedLatency(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kSchedLatency);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIFsyncWait(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kFsyncWait);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIIowait(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kIowait);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIUfsFeature(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kUfsFeature);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIIonWait(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kIonWait);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIAllocWait(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kAllocWait);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIDState(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kDState);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIKswapdLoading(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kKswapdLoading);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHIScmCall(ProcReqHal* _aidl_return) {
    *_aidl_return = describe(kScmCall);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHICpuLoading(std::string* _aidl_return) {
    *_aidl_return = readNode(kCpuLoading, kHealthTextSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getHICpuInfo(std::string* _aidl_return) {
    *_aidl_return = readNode(kCpuInfo, kHealthTextSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getschedlatency(std::string* _aidl_return) {
    *_aidl_return = readNode(kSchedLatency.path, kHealthTextSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getiowait(std::string* _aidl_return) {
    *_aidl_return = readNode(kIowait.path, kHealthTextSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getfsyncwait(std::string* _aidl_return) {
    *_aidl_return = readNode(kFsyncWait.path, kHealthTextSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getionwait(std::string* _aidl_return) {
    *_aidl_return = readNode(kIonWait.path, kHealthTextSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getallocwait(std::string* _aidl_return) {
    *_aidl_return = readNode(kAllocWait.path, kHealthTextSize);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getdstate(std::string* _aidl_return) {
    *_aidl_return = readNode(kDState.path, kHealthTextSize);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
