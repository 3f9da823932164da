// Health information: where each health node lives and how its lines are keyed, and the raw text
// of the nodes callers read whole.

#include "HealthInfo.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// One key of a health node. Every health node separates key and value with a colon. The flag tells
// the reader how to use a value: 1 for a running counter (compare two samples), 0 for a setting or
// a peak.
struct KeyRow {
    const char* key;
    int32_t flag;
};
constexpr char kKeySeparator[] = ":";

// The eleven keys a latency-style node starts with, each after the node's prefix.
constexpr KeyRow kLatencyShape[] = {
    {"_low_thresh_ms", 0}, {"_high_thresh_ms", 0}, {"_low_cnt", 1},    {"_high_cnt", 1},
    {"_total_ms", 1},      {"_total_cnt", 1},      {"_fg_low_cnt", 1}, {"_fg_high_cnt", 1},
    {"_fg_total_ms", 1},   {"_fg_total_cnt", 1},   {"_fg_max_ms", 0},
};

constexpr KeyRow kEmcdrvIoKeys[] = {{"flashio_total_latency", 1},
                                    {"blockio_total_latency", 1},
                                    {"iosize_write_count_fg", 1},
                                    {"iosize_write_us_fg", 1},
                                    {"iosize_500ms_syncwrite_count_fg", 1},
                                    {"iosize_200ms_syncwrite_count_fg", 1},
                                    {"iosize_500ms_asyncwrite_count_fg", 1},
                                    {"iosize_200ms_asyncwrite_count_fg", 1},
                                    {"iosize_read_count_fg", 1},
                                    {"iosize_read_us_fg", 1},
                                    {"iosize_500ms_read_count_fg", 1},
                                    {"iosize_200ms_read_count_fg", 1},
                                    {"iosize_write_count_bg", 1},
                                    {"iosize_write_us_bg", 1},
                                    {"iosize_2s_asyncwrite_count_bg", 1},
                                    {"iosize_500ms_asyncwrite_count_bg", 1},
                                    {"iosize_200ms_asyncwrite_count_bg", 1},
                                    {"iosize_2s_syncwrite_count_bg", 1},
                                    {"iosize_500ms_syncwrite_count_bg", 1},
                                    {"iosize_200ms_syncwrite_count_bg", 1},
                                    {"iosize_read_count_bg", 1},
                                    {"iosize_read_us_bg", 1},
                                    {"iosize_2s_read_count_bg", 1},
                                    {"iosize_500ms_read_count_bg", 1},
                                    {"iosize_200ms_read_count_bg", 1},
                                    {"iosize_4k_read_count", 1},
                                    {"iosize_4k_read_ms", 1},
                                    {"iosize_4k_write_count", 1},
                                    {"iosize_4k_write_ms", 1}};
constexpr KeyRow kIowaitHungKeys[] = {{"iowait_hung_cnt", 0}, {"iowait_panic_cnt", 0}};
constexpr KeyRow kUfsFeatureKeys[] = {
    {"hpb_hit_cnt", 1},       {"hpb_miss_cnt", 1},        {"hpb_rb_noti_cnt", 1},
    {"hpb_rb_active_cnt", 1}, {"hpb_rb_inactive_cnt", 1}, {"hpb_map_req_cnt", 1},
    {"hpb_pre_req_cnt", 1},   {"hpb_umap_req_cnt", 1},    {"tw_enable", 0},
    {"tw_flush_enable", 0},   {"tw_flush_h8_enable", 0},  {"tw_buf_size_mb", 0},
    {"tw_avail_buf_pct", 0},  {"tw_life_est", 0},         {"tw_write_total_mb", 1},
    {"tw_flush_total_mb", 1}, {"tw_toggle_cnt", 1},       {"h8_enter_cnt", 1},
    {"h8_exit_cnt", 1},       {"h8_enter_fail_cnt", 1},   {"h8_exit_fail_cnt", 1},
    {"h8_total_ms", 1},       {"h8_max_ms", 0},           {"h8_auto_enable", 0},
    {"h8_auto_idle_ms", 0},
};
constexpr KeyRow kIonWaitKeys[] = {{"total_ion_wait_h_cnt", 1},
                                   {"total_ion_wait_l_cnt", 1},
                                   {"fg_ion_wait_h_cnt", 1},
                                   {"fg_ion_wait_l_cnt", 1},
                                   {"total_ion_wait_max_ms", 0}};
constexpr KeyRow kAllocWaitKeys[] = {
    {"total_alloc_wait_h_cnt", 1},  {"total_alloc_wait_l_cnt", 1},
    {"fg_alloc_wait_h_cnt", 1},     {"fg_alloc_wait_l_cnt", 1},
    {"total_alloc_wait_max_ms", 0}, {"total_alloc_wait_max_order", 0},
    {"fg_alloc_wait_max_ms", 0},    {"fg_alloc_wait_max_order", 0}};
constexpr KeyRow kKswapdLoadingKeys[] = {{"critical", 0}, {"heavy", 0}};

// A health node the caller reads and parses itself, by its key template: the latency shape under
// latencyPrefix when it has one, then its own keys, in the node's key order.
struct Descriptor {
    const char* path;
    const char* latencyPrefix;
    const KeyRow* keys;
    size_t keyCount;
};

