#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "DeviceContext.h"
#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// A request of the access-control monitor device.
struct AcmRequest {
    unsigned int code;
    // The operation's result when the device cannot be opened.
    int openFailure;
};

// Access-control monitor: each operation is one request on /dev/acm, whose driver keeps the
// package, directory and nomedia lists and the global operating state. The device is opened and
// closed within each request, so the monitor holds nothing that changes.
class AccessMonitor {
  public:
    AccessMonitor(const KernelNodes& nodes, std::shared_ptr<DeviceIo> deviceIo)
        : mNodes(nodes), mDeviceIo(std::move(deviceIo)) {}

    int32_t setAcmOpstat(int32_t state) const;
    int32_t getAcmOpstat() const;
    int32_t addAcmPkgName(const std::string& pkgName, int64_t flag) const;
    int32_t delAcmPkgName(const std::string& pkgName) const;
    int64_t getAcmPkgFlag(const std::string& pkgName) const;
    int32_t addAcmDirName(const std::string& dirName, int64_t flag) const;
    int32_t delAcmDirName(const std::string& dirName) const;
    int64_t getAcmDirFlag(const std::string& dirName) const;
    int32_t addAcmNomediaDirName(const std::string& dirName) const;
    int32_t delAcmNomediaDirName(const std::string& dirName) const;
    int32_t searchAcmNomediaDirName(const std::string& dirName) const;

  private:
    // One request on the device; the request's result, or its open-failure result when the device
    // cannot be opened.
    int acmRequest(const AcmRequest& request, void* arg) const;

    const KernelNodes mNodes;
    const std::shared_ptr<DeviceIo> mDeviceIo;
};

}  // namespace aidl::vendor::vyren::hardware::performance
