#pragma once

#include <cstdint>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Device information: the storage and memory description under /proc/devinfo/, DDR residency,
// UFS status and signal records, and raw access to the reserve partition.
class DeviceInfo {
  public:
    explicit DeviceInfo(const KernelNodes& nodes) : mNodes(nodes) {}

    int32_t getUfsplusTwStatus() const;
    int32_t getUfsplusHpbStatus() const;
    std::string getDevinfoUfsInfo() const;
    std::string getDevinfoDDRInfo() const;
    std::string getDevinfoUfsVersionInfo() const;
    std::string getDdrResidency() const;
    std::string getUfsSignalRecordUpload() const;
    std::string readVyrenReserve3(int32_t offset, int32_t count) const;
    int32_t writeVyrenReserve3(int32_t offset, int32_t count, const std::string& data) const;

  private:
    // The value of the UFS status line with this key; 0 without one.
    int32_t ufsplusStatus(const char* key) const;
    // The reserve partition's device, chosen afresh on each call.
    const char* reservePartition() const;

    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
