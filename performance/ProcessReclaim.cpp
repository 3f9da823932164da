// Process reclaim on older kernels, the CPU multi-thread switch, and the kernel and swap back-end
// versions.

#define LOG_TAG "PerformanceService"

#include "ProcessReclaim.h"

#include <log/log.h>
#include <unistd.h>

#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// Process reclaim exists on older kernels only; on newer ones its operations do nothing.
constexpr char kProcessReclaimEnable[] = "/proc/vyren_healthinfo/process_reclaim_enable";
constexpr char kProcessReclaim[] = "/proc/process_reclaim";
constexpr char kMultiThreadOptimize[] = "/proc/sys/kernel/cpu_multi_thread";

// Swap back-ends by the node that shows each one is built in, preferred first.
struct SwapBackEnd {
    const char* node;
    int32_t version;
};
constexpr SwapBackEnd kSwapBackEnds[] = {{"/sys/block/zram0/hybridswap_enable", 2},
                                         {"/proc/nandswap/fn_enable", 1}};

}  // namespace

int32_t ProcessReclaim::enableProcessReclaim() const {
    if (mNodes.newTree()) return 0;
    return mNodes.switchWrite(kProcessReclaimEnable, true,
                              NODE_ERROR_LOG("Failed to enable %s (%d): %s"),
                              "enable ProcessReclaim");
}

int32_t ProcessReclaim::disableProcessReclaim() const {
    if (mNodes.newTree()) return 0;
    return mNodes.switchWrite(kProcessReclaimEnable, false,
                              NODE_ERROR_LOG("Failed to disable %s (%d): %s"),
                              "disable ProcessReclaim");
}

int32_t ProcessReclaim::setProcessReclaim(const std::string& cmd) const {
    // The command goes to the kernel as it stands.
    if (mNodes.newTree()) return 0;
    return mNodes.valueWrite(kProcessReclaim, cmd, WriteCheck::kNegative, "");
}

// Kept in the interface with no effect.
int32_t ProcessReclaim::perProcessMemReclaim(int32_t, int32_t, int32_t) const {
    return -1;
}

int32_t ProcessReclaim::perProcessMemReadahead(int32_t pid, int32_t mode, int32_t size) const {
    return perProcessMemReclaim(pid, mode, size);
}

int32_t ProcessReclaim::enableMultiThreadOptimize() const {
    return mNodes.switchWrite(kMultiThreadOptimize, true, LogOpenFailure,
                              "enable multi thread optimize");
}

int32_t ProcessReclaim::disableMultiThreadOptimize() const {
    return mNodes.switchWrite(kMultiThreadOptimize, false, LogOpenFailure,
                              "disable multi thread optimize");
}

int32_t ProcessReclaim::getKernelVersion() const {
    // The patch level plays no part, as in the node-tree choice. Unsigned arithmetic keeps an
    // absurd version line from overflowing.
    const KernelVersion& v = mNodes.version();
    return static_cast<int32_t>(static_cast<uint32_t>(v.major) * 100u +
                                static_cast<uint32_t>(v.minor));
}

int32_t ProcessReclaim::getPswapVersion() const {
    for (const auto& backEnd : kSwapBackEnds) {
        if (access(mNodes.path(backEnd.node).c_str(), F_OK) == 0) return backEnd.version;
    }
    return -1;
}

}  // namespace aidl::vendor::vyren::hardware::performance
