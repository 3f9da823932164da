#pragma once

#include <aidl/vendor/vyren/hardware/performance/TaskGroup.h>
#include <android-base/thread_annotations.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Jank task tracking: the few processes the kernel's jank monitor follows closely, sorted into
// groups, and the kernel's reports on them.
class TaskTrack {
  public:
    // The pids tracked in each group, each group in the order its pids were added.
    using Table = std::map<TaskGroup, std::vector<int32_t>>;

    TaskTrack(const KernelNodes& nodes, bool debug) : mNodes(nodes), mDebug(debug) {}

    void writeJankTaskTrackEnable(bool enable);
    bool isJankTaskTrackEnable() const;
    int32_t addTaskTrackPid(int32_t group, int32_t pid, bool clear);
    void removeTaskTrackPid(int32_t group, int32_t pid);
    void clearTaskTrackGroup(int32_t group);
    std::string readJankTaskTrack() const;
    std::string readJankTaskTrackByPid(int32_t pid) const;
    std::string readUxTaskTrack(int32_t firstPid, int32_t secondPid) const;

    // A copy of the table, or nullopt while a call holds it: the lock is held across node writes,
    // and a reader that must not wait gets nothing then.
    std::optional<Table> trackedPids() const;
    // Appends the task-tracking lines of the service's dump.
    void dump(std::string* out) const;

  private:
    void printTaskInfo() const;
    size_t trackedCount() const REQUIRES(mLock);
    size_t groupSize(TaskGroup group) const REQUIRES(mLock);
    bool isTracked(TaskGroup group, int32_t pid) const REQUIRES(mLock);
    void keepOnly(const std::vector<int32_t>& live) REQUIRES(mLock);
    std::string addCommand(TaskGroup group, int32_t pid, bool clear) const REQUIRES(mLock);

    const KernelNodes mNodes;
    const bool mDebug;
    mutable std::mutex mLock;
    Table mTable GUARDED_BY(mLock);
    // Set by a successful enable; cleared, with the table and under its lock, by a disable.
    std::atomic<bool> mEnabled{false};
};

}  // namespace aidl::vendor::vyren::hardware::performance
