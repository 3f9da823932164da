#pragma once

#include <cstdint>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Per-task CPU statistics, the task-load monitor and the I/O monitor reports.
class TaskStatistics {
  public:
    explicit TaskStatistics(const KernelNodes& nodes) : mNodes(nodes) {}

    int32_t enableTaskCpustats() const;
    int32_t disableTaskCpustats() const;
    std::string readTaskCpustatsEnable() const;
    std::string readCpuTaskstats() const;
    std::string readSgeInfo() const;
    std::string readSgeFreqInfo() const;
    int32_t writeMonitorStatus(const std::string& status) const;
    std::string readRealTime() const;
    std::string readNormalizeRealTime() const;
    std::string readRunningTime() const;
    std::string readNormalizeRunningTime() const;
    std::string readTargetProcess(const std::string& process) const;
    std::string readIomonitorInfo(const std::string& report) const;

  private:
    // Turns per-task CPU statistics on or off; a switch that will not open is logged with the
    // kernel's release.
    int32_t switchCpustats(bool on, const char* message) const;

    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