template <size_t N>
constexpr Descriptor withKeys(const char* path, const char* latencyPrefix, const KeyRow (&keys)[N]) {
    return {path, latencyPrefix, keys, N};
}
constexpr Descriptor latencyOnly(const char* path, const char* prefix) {
    return {path, prefix, nullptr, 0};
}

constexpr Descriptor kEmcdrvIowait =
    withKeys("/proc/vyren_healthinfo/emcdrv_iowait", "emcdrv_iowait", kEmcdrvIoKeys);
constexpr Descriptor kIowaitHung =
    withKeys("/proc/vyren_healthinfo/iowait_hung", nullptr, kIowaitHungKeys);
constexpr Descriptor kSchedLatency = latencyOnly("/proc/vyren_healthinfo/sched_latency", "sched");
constexpr Descriptor kFsyncWait = latencyOnly("/proc/vyren_healthinfo/fsync_wait", "fsync");
constexpr Descriptor kIowait = latencyOnly("/proc/vyren_healthinfo/iowait", "iowait");
constexpr Descriptor kUfsFeature =
    withKeys("/proc/vyren_healthinfo/ufs_feature", nullptr, kUfsFeatureKeys);
constexpr Descriptor kIonWait = withKeys("/proc/vyren_healthinfo/ion_wait", nullptr, kIonWaitKeys);
constexpr Descriptor kAllocWait =
    withKeys("/proc/vyren_healthinfo/alloc_wait", nullptr, kAllocWaitKeys);
constexpr Descriptor kDState = latencyOnly("/proc/vyren_healthinfo/dstate", "dstate");
constexpr Descriptor kKswapdLoading =
    withKeys("/proc/vyren_healthinfo/kswapd_loading", nullptr, kKswapdLoadingKeys);
constexpr Descriptor kScmCall = latencyOnly("/proc/vyren_healthinfo/scm_call", "scmcall");

// Health nodes returned as their text (some also have a descriptor above), each read into a
// buffer of this size.
constexpr size_t kHealthTextSize = 4096;
constexpr char kCpuLoading[] = "/proc/vyren_healthinfo/cpu_loading";
constexpr char kCpuInfo[] = "/proc/vyren_healthinfo/cpu_info";

ProcReqItemHal item(std::string key, int32_t flag) {
    ProcReqItemHal result;
    result.key = std::move(key);
    result.separator = kKeySeparator;
    result.flag = flag;
    return result;
}

// The node is not opened: the caller reads it by the template, whether or not it exists now.
ProcReqHal describe(const Descriptor& node) {
    ProcReqHal request;
    request.path = node.path;
    if (node.latencyPrefix != nullptr) {
        for (const KeyRow& row : kLatencyShape) {
            request.items.push_back(item(node.latencyPrefix + std::string(row.key), row.flag));
        }
    }
    for (size_t i = 0; i < node.keyCount; ++i) {
        request.items.push_back(item(node.keys[i].key, node.keys[i].flag));
    }
    return request;
}

}  // namespace

ProcReqHal HealthInfo::getHIEmcdrvIowait() const {
    return describe(kEmcdrvIowait);
}

ProcReqHal HealthInfo::getHIIowaitHung() const {
    return describe(kIowaitHung);
}

ProcReqHal HealthInfo::getHISchedLatency() const {
    return describe(kSchedLatency);
}

ProcReqHal HealthInfo::getHIFsyncWait() const {
    return describe(kFsyncWait);
}

ProcReqHal HealthInfo::getHIIowait() const {
    return describe(kIowait);
}

ProcReqHal HealthInfo::getHIUfsFeature() const {
    return describe(kUfsFeature);
}

ProcReqHal HealthInfo::getHIIonWait() const {
    return describe(kIonWait);
}

ProcReqHal HealthInfo::getHIAllocWait() const {
    return describe(kAllocWait);
}

ProcReqHal HealthInfo::getHIDState() const {
    return describe(kDState);
}

ProcReqHal HealthInfo::getHIKswapdLoading() const {
    return describe(kKswapdLoading);
}

ProcReqHal HealthInfo::getHIScmCall() const {
    return describe(kScmCall);
}

std::string HealthInfo::getHICpuLoading() const {
    return mNodes.readNode(kCpuLoading, kHealthTextSize);
}

std::string HealthInfo::getHICpuInfo() const {
    return mNodes.readNode(kCpuInfo, kHealthTextSize);
}

std::string HealthInfo::getschedlatency() const {
    return mNodes.readNode(kSchedLatency.path, kHealthTextSize);
}

std::string HealthInfo::getiowait() const {
    return mNodes.readNode(kIowait.path, kHealthTextSize);
}

std::string HealthInfo::getfsyncwait() const {
    return mNodes.readNode(kFsyncWait.path, kHealthTextSize);
}

std::string HealthInfo::getionwait() const {
    return mNodes.readNode(kIonWait.path, kHealthTextSize);
}

std::string HealthInfo::getallocwait() const {
    return mNodes.readNode(kAllocWait.path, kHealthTextSize);
}

std::string HealthInfo::getdstate() const {
    return mNodes.readNode(kDState.path, kHealthTextSize);
}

}  // namespace aidl::vendor::vyren::hardware::performance
