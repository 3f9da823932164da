#pragma once

#include <android-base/thread_annotations.h>

#include <mutex>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Jank monitoring: the CPU findings of the kernel's jank monitor, and the monitor's version, read
// once and then kept.
class JankInfo {
  public:
    explicit JankInfo(const KernelNodes& nodes) : mNodes(nodes) {}

    std::string readJankCpuInfo() const;
    std::string readJankCpuInfoSig() const;
    std::string readJankCpuLoad() const;
    std::string readJankCpuLoad32() const;
    std::string readJankCpuLoad32Scale() const;
    std::string readJankCpuIndicator() const;
    std::string readCallStack() const;
    std::string readJankVersion();

    // Appends the jank version line of the service's dump.
    void dump(std::string* out) const;

  private:
    const KernelNodes mNodes;
    mutable std::mutex mLock;
    // The version node's first line: empty until a read finds one, then kept.
    std::string mVersion GUARDED_BY(mLock);
};

}  // namespace aidl::vendor::vyren::hardware::performance
