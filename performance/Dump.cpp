// dumpsys vendor.vyren.hardware.performance.IPerformance/default: the service's own state. It
// reads only what the service holds in memory, so it never waits on a kernel node.

#include <android-base/stringprintf.h>
#include <unistd.h>

#include <cerrno>

#include "Performance.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {

using ::android::base::StringAppendF;

binder_status_t Performance::dump(int fd, const char** /*args*/, uint32_t /*numArgs*/) {
    std::string out;
    StringAppendF(&out, "node root: %s\n", mNodeRoot.empty() ? "/" : mNodeRoot.c_str());
    StringAppendF(&out, "kernel version: %d.%d.%d (%s node tree)\n", mKernelMajor, mKernelMinor,
                  mKernelPatch, usesNewNodeTree() ? "newer" : "older");
    StringAppendF(&out, "debug: %d\n", mDebug ? 1 : 0);
    StringAppendF(&out, "memcg root: %s\n", mMemcgRootPath.c_str());
    {
        std::lock_guard<std::mutex> lock(mJankVersionLock);
        StringAppendF(&out, "jank version: %s\n",
                      mJankVersion.empty() ? "(not read yet)" : mJankVersion.c_str());
    }

    StringAppendF(&out, "task tracking: %s\n", gTaskTrackEnabled ? "enabled" : "disabled");
    // The task-track lock is held across node writes; never wait for it here.
    std::unique_lock<std::mutex> taskTrack(gTaskTrackLock, std::try_to_lock);
    if (!taskTrack.owns_lock()) {
        out += "task-track table: (busy)\n";
    } else if (gTaskTrackTable.empty()) {
        out += "task-track table: (empty)\n";
    } else {
        out += "task-track table:\n";
        for (const auto& [group, pids] : gTaskTrackTable) {
            StringAppendF(&out, "  group %d:", static_cast<int32_t>(group));
            for (const int32_t pid : pids) StringAppendF(&out, " %d", pid);
            out += "\n";
        }
    }
    if (taskTrack.owns_lock()) taskTrack.unlock();

    out += "storage nodes:\n";
    {
        std::lock_guard<std::mutex> lock(gStorageNodeLock);
        for (const auto& [name, index] : gStorageNodeMap) {
            StringAppendF(&out, "  %s: %d\n", name.c_str(), index);
        }
    }

    StringAppendF(&out, "memory statistics device: fd %d, buffers %s, capacity %u\n",
                  gMemStatHelper.fd(), gMemStatHelper.hasBuffers() ? "allocated" : "none",
                  gMemStatHelper.capacity());

    for (size_t written = 0; written < out.size();) {
        const ssize_t count = write(fd, out.data() + written, out.size() - written);
        if (count < 0) {
            if (errno == EINTR) continue;
            return STATUS_UNKNOWN_ERROR;
        }
        written += static_cast<size_t>(count);
    }
    return STATUS_OK;
}

}  // namespace aidl::vendor::vyren::hardware::performance
