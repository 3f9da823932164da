// Device information: the storage and memory description under /proc/devinfo/, DDR residency,
// UFS status and signal records, and raw access to the reserve partition.

#define LOG_TAG "PerformanceService"

#include "DeviceInfo.h"

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
#include <string_view>
#include <vector>

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

int32_t DeviceInfo::ufsplusStatus(const char* key) const {
    int32_t value = 0;
    // The last line with the key wins; one with nothing after the key does not count.
    (void)mNodes.forEachLine(kUfsplusStatus, LineOpen::kRead, [&](std::string_view line) {
        std::vector<std::string> fields;
        splitString(std::string(line).c_str(), ":", &fields);
        if (fields.size() >= 2 && fields[0] == key) value = leadingInt(fields[1]);
    });
    return value;
}

const char* DeviceInfo::reservePartition() const {
    // Inverted on purpose: the vyren partition is used only where the zeto one exists as well.
    return access(mNodes.path(kZetoReserve).c_str(), F_OK) == 0 ? kVyrenReserve : kZetoReserve;
}

int32_t DeviceInfo::getUfsplusTwStatus() const {
    return ufsplusStatus(kTwStatus);
}

int32_t DeviceInfo::getUfsplusHpbStatus() const {
    return ufsplusStatus(kHpbStatus);
}

std::string DeviceInfo::getDevinfoUfsInfo() const {
    return mNodes.readNode(kUfsInfo.path, kDevinfoSize, kUfsInfo.fallback);
}

std::string DeviceInfo::getDevinfoDDRInfo() const {
    return mNodes.readNode(kDdrInfo.path, kDevinfoSize, kDdrInfo.fallback);
}

std::string DeviceInfo::getDevinfoUfsVersionInfo() const {
    return mNodes.readNode(kUfsVersion.path, kDevinfoSize, kUfsVersion.fallback);
}

std::string DeviceInfo::getDdrResidency() const {
    return mNodes.readNode(kDdrResidency.path, kDevinfoSize, kDdrResidency.fallback);
}

std::string DeviceInfo::getUfsSignalRecordUpload() const {
    return mNodes.readWholeNode(kSignalRecord, {LineOpen::kRead, kOpenFileError});
}

std::string DeviceInfo::readVyrenReserve3(int32_t offset, int32_t count) const {
    // A negative count, or one too large to allocate, is refused with nothing opened, and the
    // answer is empty, as it is when the partition cannot be opened.
    if (count < 0) return "";
    std::unique_ptr<char, FreeDeleter> buffer(
        static_cast<char*>(calloc(static_cast<size_t>(count) + 1, 1)));
    if (buffer == nullptr) return "";

    android::base::unique_fd fd(mNodes.open(reservePartition(), O_RDONLY | O_CLOEXEC));
    if (fd < 0) {
        const int err = errno;
        ALOGD("open %s failed! err:%s", reservePartition(), strerror(err));
        return "";
    }
    // One read, no retry: the caller gets what the device hands over at once.
    if (lseek(fd, offset, SEEK_SET) < 0) {
        ALOGD("read failed! size:%d", -1);
    } else if (read(fd, buffer.get(), count) < 0) {
        ALOGD("read no content! size:%d", -1);
    }
    buffer.get()[count] = '\0';
    // The partition's data ends at its first zero byte.
    return buffer.get();
}

int32_t DeviceInfo::writeVyrenReserve3(int32_t offset, int32_t count,
                                       const std::string& data) const {
    // A negative count is refused with nothing opened.
    if (count < 0) return -1;

    android::base::unique_fd fd(mNodes.open(reservePartition(), O_WRONLY | O_CLOEXEC));
    if (fd < 0) {
        const int err = errno;
        ALOGD("open %s failed! err:%s", reservePartition(), strerror(err));
        return -1;
    }
    if (lseek(fd, offset, SEEK_SET) < 0) {
        ALOGD("lseek failed! size:%d", -1);
        return -1;
    }
    // Never more than the data holds, whatever count says.
    const ssize_t written =
        mNodes.write(fd, data.data(), std::min(static_cast<size_t>(count), data.size()));
    if (written < 0) {
        ALOGD("write failed! size:%d", -1);
        return -1;
    }
    ALOGD("write %d bytes", static_cast<int>(written));
    fsync(fd);
    return static_cast<int32_t>(written);
}

}  // namespace aidl::vendor::vyren::hardware::performance
