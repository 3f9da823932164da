// The records the test service answers in place of operations not built yet, so that every record
// type of the interface crosses a process boundary. Strings carry quotes, control characters and
// multi-byte UTF-8 (one outside the BMP, which travels as a UTF-16 surrogate pair); numbers carry
// both ends of their range.
#pragma once

#include <aidl/vendor/vyren/hardware/performance/ProcMemStatRet.h>
#include <aidl/vendor/vyren/hardware/performance/ProcReqHal.h>
#include <aidl/vendor/vyren/hardware/performance/QuilbexVersionRet.h>
#include <aidl/vendor/vyren/hardware/performance/TaskWakeInfo.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace e2e {

namespace performance = ::aidl::vendor::vyren::hardware::performance;

inline constexpr int32_t kMinInt = std::numeric_limits<int32_t>::min();
inline constexpr int32_t kMaxInt = std::numeric_limits<int32_t>::max();

// Where the test service registers, beside the daemon.
inline constexpr char kTestInstance[] = "vendor.vyren.hardware.performance.IPerformance/e2e";

// getWakeThreadsAffinityOrdered answers status = count for this handle and -1 for any other.
inline constexpr char kWakeHandle[] = "3120";

inline performance::ProcReqHal IowaitHungRecord() {
    performance::ProcReqHal record;
    record.path = "/proc/vyren_healthinfo/iowait_hung";
    record.items.resize(3);
    record.items[0].key = "hung_count";
    record.items[0].separator = ":";
    record.items[0].flag = 3;
    record.items[1].key = "max \"ms\"\tlast\\";
    record.items[1].separator = "=\n";
    record.items[1].flag = kMinInt;
    record.items[2].key = "d\xc3\xa9lai \xe5\x90\x8d \xf0\x9f\x98\x80";
    record.items[2].separator = "";
    record.items[2].flag = kMaxInt;
    return record;
}

inline performance::TaskWakeInfo WakeRecord(const std::string& handle, int32_t count) {
    performance::TaskWakeInfo record;
    record.status = handle == kWakeHandle ? count : -1;
    record.threads.resize(2);
    record.threads[0] = {1, 2, 3, 4, 5, 6, 7};
    record.threads[1] = {kMinInt, -1, 0, kMaxInt, 10123, 580, 3120};
    return record;
}

// One statistics record per pid, each field a different function of the pid, so that a record
// read back in the wrong place or with shifted fields shows.
inline performance::ProcMemStatRet MemoryRecord(const std::vector<int32_t>& pids, int32_t flags) {
    performance::ProcMemStatRet record;
    record.result = flags;
    for (const int32_t pid : pids) {
        performance::ProcMemStat stat;
        stat.name = "proc-" + std::to_string(pid);
        stat.flag = pid % 2 == 0;
        stat.value18 = u'\u00e9';
        stat.value20 = pid + 20;
        stat.value24 = pid + 24;
        stat.pid = pid;
        stat.value32 = pid + 32;
        stat.value36 = pid + 36;
        stat.value40 = pid + 40;
        stat.value44 = pid + 44;
        stat.value48 = pid + 48;
        stat.value52 = pid + 52;
        stat.smapsTotal = -pid;
        stat.reserved = kMinInt;
        stat.smapsDalvikHeap = pid * 2;
        stat.smapsNativeMalloc = pid * 3;
        stat.value72 = pid + 72;
        stat.value76 = pid + 76;
        stat.value80 = kMaxInt;
        record.stats.push_back(stat);
    }
    return record;
}

inline performance::QuilbexVersionRet QuilbexRecord() {
    performance::QuilbexVersionRet record;
    record.result = 0;
    record.major = 2;
    record.minor = 14;
    return record;
}

}  // namespace e2e
