#pragma once

#include <android-base/thread_annotations.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Storage features: the sysfs nodes of the storage device, found by name, by directory listing or
// as the HPB nodes of the logical unit that holds the user-data partition.
class Storage {
  public:
    explicit Storage(const KernelNodes& nodes) : mNodes(nodes) {}

    std::string readStorageFeature(const std::string& name, const std::string& feature,
                                   const std::string& lookupMode);
    int32_t writeStorageFeature(const std::string& name, const std::string& feature,
                                const std::string& lookupMode, const std::string& value);

    // The feature kinds known so far, by feature name.
    std::map<std::string, int> nodeKinds() const;
    // Appends the "storage nodes:" section of the service's dump.
    void dump(std::string* out) const;

  private:
    std::vector<std::string> getDevicePath(const std::string& dir) const;
    std::string getUfsHpbNodePath(const std::string& name, const std::string& feature) const;
    std::vector<std::string> getCustDevicePath(const std::string& name, const std::string& feature);
    // Whether path names a sysfs node; one that is not there counts when mayBeMissing and its
    // directory lies in sysfs, so that its open reports it.
    bool isStorageNode(const std::string& path, bool mayBeMissing) const;
    std::vector<std::string> findStorageNodes(const std::string& name, const std::string& feature,
                                              const std::string& lookupMode);

    const KernelNodes mNodes;
    mutable std::mutex mLock;
    // Feature name to kind; a lookup of an unknown name adds it as kind 0.
    std::map<std::string, int> mNodeKinds GUARDED_BY(mLock) = {{"hpb_stats", 0}, {"hpb_params", 1}};
};

}  // namespace aidl::vendor::vyren::hardware::performance
