// Tmemory: the controls and statistics of the storage stack's memory-backed write cache. Its
// device directory under /sys/tmemory/ is not fixed; the first call that finds it remembers it.

#define LOG_TAG "PerformanceService"

#include "Tmemory.h"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kTmemoryRoot[] = "/sys/tmemory/";

}  // namespace

bool Tmemory::findTmemoryPath(std::string& dir) {
    // Kept for the life of the service once found; until then every call looks again.
    std::lock_guard<std::mutex> guard(mLock);
    if (mDir.empty()) {
        std::string found;
        mNodes.forEachEntry(kTmemoryRoot, [&](const dirent& entry) {
            if (entry.d_type != DT_DIR || entry.d_name[0] == '.') return true;
            found = entry.d_name;
            return false;
        });
        if (found.empty()) return false;
        mDir = std::move(found);
    }
    dir = mDir;
    return true;
}

void Tmemory::writeTmemoryNode(const std::string& node, const char* buf, int count, int* result) {
    std::string dir;
    if (buf == nullptr) {
        ALOGE("param check error!");
        *result = -1;
        return;
    }
    if (!findTmemoryPath(dir)) {
        ALOGD("find path null");
        *result = -1;
        return;
    }
    const std::string path = kTmemoryRoot + dir + node;
    android::base::unique_fd fd(mNodes.open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (fd < 0) {
        const int err = errno;
        // The trailing blank is matched by log readers as it stands.
        ALOGE("Failed to open %s (%d): %s ", path.c_str(), err, strerror(err));
        *result = -err;
        return;
    }
    if (mNodes.write(fd, buf, count) == count) {
        *result = count;
        return;
    }
    ALOGE("write file %s val %s failed, %s", path.c_str(), buf, strerror(errno));
    *result = -1;
}

int Tmemory::writeTmemoryText(const char* node, const std::string& text) {
    int result = -1;
    writeTmemoryNode(node, text.c_str(), static_cast<int>(text.size()), &result);
    return result;
}

std::string Tmemory::readTmemoryNode(const char* node) {
    std::string dir;
    if (!findTmemoryPath(dir)) return "NULL";
    const std::string path = kTmemoryRoot + dir + node;
    const std::string failure = std::string(kOpenFileError) + path;
    return mNodes.readWholeNode(path.c_str(), {LineOpen::kRead, failure.c_str()});
}

int32_t Tmemory::writeTmemoryMemory(const std::string& value) {
    return writeTmemoryText("/memory_stat", value);
}

int32_t Tmemory::writeTmemorySwitch(int32_t value) {
    return writeTmemoryText("/switch", std::to_string(value));
}

int32_t Tmemory::writeTmemoryFlushBusy(int32_t value) {
    return writeTmemoryText("/flush_busy_interval", std::to_string(value));
}

int32_t Tmemory::writeTmemoryFlushIdle(int32_t value) {
    return writeTmemoryText("/flush_idle_interval", std::to_string(value));
}

int32_t Tmemory::writeTmemoryCapacity(int32_t value) {
    return writeTmemoryText("/capacity", std::to_string(value));
}

int32_t Tmemory::writeTmemoryHighWaterRatio(int32_t value) {
    return writeTmemoryText("/high_watermark_ratio", std::to_string(value));
}

std::string Tmemory::readTmemorySysdirtypages() {
    return readTmemoryNode("/sys_dirty_pages");
}

std::string Tmemory::readTmemoryDirtypages() {
    return readTmemoryNode("/dirty_pages");
}

std::string Tmemory::readTmemoryErrorStat() {
    return readTmemoryNode("/error_stat");
}

std::string Tmemory::readTmemoryIoLatency() {
    return readTmemoryNode("/io_latency");
}

}  // namespace aidl::vendor::vyren::hardware::performance
