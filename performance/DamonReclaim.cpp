// DAMON-based proactive reclaim: the module switch, watermarks, cold time, quota and monitoring
// intervals.

#define LOG_TAG "PerformanceService"

#include "DamonReclaim.h"

#include <log/log.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

#define DAMON_PARAMETERS "/sys/module/damon_reclaim/parameters/"
constexpr char kEnabled[] = DAMON_PARAMETERS "enabled";
constexpr char kMinAge[] = DAMON_PARAMETERS "min_age";
constexpr const char* kWmarks[] = {DAMON_PARAMETERS "wmarks_metric", DAMON_PARAMETERS "wmarks_high",
                                   DAMON_PARAMETERS "wmarks_mid", DAMON_PARAMETERS "wmarks_low"};
constexpr const char* kQuota[] = {DAMON_PARAMETERS "quota_ms", DAMON_PARAMETERS "quota_sz",
                                  DAMON_PARAMETERS "quota_reset_interval_ms"};
constexpr const char* kIntervals[] = {DAMON_PARAMETERS "sample_interval",
                                      DAMON_PARAMETERS "aggr_interval"};
#undef DAMON_PARAMETERS

using Stream = std::unique_ptr<FILE, FileCloser>;

// The parameter files of one call. All are opened ("w": created on a plain file system,
// truncated) before any argument is looked at; a value is buffered in its stream and reaches the
// kernel when the stream closes, so closing in order is the order the kernel sees the writes.
// Errors at close are not noticed.
template <size_t N>
class ParameterFiles {
  public:
    // resolve gives the path of a device node in the service's view of the file system.
    template <typename Resolve>
    ParameterFiles(const char* const (&paths)[N], Resolve resolve) {
        for (size_t i = 0; i < N; ++i) {
            mStreams[i].reset(fopen(resolve(paths[i]).c_str(), "we"));
            if (!good(i) && mFirstErrno == 0) mFirstErrno = errno;
        }
    }
    ~ParameterFiles() { close(); }

    bool good(size_t i) const { return mStreams[i] != nullptr; }
    bool allGood() const {
        for (size_t i = 0; i < N; ++i) {
            if (!good(i)) return false;
        }
        return true;
    }
    int openErrno() const { return mFirstErrno; }
    void put(size_t i, const std::string& text) {
        if (good(i)) fputs(text.c_str(), mStreams[i].get());
    }
    void close() {
        for (auto& stream : mStreams) stream.reset();
    }

  private:
    Stream mStreams[N];
    int mFirstErrno = 0;
};

}  // namespace

void DamonReclaim::logOpenFailure(const char* path, int err) const {
    const KernelVersion& v = mNodes.version();
    ALOGE("[damon_reclaim] Failed to open %s (%d): %s, Linux version %d.%d.%d", path, err,
          strerror(err), v.major, v.minor, v.patch);
}

int DamonReclaim::damonSwitch(bool on) const {
    const char* const paths[] = {kEnabled};
    ParameterFiles files(paths, [this](const char* p) { return mNodes.path(p); });
    if (!files.good(0)) {
        logOpenFailure(kEnabled, files.openErrno());
        return -1;
    }
    files.put(0, on ? "1" : "0");
    files.close();
    // "disable." is matched by log readers as it stands.
    ALOGD("%s", on ? "[damon_reclaim] enabled." : "[damon_reclaim] disable.");
    return 0;
}

int32_t DamonReclaim::enableDamonReclaim() const {
    return damonSwitch(true);
}

int32_t DamonReclaim::disableDamonReclaim() const {
    return damonSwitch(false);
}

int32_t DamonReclaim::setDamonReclaimWmarks(int32_t metric, int32_t high, int32_t mid,
                                            int32_t low) const {
    enum { kMetric, kHigh, kMid, kLow };
    ParameterFiles files(kWmarks, [this](const char* p) { return mNodes.path(p); });
    if (!files.allGood()) {
        ALOGE("[damon_reclaim] Failed to open wmarks_xxx, Linux version %d.%d.%d",
              mNodes.version().major, mNodes.version().minor, mNodes.version().patch);
        return -1;
    }
    if (metric == 1) {
        // Watermarks out of order are skipped, and the metric is still set.
        if (low >= 0 && low < mid && mid < high && high <= 1000) {
            files.put(kHigh, std::to_string(high));
            files.put(kMid, std::to_string(mid));
            files.put(kLow, std::to_string(low));
            ALOGD("[damon_reclaim] set wmarks success.");
        }
    } else if (metric != 0 && metric != 2 && metric != 3) {
        ALOGE("[damon_reclaim] wmarks out of range, must be in the interval [0,1000].");
        return -1;
    }
    files.put(kMetric, std::to_string(metric));
    files.close();
    ALOGD("[damon_reclaim] set wmarks_metric success.");
    return 0;
}

