#pragma once

#include <cstdint>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// DAMON-based proactive reclaim: the module switch, watermarks, cold time, quota and monitoring
// intervals.
class DamonReclaim {
  public:
    explicit DamonReclaim(const KernelNodes& nodes) : mNodes(nodes) {}

    int32_t disableDamonReclaim() const;
    int32_t enableDamonReclaim() const;
    int32_t setDamonReclaimColdTime(int32_t seconds) const;
    int32_t setDamonReclaimMonitoring(int32_t sampleMs, int32_t aggrMs) const;
    int32_t setDamonReclaimQuota(int32_t quotaMs, int32_t quotaSizeMb,
                                 int32_t resetIntervalMs) const;
    int32_t setDamonReclaimWmarks(int32_t metric, int32_t high, int32_t mid, int32_t low) const;

  private:
    int damonSwitch(bool on) const;
    // Logs that the parameter node could not be opened, with the kernel's version.
    void logOpenFailure(const char* path, int err) const;

    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
