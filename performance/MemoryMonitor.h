#pragma once

#include <cstdint>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// The kernel's memory monitor: its report, the commands it takes and a probe for it.
class MemoryMonitor {
  public:
    explicit MemoryMonitor(const KernelNodes& nodes) : mNodes(nodes) {}

    std::string getMemMonitor() const;
    int32_t writeMemMonitor(const std::string& cmd) const;
    int32_t existMemMonitor() const;

  private:
    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
