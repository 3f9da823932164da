#pragma once

#include <aidl/vendor/vyren/hardware/performance/TaskWakeInfo.h>
#include <android-base/thread_annotations.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// UX state and waker identification: marking a thread as critical to the user experience, naming
// a seed thread for the kernel's waker identification, and asking which threads wake a thread.
class UxWaker {
  public:
    UxWaker(const KernelNodes& nodes, bool debug) : mNodes(nodes), mDebug(debug) {}

    int32_t writeUxState(const std::string& value, const std::string& pid, const std::string& tid);
    int32_t setWakeSeedThread(const std::string& tid, bool first, bool second) EXCLUDES(mSeedLock);
    TaskWakeInfo getWakeThreadsAffinityOrdered(const std::string& handle, int32_t count)
        EXCLUDES(mInfoLock);

  private:
    // Whether the kernel's UX setting lets the calling thread's caller through.
    bool callerAllowed();
    // Writes the seed message and reads back the kernel's answer.
    int32_t exchangeSeed(const std::string& tid, const std::string& message) const
        REQUIRES(mSeedLock);
    // Writes the handle and reads back the threads that wake it.
    TaskWakeInfo exchangeWakers(const std::string& handle, int32_t count) const REQUIRES(mInfoLock);
    void logUnsupported() const;

    const KernelNodes mNodes;
    const bool mDebug;
    // The kernel's UX-setting switch: -1 until read, then what the kernel said (1 if it said
    // nothing). Read and set without a lock: a race only reads the same node again.
    std::atomic<int32_t> mUxSetting{-1};
    // Each lock guards a kernel node rather than a member: the kernel answers the last write to
    // its node, so a write and its read-back are one exchange. mSeedLock guards
    // /proc/waker_identify/rt_info, mInfoLock /proc/waker_identify/waker_info.
    std::mutex mSeedLock;
    std::mutex mInfoLock;
};

}  // namespace aidl::vendor::vyren::hardware::performance
