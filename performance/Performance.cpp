// The service object's start: what it learns of the device once, and the subsystems it is made of.

#define LOG_TAG "PerformanceService"

#include "Performance.h"

#include <android-base/properties.h>
#include <log/log.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kVersionNode[] = "/proc/version";
constexpr char kDefaultMemcgRoot[] = "/dev/memcg/";

}  // namespace

Performance::StartupState Performance::probe(const DeviceContext& context) {
    StartupState state;
    std::unique_ptr<FILE, FileCloser> version(
        fopen((context.nodeRoot + kVersionNode).c_str(), "re"));
    const int openErrno = errno;

    state.debug = android::base::GetBoolProperty("persist.sys.assert.panic", false);

    std::string memcg;
    if (context.cgroupControllerPath("memory", &memcg)) {
        if (memcg.empty() || memcg.back() != '/') memcg += '/';
        state.memcgRootPath = memcg;
    } else {
        state.memcgRootPath = kDefaultMemcgRoot;
    }

    if (version == nullptr) {
        ALOGE("Failed to open %s (%d): %s", kVersionNode, openErrno, strerror(openErrno));
        return state;
    }
    char* rawLine = nullptr;
    size_t capacity = 0;
    const ssize_t length = getline(&rawLine, &capacity, version.get());
    std::unique_ptr<char, FreeDeleter> line(rawLine);
    KernelVersion& v = state.version;
    if (length > 0) {
        // A partial match leaves the unmatched fields at 0.
        sscanf(line.get(), "Linux version %d.%d.%d", &v.major, &v.minor, &v.patch);
    }
    ALOGD("Linux version %d.%d.%d Debug is %d\n", v.major, v.minor, v.patch, state.debug ? 1 : 0);
    ALOGD("MemcgRootPath is initialized to %s\n", state.memcgRootPath.c_str());
    return state;
}

Performance::Performance() : Performance(DeviceContext{}) {}

Performance::Performance(const DeviceContext& context) : Performance(context, probe(context)) {}

Performance::Performance(const DeviceContext& context, StartupState state)
    : mNodes(context.nodeRoot, state.version, context.nodeWriter),
      mDebug(state.debug),
      mMemcgRootPath(std::move(state.memcgRootPath)),
      mAccessMonitor(mNodes, context.deviceIo),
      mClm(mNodes),
      mDamonReclaim(mNodes),
      mDeviceInfo(mNodes),
      mFragmentation(mNodes),
      mGovernor(mNodes),
      mHealthInfo(mNodes),
      mJankInfo(mNodes),
      mMemoryDebug(mNodes),
      mMemoryMonitor(mNodes),
      mMemoryStatistics(context),
      mProcessReclaim(mNodes),
      mSchedAssist(mNodes),
      mStorage(mNodes),
      mSwapTuning(mNodes, mMemcgRootPath),
      mTaskSchedInfo(mNodes),
      mTaskStatistics(mNodes),
      mTaskTrack(mNodes, mDebug),
      mTmemory(mNodes),
      mUxWaker(mNodes, mDebug) {}

}  // namespace aidl::vendor::vyren::hardware::performance
