#define LOG_TAG "PerformanceService"

#include "Performance.h"

#include <android-base/properties.h>
#include <log/log.h>
#include <processgroup/processgroup.h>
#include <quilbex/util.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kVersionNode[] = "/proc/version";
constexpr char kDefaultMemcgRoot[] = "/dev/memcg/";

}  // namespace

Performance::Performance() : Performance(std::string()) {}

Performance::Performance(std::string nodeRoot)
    : Performance(std::move(nodeRoot), DeviceIo::kernel()) {}

Performance::Performance(std::string nodeRoot, std::shared_ptr<DeviceIo> deviceIo)
    : mNodeRoot(std::move(nodeRoot)), mDeviceIo(std::move(deviceIo)) {
    // The memory-statistics engine looks at the same device.
    ::vyren::quilbex::util::SetNodeRoot(mNodeRoot);
    std::unique_ptr<FILE, FileCloser> version(fopen(nodePath(kVersionNode).c_str(), "re"));
    const int openErrno = errno;

    mDebug = android::base::GetBoolProperty("persist.sys.assert.panic", false);

    std::string memcg;
    if (CgroupGetControllerPath("memory", &memcg)) {
        if (memcg.empty() || memcg.back() != '/') memcg += '/';
        mMemcgRootPath = memcg;
    } else {
        mMemcgRootPath = kDefaultMemcgRoot;
    }

    if (version == nullptr) {
        ALOGE("Failed to open %s (%d): %s", kVersionNode, openErrno, strerror(openErrno));
        return;
    }
    char* rawLine = nullptr;
    size_t capacity = 0;
    const ssize_t length = getline(&rawLine, &capacity, version.get());
    std::unique_ptr<char, FreeDeleter> line(rawLine);
    if (length > 0) {
        // A partial match leaves the unmatched fields at 0.
        sscanf(line.get(), "Linux version %d.%d.%d", &mKernelMajor, &mKernelMinor, &mKernelPatch);
    }
    ALOGD("Linux version %d.%d.%d Debug is %d\n", mKernelMajor, mKernelMinor, mKernelPatch,
          mDebug ? 1 : 0);
    ALOGD("MemcgRootPath is initialized to %s\n", mMemcgRootPath.c_str());
}

}  // namespace aidl::vendor::vyren::hardware::performance
