// Process reclaim on older kernels, the CPU multi-thread switch, and the kernel and swap back-end
// versions.

#include <unistd.h>

#include "Performance.h"

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

::ndk::ScopedAStatus Performance::enableProcessReclaim(int32_t* _aidl_return) {
    *_aidl_return = usesNewNodeTree()
                        ? 0
                        : switchWrite(kProcessReclaimEnable, true, "Failed to enable %s (%d): %s",
                                      "enable ProcessReclaim");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::disableProcessReclaim(int32_t* _aidl_return) {
    *_aidl_return = usesNewNodeTree()
                        ? 0
                        : switchWrite(kProcessReclaimEnable, false, "Failed to disable %s (%d): %s",
                                      "disable ProcessReclaim");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setProcessReclaim(const std::string& cmd, int32_t* _aidl_return) {
    // The command goes to the kernel as it stands.
    *_aidl_return =
        usesNewNodeTree() ? 0 : valueWrite(kProcessReclaim, cmd, WriteCheck::kNegative, "");
    return ::ndk::ScopedAStatus::ok();
}

// Kept in the interface with no effect.
::ndk::ScopedAStatus Performance::perProcessMemReclaim(int32_t, int32_t, int32_t,
                                                       int32_t* _aidl_return) {
    *_aidl_return = -1;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::perProcessMemReadahead(int32_t pid, int32_t mode, int32_t size,
                                                         int32_t* _aidl_return) {
    return perProcessMemReclaim(pid, mode, size, _aidl_return);
}

::ndk::ScopedAStatus Performance::enableMultiThreadOptimize(int32_t* _aidl_return) {
    *_aidl_return = switchWrite(kMultiThreadOptimize, true, "Failed to open %s (%d): %s",
                                "enable multi thread optimize");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::disableMultiThreadOptimize(int32_t* _aidl_return) {
    *_aidl_return = switchWrite(kMultiThreadOptimize, false, "Failed to open %s (%d): %s",
                                "disable multi thread optimize");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getKernelVersion(int32_t* _aidl_return) {
    // The patch level plays no part, as in the node-tree choice. Unsigned arithmetic keeps an
    // absurd version line from overflowing.
    *_aidl_return = static_cast<int32_t>(static_cast<uint32_t>(mKernelMajor) * 100u +
                                         static_cast<uint32_t>(mKernelMinor));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getPswapVersion(int32_t* _aidl_return) {
    *_aidl_return = -1;
    for (const auto& backEnd : kSwapBackEnds) {
        if (access(nodePath(backEnd.node).c_str(), F_OK) == 0) {
            *_aidl_return = backEnd.version;
            break;
        }
    }
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
