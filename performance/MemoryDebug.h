#pragma once

#include <cstdint>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Memory debugging: the kernel's leak-detection switches, tunables and reports.
class MemoryDebug {
  public:
    explicit MemoryDebug(const KernelNodes& nodes) : mNodes(nodes) {}

    int32_t enableKmallocDebug() const;
    int32_t disableKmallocDebug() const;
    int32_t enableVmallocDebug() const;
    int32_t disableVmallocDebug() const;
    int32_t writeKmallocDebugCreate(int32_t value) const;
    int32_t writeKmallocDebugCreateWithType(const std::string& type) const;
    int32_t writeMemleakDetectThread(int32_t value) const;
    int32_t writeVaFeature(int32_t value) const;
    std::string readKmallocDebugCreate() const;
    std::string getKmallocOrigin() const;
    std::string getKmallocUsed() const;
    std::string getKmallocDebug() const;
    std::string readMemleakDetectThread() const;
    std::string readVaFeature() const;
    std::string getVmallocDebug() const;
    std::string getVmallocUsed() const;
    std::string getVmallocHashCal() const;

  private:
    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
