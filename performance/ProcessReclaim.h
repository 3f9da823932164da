#pragma once

#include <cstdint>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Process reclaim on older kernels, the CPU multi-thread switch, and the kernel and swap back-end
// versions.
class ProcessReclaim {
  public:
    explicit ProcessReclaim(const KernelNodes& nodes) : mNodes(nodes) {}

    int32_t enableProcessReclaim() const;
    int32_t disableProcessReclaim() const;
    int32_t setProcessReclaim(const std::string& cmd) const;
    int32_t perProcessMemReclaim(int32_t pid, int32_t mode, int32_t size) const;
    int32_t perProcessMemReadahead(int32_t pid, int32_t mode, int32_t size) const;
    int32_t enableMultiThreadOptimize() const;
    int32_t disableMultiThreadOptimize() const;
    int32_t getKernelVersion() const;
    int32_t getPswapVersion() const;

  private:
    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
