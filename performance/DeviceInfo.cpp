// Device information: the storage and memory description under /proc/devinfo/, DDR residency,
// UFS status and signal records, and raw access to the reserve partition.

#define LOG_TAG "PerformanceService"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// A description node, and the eMMC node a device without UFS publishes instead.
struct DevinfoNode {
    const char* path;
    const char* fallback;
};

constexpr size_t kDevinfoSize = 4096;
constexpr DevinfoNode kUfsInfo = {"/proc/devinfo/ufs", "/proc/devinfo/emmc"};
constexpr DevinfoNode kUfsVersion = {"/proc/devinfo/ufs_version", "/proc/devinfo/emmc_version"};
constexpr DevinfoNode kDdrInfo = {"/proc/devinfo/ddr", nullptr};
constexpr DevinfoNode kDdrResidency = {"/sys/power/ddr/residency", nullptr};

constexpr char kUfsplusStatus[] = "/proc/devinfo/ufsplus_status";
constexpr char kTwStatus[] = "TW status";
constexpr char kHpbStatus[] = "HPB status";

constexpr char kSignalRecord[] = "/proc/ufs_signalShow/record_upload";

constexpr char kZetoReserve[] = "/dev/block/by-name/zetoreserve3";
constexpr char kVyrenReserve[] = "/dev/block/by-name/vyrenreserve3";

// The decimal number at the start of text, as atoi reads it, held to the int range.
int32_t leadingInt(const std::string& text) {
    const long value = strtol(text.c_str(), nullptr, 10);
    return static_cast<int32_t>(std::clamp<long>(value, INT32_MIN, INT32_MAX));
}

}  // namespace

int32_t Performance::ufsplusStatus(const char* key) const {
    int32_t value = 0;
    // The last line with the key wins; one with nothing after the key does not count.
    (void)forEachLine(kUfsplusStatus, LineOpen::kRead, [&](std::string_view line) {
        std::vector<std::string> fields;
        splitString(std::string(line).c_str(), ":", &fields);
        if (fields.size() >= 2 && fields[0] == key) value = leadingInt(fields[1]);
    });
    return value;
}

const char* Performance::reservePartition() const {
    // Inverted on purpose: the vyren partition is used only where the zeto one exists as well.
    return access(nodePath(kZetoReserve).c_str(), F_OK) == 0 ? kVyrenReserve : kZetoReserve;
}

::ndk::ScopedAStatus Performance::getUfsplusTwStatus(int32_t* _aidl_return) {
    *_aidl_return = ufsplusStatus(kTwStatus);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getUfsplusHpbStatus(int32_t* _aidl_return) {
    *_aidl_return = ufsplusStatus(kHpbStatus);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getDevinfoUfsInfo(std::string* _aidl_return) {
    *_aidl_return = readNode(kUfsInfo.path, kDevinfoSize, kUfsInfo.fallback);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getDevinfoDDRInfo(std::string* _aidl_return) {
    *_aidl_return = readNode(kDdrInfo.path, kDevinfoSize, kDdrInfo.fallback);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getDevinfoUfsVersionInfo(std::string* _aidl_return) {
    *_aidl_return = readNode(kUfsVersion.path, kDevinfoSize, kUfsVersion.fallback);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getDdrResidency(std::string* _aidl_return) {
    *_aidl_return = readNode(kDdrResidency.path, kDevinfoSize, kDdrResidency.fallback);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::getUfsSignalRecordUpload(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kSignalRecord, {LineOpen::kRead, kOpenFileError});
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readVyrenReserve3(int32_t offset, int32_t count,
                                                    std::string* _aidl_return) {
    // A negative count, or one too large to allocate, is refused with nothing opened, and the
    // result stays as it was.
    if (count < 0) return ::ndk::ScopedAStatus::ok();
    std::unique_ptr<char, FreeDeleter> buffer(
        static_cast<char*>(calloc(static_cast<size_t>(count) + 1, 1)));
    if (buffer == nullptr) return ::ndk::ScopedAStatus::ok();

    android::base::unique_fd fd(open(nodePath(reservePartition()).c_str(), O_RDONLY | O_CLOEXEC));
    if (fd < 0) {
        const int err = errno;
        ALOGD("open %s failed! err:%s", reservePartition(), strerror(err));
        return ::ndk::ScopedAStatus::ok();
    }
    // One read, no retry: the caller gets what the device hands over at once.
    if (lseek(fd, offset, SEEK_SET) < 0) {
        ALOGD("read failed! size:%d", -1);
    } else if (read(fd, buffer.get(), count) < 0) {
        ALOGD("read no content! size:%d", -1);
    }
    buffer.get()[count] = '\0';
    // The partition's data ends at its first zero byte.
    *_aidl_return = buffer.get();
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeVyrenReserve3(int32_t offset, int32_t count,
                                                     const std::string& data,
                                                     int32_t* _aidl_return) {
    *_aidl_return = -1;
    // A negative count is refused with nothing opened.
    if (count < 0) return ::ndk::ScopedAStatus::ok();

    android::base::unique_fd fd(open(nodePath(reservePartition()).c_str(), O_WRONLY | O_CLOEXEC));
    if (fd < 0) {
        const int err = errno;
        ALOGD("open %s failed! err:%s", reservePartition(), strerror(err));
        return ::ndk::ScopedAStatus::ok();
    }
    if (lseek(fd, offset, SEEK_SET) < 0) {
        ALOGD("lseek failed! size:%d", -1);
        return ::ndk::ScopedAStatus::ok();
    }
    // Never more than the data holds, whatever count says.
    const ssize_t written =
        write(fd, data.data(), std::min(static_cast<size_t>(count), data.size()));
    if (written < 0) {
        ALOGD("write failed! size:%d", -1);
        return ::ndk::ScopedAStatus::ok();
    }
    ALOGD("write %d bytes", static_cast<int>(written));
    fsync(fd);
    *_aidl_return = static_cast<int32_t>(written);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
