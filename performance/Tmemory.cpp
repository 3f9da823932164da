// Tmemory: the controls and statistics of the storage stack's memory-backed write cache. Its
// device directory under /sys/tmemory/ is not fixed; the first call that finds it remembers it.

#define LOG_TAG "PerformanceService"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kTmemoryRoot[] = "/sys/tmemory/";

}  // namespace

bool Performance::findTmemoryPath(std::string& dir) const {
    // Kept for the life of the process once found; until then every call looks again.
    static std::mutex lock;
    static std::string found;
    std::lock_guard<std::mutex> guard(lock);
    if (found.empty()) {
        forEachEntry(kTmemoryRoot, [&](const dirent& entry) {
            if (entry.d_type != DT_DIR || entry.d_name[0] == '.') return true;
            found = entry.d_name;
            return false;
        });
        if (found.empty()) return false;
    }
    dir = found;
    return true;
}

void Performance::writeTmemoryNode(const std::string& node, const char* buf, int count,
                                   int* result) const {
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
    android::base::unique_fd fd(open(nodePath(path).c_str(), O_WRONLY | O_CLOEXEC));
    if (fd < 0) {
        const int err = errno;
        ALOGE("Failed to open %s (%d): %s ", path.c_str(), err, strerror(err));
        *result = -err;
        return;
    }
    if (write(fd, buf, count) == count) {
        *result = count;
        return;
    }
    ALOGE("write file %s val %s failed, %s", path.c_str(), buf, strerror(errno));
    *result = -1;
}

int Performance::writeTmemoryText(const char* node, const std::string& text) const {
    int result = -1;
    writeTmemoryNode(node, text.c_str(), static_cast<int>(text.size()), &result);
    return result;
}

std::string Performance::readTmemoryNode(const char* node) const {
    std::string dir;
    if (!findTmemoryPath(dir)) return "NULL";
    const std::string path = kTmemoryRoot + dir + node;
    const std::string failure = std::string(kOpenFileError) + path;
    return readWholeNode(path.c_str(), {LineOpen::kRead, failure.c_str()});
}

::ndk::ScopedAStatus Performance::writeTmemoryMemory(const std::string& value,
                                                     int32_t* _aidl_return) {
    *_aidl_return = writeTmemoryText("/memory_stat", value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeTmemorySwitch(int32_t value, int32_t* _aidl_return) {
    *_aidl_return = writeTmemoryText("/switch", std::to_string(value));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeTmemoryFlushBusy(int32_t value, int32_t* _aidl_return) {
    *_aidl_return = writeTmemoryText("/flush_busy_interval", std::to_string(value));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeTmemoryFlushIdle(int32_t value, int32_t* _aidl_return) {
    *_aidl_return = writeTmemoryText("/flush_idle_interval", std::to_string(value));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeTmemoryCapacity(int32_t value, int32_t* _aidl_return) {
    *_aidl_return = writeTmemoryText("/capacity", std::to_string(value));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeTmemoryHighWaterRatio(int32_t value, int32_t* _aidl_return) {
    *_aidl_return = writeTmemoryText("/high_watermark_ratio", std::to_string(value));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readTmemorySysdirtypages(std::string* _aidl_return) {
    *_aidl_return = readTmemoryNode("/sys_dirty_pages");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readTmemoryDirtypages(std::string* _aidl_return) {
    *_aidl_return = readTmemoryNode("/dirty_pages");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readTmemoryErrorStat(std::string* _aidl_return) {
    *_aidl_return = readTmemoryNode("/error_stat");
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readTmemoryIoLatency(std::string* _aidl_return) {
    *_aidl_return = readTmemoryNode("/io_latency");
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
