// Access to the memory-statistics device.

#include "quilbex/util.h"

#include <android-base/unique_fd.h>
#include <android/log.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

// Every line names this unit and a fixed place in it ("util:26 "): the device's log readers match
// the tag, the prefix and the text as they stand. fmt is a literal, joined to the prefix's.
#define QUILBEX_LOGE(line, fmt, ...) \
    __android_log_print(ANDROID_LOG_ERROR, "quilbex", "%s:%d " fmt, "util", line, ##__VA_ARGS__)

namespace vyren::quilbex::util {

namespace {

class KernelDeviceIo : public DeviceIo {
  public:
    int open(const char* path, int flags) override { return ::open(path, flags); }
    int ioctl(int fd, unsigned long request, void* arg) override {
        return ::ioctl(fd, request, arg);
    }
};

}  // namespace

std::shared_ptr<DeviceIo> DeviceIo::kernel() {
    return std::make_shared<KernelDeviceIo>();
}

QuilbexDevice::~QuilbexDevice() {
    const int fd = fd_.load();
    if (fd >= 0) close(fd);
}

int QuilbexDevice::QuilbexFd() {
    const int cached = fd_.load();
    if (cached >= 0) return cached;

    const std::string path = nodeRoot_ + kQuilbexDevice;
    android::base::unique_fd fd(TEMP_FAILURE_RETRY(io_->open(path.c_str(), O_RDONLY | O_CLOEXEC)));
    if (fd < 0) {
        QUILBEX_LOGE(26, "Failed to open %s:%s\n", kQuilbexDevice, strerror(errno));
        return -1;
    }
    int expected = -1;
    if (!fd_.compare_exchange_strong(expected, fd.get())) return expected;
    return fd.release();
}

int QuilbexDevice::QuilbexIoctl(int fd, unsigned long request, void* arg) {
    return TEMP_FAILURE_RETRY(io_->ioctl(fd, request, arg));
}

bool QuilbexDevice::QuilbexVersion(int& major, int& minor) {
    const int fd = QuilbexFd();
    if (fd == -1) return false;
    const int version = QuilbexIoctl(fd, kQuilbexVersionRequest, nullptr);
    if (version < 0) {
        QUILBEX_LOGE(39, "Failed to ioctl %s\n", strerror(errno));
        return false;
    }
    major = (version >> 16) & 0xffff;
    minor = version & 0xffff;
    return true;
}

}  // namespace vyren::quilbex::util
