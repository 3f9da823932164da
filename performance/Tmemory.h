#pragma once

#include <android-base/thread_annotations.h>

#include <cstdint>
#include <mutex>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Tmemory: the controls and statistics of the storage stack's memory-backed write cache.
class Tmemory {
  public:
    explicit Tmemory(const KernelNodes& nodes) : mNodes(nodes) {}

    int32_t writeTmemoryMemory(const std::string& value);
    int32_t writeTmemorySwitch(int32_t value);
    int32_t writeTmemoryFlushBusy(int32_t value);
    int32_t writeTmemoryFlushIdle(int32_t value);
    int32_t writeTmemoryCapacity(int32_t value);
    int32_t writeTmemoryHighWaterRatio(int32_t value);
    std::string readTmemorySysdirtypages();
    std::string readTmemoryDirtypages();
    std::string readTmemoryErrorStat();
    std::string readTmemoryIoLatency();

  private:
    bool findTmemoryPath(std::string& dir);
    void writeTmemoryNode(const std::string& node, const char* buf, int count, int* result);
    int writeTmemoryText(const char* node, const std::string& text);
    std::string readTmemoryNode(const char* node);

    const KernelNodes mNodes;
    std::mutex mLock;
    // The device directory under /sys/tmemory/: empty until found, then kept.
    std::string mDir GUARDED_BY(mLock);
};

}  // namespace aidl::vendor::vyren::hardware::performance
