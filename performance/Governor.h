#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// The cpufreq governor of the CPU frequency policies, and the scheduler's audio performance mode.
class Governor {
  public:
    explicit Governor(const KernelNodes& nodes) : mNodes(nodes) {}

    int32_t setFreqGoverner(const std::string& governor, const std::vector<int32_t>& policies) const;
    int32_t enableAudioPerf(const std::string& value) const;

  private:
    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
