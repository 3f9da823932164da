#pragma once

#include <aidl/vendor/vyren/hardware/performance/ProcMemStatRet.h>
#include <aidl/vendor/vyren/hardware/performance/QuilbexVersionRet.h>
#include <quilbex/proc-memstat.h>

#include <cstdint>
#include <string>
#include <vector>

#include "DeviceContext.h"

namespace aidl::vendor::vyren::hardware::performance {

// Process memory statistics: per-process records from the memory-statistics driver, refined from
// smaps on request.
class MemoryStatistics {
  public:
    explicit MemoryStatistics(const DeviceContext& context)
        : mHelper(context.nodeRoot, context.deviceIo) {}

    ProcMemStatRet readMemoryByPids(const std::vector<int32_t>& pids, int32_t flags);
    ProcMemStatRet readMemoryByUids(const std::vector<int32_t>& uids, int32_t flags);
    QuilbexVersionRet readQuilbexVersion();

    // Appends the memory-statistics line of the service's dump. It takes no lock, so it never
    // waits for a query.
    void dump(std::string* out) const;

  private:
    // The device and its request buffers. The helper is its own lock: a query holds it from its
    // request until its answer is copied out of the buffers.
    ::vyren::quilbex::memstat::ProcMemStatHelper mHelper;
};

}  // namespace aidl::vendor::vyren::hardware::performance
