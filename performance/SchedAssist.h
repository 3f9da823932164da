#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Scheduler assistance: the tuning nodes of the scheduler-assist feature and the task placement
// decision (tpd) module.
class SchedAssist {
  public:
    explicit SchedAssist(const KernelNodes& nodes) : mNodes(nodes) {}

    void setSlideboost(const std::string& value) const;
    void setSchedAssistScene(const std::string& value) const;
    void setFrameRate(const std::string& value) const;
    void setImFlag(const std::string& pid, const std::string& flag) const;
    void setFgUids(const std::string& uids) const;
    void setSchedAssistImptTask(const std::string& value) const;
    int32_t setTpdSerialParams(const std::string& params) const;
    int32_t setTpdID(const std::string& id) const;
    int32_t enableTaskPlacementDecision() const;
    int32_t disableTaskPlacementDecision() const;

  private:
    // A tpd parameter through a stream: 0 once the node was opened, whatever became of the write;
    // -1 when it could not be.
    int32_t writeTpd(const char* node, std::string_view text) const;

    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
