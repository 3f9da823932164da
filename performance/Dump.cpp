// dumpsys vendor.vyren.hardware.performance.IPerformance/default: the service's own state. It
// reads only what the service holds in memory, so it never waits on a kernel node.

#include <android-base/stringprintf.h>
#include <unistd.h>

#include <cerrno>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

using ::android::base::StringAppendF;

binder_status_t Performance::dump(int fd, const char** /*args*/, uint32_t /*numArgs*/) {
    std::string out;
    StringAppendF(&out, "node root: %s\n", mNodes.root().empty() ? "/" : mNodes.root().c_str());
    StringAppendF(&out, "kernel version: %d.%d.%d (%s node tree)\n", mNodes.version().major,
                  mNodes.version().minor, mNodes.version().patch,
                  mNodes.newTree() ? "newer" : "older");
    StringAppendF(&out, "debug: %d\n", mDebug ? 1 : 0);
    StringAppendF(&out, "memcg root: %s\n", mMemcgRootPath.c_str());
    mJankInfo.dump(&out);
    mTaskTrack.dump(&out);
    mStorage.dump(&out);
    mMemoryStatistics.dump(&out);

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