int32_t DamonReclaim::setDamonReclaimColdTime(int32_t seconds) const {
    const char* const paths[] = {kMinAge};
    ParameterFiles files(paths, [this](const char* p) { return mNodes.path(p); });
    if (!files.good(0)) {
        logOpenFailure(kMinAge, files.openErrno());
        return -1;
    }
    if (seconds < 30 || seconds > 3600) {
        ALOGE("[damon_reclaim] cold time must be in the interval [30, 3600].");
        return -1;
    }
    // The kernel takes the minimum age in microseconds.
    files.put(0, std::to_string(static_cast<uint64_t>(seconds) * 1000000));
    files.close();
    ALOGD("[damon_reclaim] set cold_time success.");
    return 0;
}

int32_t DamonReclaim::setDamonReclaimQuota(int32_t quotaMs, int32_t quotaSizeMb,
                                           int32_t resetIntervalMs) const {
    enum { kTime, kSize, kResetInterval };
    ParameterFiles files(kQuota, [this](const char* p) { return mNodes.path(p); });
    // The reset-interval test is inverted: the quota is set only where that node is missing,
    // and the interval written to it is then lost. Kernels with all three nodes always refuse.
    if (!files.good(kTime) || !files.good(kSize) || files.good(kResetInterval)) {
        ALOGE("[damon_reclaim] Failed to open quota_xxx, Linux version %d.%d.%d",
              mNodes.version().major, mNodes.version().minor, mNodes.version().patch);
        return -1;
    }
    if (quotaMs < 1 || quotaSizeMb < 1 || resetIntervalMs < 1) {
        // "must > 0" and "must <=" here and below are matched by log readers as they stand.
        ALOGD("[damon_reclaim] all quota params must > 0.");
        return -1;
    }
    if (quotaMs > resetIntervalMs) {
        ALOGD("[damon_reclaim] quota_ms must <= reset_interval.");
        return -1;
    }
    files.put(kTime, std::to_string(quotaMs));
    // The kernel takes the size quota in bytes.
    files.put(kSize,
              std::to_string(static_cast<uint64_t>(static_cast<uint32_t>(quotaSizeMb)) << 20));
    files.put(kResetInterval, std::to_string(resetIntervalMs));
    files.close();
    ALOGD("[damon_reclaim] set quota success.");
    return 0;
}

int32_t DamonReclaim::setDamonReclaimMonitoring(int32_t sampleMs, int32_t aggrMs) const {
    enum { kSample, kAggregation };
    ParameterFiles files(kIntervals, [this](const char* p) { return mNodes.path(p); });
    if (!files.allGood()) {
        ALOGE("[damon_reclaim] Failed to open ctx_interval, Linux version %d.%d.%d",
              mNodes.version().major, mNodes.version().minor, mNodes.version().patch);
        return -1;
    }
    if (sampleMs < 1 || aggrMs < 1) {
        ALOGD("[damon_reclaim] all params must > 0.");
        return -1;
    }
    // Twice the sample as a 32-bit value: a shift that wraps for samples above 2^30.
    const auto twiceSample = static_cast<int32_t>(static_cast<uint32_t>(sampleMs) << 1);
    if (aggrMs <= twiceSample) {
        ALOGD("[damon_reclaim] sample must < aggr/2.");
        return -1;
    }
    // The kernel takes both intervals in microseconds.
    files.put(kSample, std::to_string(static_cast<uint64_t>(sampleMs) * 1000));
    files.put(kAggregation, std::to_string(static_cast<uint64_t>(aggrMs) * 1000));
    files.close();
    ALOGD("[damon_reclaim] set damon reclaim monitoring interval success.");
    return 0;
}

}  // namespace aidl::vendor::vyren::hardware::performance
