// Process memory statistics: per-process records from the memory-statistics driver.

#define LOG_TAG "PerformanceService"

#include "MemoryStatistics.h"

#include <android-base/stringprintf.h>
#include <log/log.h>

#include <cstddef>
#include <cstring>
#include <mutex>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

using ::vyren::quilbex::memstat::proc_ms;
using ::vyren::quilbex::memstat::ProcMemStatHelper;
using MemStat = ::vyren::quilbex::memstat::ProcMemStat;

constexpr uint32_t kName = 0x20;
constexpr uint32_t kFlag = 0x10;
constexpr uint32_t kValue18 = 0x8;

// The 32-bit fields a caller may ask for, by flag bit. The smaps figures (offsets 56 to 68) are
// never handed out: a caller that asks for them pays for the walk and gets the defaults.
struct IntField {
    uint32_t bit;
    size_t offset;
    int32_t ProcMemStat::*field;
};
constexpr IntField kIntFields[] = {
    {0x800, offsetof(proc_ms, value20), &ProcMemStat::value20},
    {0x1, offsetof(proc_ms, value24), &ProcMemStat::value24},
    {0x2, offsetof(proc_ms, pid), &ProcMemStat::pid},
    {0x4, offsetof(proc_ms, value32), &ProcMemStat::value32},
    {0x80, offsetof(proc_ms, value36), &ProcMemStat::value36},
    {0x100, offsetof(proc_ms, value40), &ProcMemStat::value40},
    {0x200, offsetof(proc_ms, value44), &ProcMemStat::value44},
    {0x400, offsetof(proc_ms, value48), &ProcMemStat::value48},
    {0x40, offsetof(proc_ms, value52), &ProcMemStat::value52},
    {0x1000, offsetof(proc_ms, value72), &ProcMemStat::value72},
    {0x2000, offsetof(proc_ms, value76), &ProcMemStat::value76},
    {0x20000, offsetof(proc_ms, value80), &ProcMemStat::value80},
};

// Copies the fields flags selects; the others keep their defaults.
ProcMemStat ToProcMemStat(const proc_ms& ms, uint32_t flags) {
    ProcMemStat stat;
    if (flags & kName) stat.name.assign(ms.name, strnlen(ms.name, sizeof(ms.name)));
    if (flags & kFlag) stat.flag = ms.flag != 0;
    if (flags & kValue18) stat.value18 = static_cast<char16_t>(ms.value18);
    const auto* bytes = reinterpret_cast<const uint8_t*>(&ms);
    for (const IntField& f : kIntFields) {
        if ((flags & f.bit) == 0) continue;
        int32_t value;
        memcpy(&value, bytes + f.offset, sizeof(value));
        stat.*f.field = value;
    }
    return stat;
}

}  // namespace

ProcMemStatRet MemoryStatistics::readMemoryByPids(const std::vector<int32_t>& pids, int32_t flags) {
    const uint32_t bits = static_cast<uint32_t>(flags);
    ProcMemStatRet ret;
    ret.result = 1;
    // The helper's buffers hold one query's answer at a time: keep them until it is copied.
    if (pids.empty()) {
        std::lock_guard<ProcMemStatHelper> lock(mHelper);
        if (!MemStat::SizeMemStats(mHelper, bits, ProcMemStatHelper::kCapacity)) return ret;
        const proc_ms* records = mHelper.records();
        for (uint32_t i = 0, count = mHelper.recordCount(); i < count; ++i) {
            ret.stats.push_back(ToProcMemStat(records[i], bits));
        }
        ret.result = 0;
        return ret;
    }

    std::vector<ProcMemStat> stats;
    for (const int32_t pid : pids) {
        std::lock_guard<ProcMemStatHelper> lock(mHelper);
        // One process that cannot be read fails the whole list.
        if (!MemStat::PidMemStat(mHelper, bits, pid)) return ret;
        stats.push_back(ToProcMemStat(mHelper.pidRequest()->ms, bits));
    }
    ret.stats = std::move(stats);
    ret.result = 0;
    return ret;
}

ProcMemStatRet MemoryStatistics::readMemoryByUids(const std::vector<int32_t>& uids, int32_t flags) {
    // The list never holds more than this: the uid that would pass it and all after it are left
    // out, and the query still succeeds.
    constexpr uint16_t kMaxRecords = ProcMemStatHelper::kCapacity - 1;
    const uint32_t bits = static_cast<uint32_t>(flags);
    ProcMemStatRet ret;
    ret.result = 0;

    std::vector<proc_ms> gathered;
    for (const int32_t uid : uids) {
        std::lock_guard<ProcMemStatHelper> lock(mHelper);
        if (!MemStat::UidSizeMemStats(mHelper, bits, static_cast<uint32_t>(uid))) {
            ret.result = 1;
            return ret;
        }
        const uint32_t count = mHelper.recordCount();
        if (gathered.size() + count > kMaxRecords) break;
        const proc_ms* records = mHelper.records();
        gathered.insert(gathered.end(), records, records + count);
    }
    for (const proc_ms& ms : gathered) ret.stats.push_back(ToProcMemStat(ms, bits));
    return ret;
}

QuilbexVersionRet MemoryStatistics::readQuilbexVersion() {
    QuilbexVersionRet ret;
    ret.result = 1;
    ret.major = 0;
    ret.minor = 0;
    int major = 0;
    int minor = 0;
    if (mHelper.device().QuilbexVersion(major, minor)) {
        ret.result = 0;
        ret.major = major;
        ret.minor = minor;
        ALOGE("quilbex version %d.%d", major, minor);
    }
    return ret;
}

void MemoryStatistics::dump(std::string* out) const {
    ::android::base::StringAppendF(
        out, "memory statistics device: fd %d, buffers %s, capacity %u\n", mHelper.fd(),
        mHelper.hasBuffers() ? "allocated" : "none", mHelper.capacity());
}

}  // namespace aidl::vendor::vyren::hardware::performance
