#pragma once

#include <aidl/vendor/vyren/hardware/performance/ProcReqHal.h>

#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Health information: where each health node lives and how its lines are keyed, and the raw text
// of the nodes callers read whole.
class HealthInfo {
  public:
    explicit HealthInfo(const KernelNodes& nodes) : mNodes(nodes) {}

    // The node's path and key template; the node is not opened.
    ProcReqHal getHIEmcdrvIowait() const;
    ProcReqHal getHIIowaitHung() const;
    ProcReqHal getHISchedLatency() const;
    ProcReqHal getHIFsyncWait() const;
    ProcReqHal getHIIowait() const;
    ProcReqHal getHIUfsFeature() const;
    ProcReqHal getHIIonWait() const;
    ProcReqHal getHIAllocWait() const;
    ProcReqHal getHIDState() const;
    ProcReqHal getHIKswapdLoading() const;
    ProcReqHal getHIScmCall() const;

    // The node's text.
    std::string getHICpuLoading() const;
    std::string getHICpuInfo() const;
    std::string getschedlatency() const;
    std::string getiowait() const;
    std::string getfsyncwait() const;
    std::string getionwait() const;
    std::string getallocwait() const;
    std::string getdstate() const;

  private:
    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
