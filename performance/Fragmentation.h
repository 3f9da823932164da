#pragma once

#include <cstdint>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Filesystem fragmentation: the ext4 fragmentation reports of a block device, and the blocks that
// f2fs garbage collection has moved on the busiest f2fs device.
class Fragmentation {
  public:
    explicit Fragmentation(const KernelNodes& nodes) : mNodes(nodes) {}

    std::string getExt4FreefragInfo(const std::string& device) const;
    std::string getExt4FragScore(const std::string& device) const;
    std::string getF2fsMovedBlks() const;

    // The int at the start of the node's text; 0 when the node cannot be read or holds none.
    int GetMaxValueNode(const std::string& path) const;
    // The f2fs data device in directory whose garbage collection has moved the most blocks in the
    // background; "" when there is none.
    std::string GetDevName(const std::string& directory) const;

  private:
    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
