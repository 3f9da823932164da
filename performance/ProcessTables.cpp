#include "ProcessTables.h"

#include <initializer_list>
#include <iterator>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// Every health-information node separates key and value with a colon. The flag tells the reader
// how to use a value: 1 for a running counter (compare two samples), 0 for a setting or a peak.
constexpr char kKeySeparator[] = ":";

struct KeyRow {
    const char* key;
    int32_t flag;
};

std::vector<ProcReqItemHal> keys(std::initializer_list<KeyRow> rows,
                                 std::vector<ProcReqItemHal> items = {}) {
    for (const auto& row : rows) {
        ProcReqItemHal item;
        item.key = row.key;
        item.separator = kKeySeparator;
        item.flag = row.flag;
        items.push_back(std::move(item));
    }
    return items;
}

// The eleven keys that every latency-style node starts with.
std::vector<ProcReqItemHal> latencyKeys(const std::string& prefix) {
    constexpr KeyRow kShape[] = {
        {"_low_thresh_ms", 0}, {"_high_thresh_ms", 0}, {"_low_cnt", 1},    {"_high_cnt", 1},
        {"_total_ms", 1},      {"_total_cnt", 1},      {"_fg_low_cnt", 1}, {"_fg_high_cnt", 1},
        {"_fg_total_ms", 1},   {"_fg_total_cnt", 1},   {"_fg_max_ms", 0},
    };
    std::vector<ProcReqItemHal> items;
    for (const auto& row : kShape) {
        ProcReqItemHal item;
        item.key = prefix + row.key;
        item.separator = kKeySeparator;
        item.flag = row.flag;
        items.push_back(std::move(item));
    }
    return items;
}

}  // namespace

// Defined in this order so that they are destroyed in the reverse order at exit.
::vyren::quilbex::memstat::ProcMemStatHelper gMemStatHelper;

std::mutex gTaskTrackLock;
std::map<TaskGroup, std::vector<int32_t>> gTaskTrackTable;
std::atomic<bool> gTaskTrackEnabled{false};

std::mutex gWakerSeedLock;
std::mutex gWakerInfoLock;

const std::vector<ProcReqItemHal> gEmcdrvIowaitKeys = keys({{"flashio_total_latency", 1},
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
                                                            {"iosize_4k_write_ms", 1}},
                                                           latencyKeys("emcdrv_iowait"));
const std::vector<ProcReqItemHal> gIowaitHungKeys =
    keys({{"iowait_hung_cnt", 0}, {"iowait_panic_cnt", 0}});
const std::vector<ProcReqItemHal> gSchedLatencyKeys = latencyKeys("sched");
const std::vector<ProcReqItemHal> gFsyncWaitKeys = latencyKeys("fsync");
const std::vector<ProcReqItemHal> gIowaitKeys = latencyKeys("iowait");
const std::vector<ProcReqItemHal> gUfsFeatureKeys = keys({
    {"hpb_hit_cnt", 1},       {"hpb_miss_cnt", 1},        {"hpb_rb_noti_cnt", 1},
    {"hpb_rb_active_cnt", 1}, {"hpb_rb_inactive_cnt", 1}, {"hpb_map_req_cnt", 1},
    {"hpb_pre_req_cnt", 1},   {"hpb_umap_req_cnt", 1},    {"tw_enable", 0},
    {"tw_flush_enable", 0},   {"tw_flush_h8_enable", 0},  {"tw_buf_size_mb", 0},
    {"tw_avail_buf_pct", 0},  {"tw_life_est", 0},         {"tw_write_total_mb", 1},
    {"tw_flush_total_mb", 1}, {"tw_toggle_cnt", 1},       {"h8_enter_cnt", 1},
    {"h8_exit_cnt", 1},       {"h8_enter_fail_cnt", 1},   {"h8_exit_fail_cnt", 1},
    {"h8_total_ms", 1},       {"h8_max_ms", 0},           {"h8_auto_enable", 0},
    {"h8_auto_idle_ms", 0},
});
const std::vector<ProcReqItemHal> gIonWaitKeys = keys({{"total_ion_wait_h_cnt", 1},
                                                       {"total_ion_wait_l_cnt", 1},
                                                       {"fg_ion_wait_h_cnt", 1},
                                                       {"fg_ion_wait_l_cnt", 1},
                                                       {"total_ion_wait_max_ms", 0}});
const std::vector<ProcReqItemHal> gAllocWaitKeys = keys({{"total_alloc_wait_h_cnt", 1},
                                                         {"total_alloc_wait_l_cnt", 1},
                                                         {"fg_alloc_wait_h_cnt", 1},
                                                         {"fg_alloc_wait_l_cnt", 1},
                                                         {"total_alloc_wait_max_ms", 0},
                                                         {"total_alloc_wait_max_order", 0},
                                                         {"fg_alloc_wait_max_ms", 0},
                                                         {"fg_alloc_wait_max_order", 0}});
const std::vector<ProcReqItemHal> gDStateKeys = latencyKeys("dstate");
const std::vector<ProcReqItemHal> gKswapdLoadingKeys = keys({{"critical", 0}, {"heavy", 0}});
const std::vector<ProcReqItemHal> gScmCallKeys = latencyKeys("scmcall");

std::vector<int32_t> gWakerAffinity(7, -1);
const TaskWakeInfo gWakerDefaultInfo = [] {
    constexpr int32_t ThreadInfo::*kFields[] = {
        &ThreadInfo::field1, &ThreadInfo::field2, &ThreadInfo::field3, &ThreadInfo::field4,
        &ThreadInfo::field5, &ThreadInfo::field6, &ThreadInfo::field7};
    ThreadInfo none;
    for (size_t i = 0; i < std::size(kFields); ++i) none.*kFields[i] = gWakerAffinity[i];
    TaskWakeInfo info;
    info.status = -1;
    info.threads.push_back(none);
    return info;
}();

std::atomic<int32_t> gUxSettingSwitch{-1};

std::mutex gStorageNodeLock;
std::map<std::string, int> gStorageNodeMap = {{"hpb_stats", 0}, {"hpb_params", 1}};

}  // namespace aidl::vendor::vyren::hardware::performance
