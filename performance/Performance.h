#pragma once

#include <aidl/vendor/vyren/hardware/performance/BnPerformance.h>

#include <cstdint>
#include <string>
#include <vector>

#include "AccessMonitor.h"
#include "Clm.h"
#include "DamonReclaim.h"
#include "DeviceContext.h"
#include "DeviceInfo.h"
#include "Fragmentation.h"
#include "Governor.h"
#include "HealthInfo.h"
#include "JankInfo.h"
#include "KernelNodes.h"
#include "MemoryDebug.h"
#include "MemoryMonitor.h"
#include "MemoryStatistics.h"
#include "ProcessReclaim.h"
#include "SchedAssist.h"
#include "Storage.h"
#include "SwapTuning.h"
#include "TaskSchedInfo.h"
#include "TaskStatistics.h"
#include "TaskTrack.h"
#include "Tmemory.h"
#include "UxWaker.h"

namespace aidl::vendor::vyren::hardware::performance {

// The binder face of the service: each operation is answered by the subsystem that owns its
// nodes and state. The object is built before it is registered and serves until the process ends.
class Performance : public BnPerformance {
  public:
    // The device this runs on: kernel nodes at their own paths, the kernel's devices.
    Performance();
    explicit Performance(const DeviceContext& context);
    ~Performance() override = default;

    ::ndk::ScopedAStatus addAcmDirName(const std::string& dirName, int64_t flag,
                                       int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus addAcmNomediaDirName(const std::string& dirName,
                                              int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus addAcmPkgName(const std::string& pkgName, int64_t flag,
                                       int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus addTaskTrackPid(int32_t group, int32_t pid, bool clear,
                                         int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus clearTaskTrackGroup(int32_t group) override;
    ::ndk::ScopedAStatus delAcmDirName(const std::string& dirName, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus delAcmNomediaDirName(const std::string& dirName,
                                              int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus delAcmPkgName(const std::string& pkgName, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus disableDamonReclaim(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus disableKmallocDebug(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus disableMultiThreadOptimize(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus disableProcessReclaim(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus disableTaskCpustats(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus disableTaskPlacementDecision(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus disableVmallocDebug(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus enableDamonReclaim(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus enableKmallocDebug(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus enableMultiThreadOptimize(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus enableProcessReclaim(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus enableTaskCpustats(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus enableTaskPlacementDecision(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus enableVmallocDebug(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus existMemMonitor(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getAcmDirFlag(const std::string& dirName, int64_t* _aidl_return) override;
    ::ndk::ScopedAStatus getAcmOpstat(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getAcmPkgFlag(const std::string& pkgName, int64_t* _aidl_return) override;
    ::ndk::ScopedAStatus getDdrResidency(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getDevinfoUfsInfo(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getDevinfoDDRInfo(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getDevinfoUfsVersionInfo(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getExt4FragScore(const std::string& device,
                                          std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getExt4FreefragInfo(const std::string& device,
                                             std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getF2fsMovedBlks(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getHIAllocWait(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHICpuInfo(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getHICpuLoading(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getHIDState(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHIEmcdrvIowait(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHIFsyncWait(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHIIonWait(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHIIowait(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHIIowaitHung(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHIKswapdLoading(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHISchedLatency(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHIScmCall(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getHIUfsFeature(
        ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) override;
    ::ndk::ScopedAStatus getKernelVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getKmallocDebug(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getKmallocOrigin(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getKmallocUsed(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getMemMonitor(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getPswapVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getUfsSignalRecordUpload(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getUfsplusHpbStatus(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getUfsplusTwStatus(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getVmallocDebug(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getVmallocHashCal(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getVmallocUsed(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getallocwait(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getdstate(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getfsyncwait(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getionwait(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getiowait(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getschedlatency(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus hybridswap_memcg_para_read(int32_t action, const std::string& cgroup,
                                                    std::string* _aidl_return) override;
    ::ndk::ScopedAStatus hybridswap_memcg_para_write(int32_t action, const std::string& cgroup,
                                                     const std::string& value,
                                                     int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus hybridswap_zram_para_read(int32_t action,
                                                   std::string* _aidl_return) override;
    ::ndk::ScopedAStatus hybridswap_zram_para_write(int32_t action, const std::string& value,
                                                    int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus isJankTaskTrackEnable(bool* _aidl_return) override;
    ::ndk::ScopedAStatus perProcessMemReadahead(int32_t pid, int32_t mode, int32_t size,
                                                int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus perProcessMemReclaim(int32_t pid, int32_t mode, int32_t size,
                                              int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus readCallStack(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readClmEnable(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readClmHighLoadAll(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readClmHighLoadGrp(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readClmLowLoadGrp(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readCpuTaskstats(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readDBacktrace(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readDConvert(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readFgFreqsThreshold(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readIOBacktrace(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readIomonitorInfo(const std::string& report,
                                           std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankCpuIndicator(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankCpuInfo(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankCpuInfoSig(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankCpuLoad(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankCpuLoad32(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankCpuLoad32Scale(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankTaskTrack(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankTaskTrackByPid(int32_t pid, std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readJankVersion(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readKmallocDebugCreate(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readLimitTable(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readMemleakDetectThread(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readMemoryByPids(
        const std::vector<int32_t>& pids, int32_t flags,
        ::aidl::vendor::vyren::hardware::performance::ProcMemStatRet* _aidl_return) override;
    ::ndk::ScopedAStatus readMemoryByUids(
        const std::vector<int32_t>& uids, int32_t flags,
        ::aidl::vendor::vyren::hardware::performance::ProcMemStatRet* _aidl_return) override;
    ::ndk::ScopedAStatus readNandswapProc(const std::string& name,
                                          std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readNormalizeRealTime(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readNormalizeRunningTime(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readVyrenReserve3(int32_t offset, int32_t count,
                                           std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readQuilbexVersion(
        ::aidl::vendor::vyren::hardware::performance::QuilbexVersionRet* _aidl_return) override;
    ::ndk::ScopedAStatus readPidsSet(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readRealTime(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readRunningTime(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readSchedInfoThreshold(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readSgeFreqInfo(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readSgeInfo(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readStorageFeature(const std::string& name, const std::string& feature,
                                            const std::string& lookupMode,
                                            std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readTargetProcess(const std::string& process,
                                           std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readTaskCpustatsEnable(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readTaskSchedInfo(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readTidsSet(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readUxTaskTrack(int32_t firstPid, int32_t secondPid,
                                         std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readVaFeature(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readVersion(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus removeTaskTrackPid(int32_t group, int32_t pid) override;
    ::ndk::ScopedAStatus searchAcmNomediaDirName(const std::string& dirName,
                                                 int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setAcmOpstat(int32_t state, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setDamonReclaimColdTime(int32_t seconds, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setDamonReclaimMonitoring(int32_t sampleMs, int32_t aggrMs,
                                                   int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setDamonReclaimQuota(int32_t quotaMs, int32_t quotaSizeMb,
                                              int32_t resetIntervalMs,
                                              int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setDamonReclaimWmarks(int32_t metric, int32_t high, int32_t mid,
                                               int32_t low, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setFgUids(const std::string& uids) override;
    ::ndk::ScopedAStatus setFrameRate(const std::string& value) override;
    ::ndk::ScopedAStatus setImFlag(const std::string& pid, const std::string& flag) override;
    ::ndk::ScopedAStatus setProcessReclaim(const std::string& cmd, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setSchedAssistImptTask(const std::string& value) override;
    ::ndk::ScopedAStatus setSchedAssistScene(const std::string& value) override;
    ::ndk::ScopedAStatus setSlideboost(const std::string& value) override;
    ::ndk::ScopedAStatus setTpdID(const std::string& id, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setTpdSerialParams(const std::string& params,
                                            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeClmEnable(const std::string& value) override;
    ::ndk::ScopedAStatus writeClmHighLoadAll(const std::string& value) override;
    ::ndk::ScopedAStatus writeClmHighLoadGrp(const std::string& value) override;
    ::ndk::ScopedAStatus writeClmLowLoadGrp(const std::string& value) override;
    ::ndk::ScopedAStatus writeDBacktrace(const std::string& value) override;
    ::ndk::ScopedAStatus writeFgFreqsThreshold(const std::string& value) override;
    ::ndk::ScopedAStatus writeIOBacktrace(const std::string& value) override;
    ::ndk::ScopedAStatus writeJankTaskTrackEnable(bool enable) override;
    ::ndk::ScopedAStatus writeKmallocDebugCreate(int32_t value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeKmallocDebugCreateWithType(const std::string& type,
                                                         int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeMemMonitor(const std::string& cmd, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeMemleakDetectThread(int32_t value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeMonitorStatus(const std::string& status,
                                            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeNandswapProc(const std::string& name, const std::string& value,
                                           int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeVyrenReserve3(int32_t offset, int32_t count, const std::string& data,
                                            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writePidsSet(const std::string& value) override;
    ::ndk::ScopedAStatus writeSchedInfoThreshold(const std::string& value) override;
    ::ndk::ScopedAStatus writeStorageFeature(const std::string& name, const std::string& feature,
                                             const std::string& lookupMode, const std::string& value,
                                             int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeTaskSchedInfo(const std::string& value) override;
    ::ndk::ScopedAStatus writeTidsSet(const std::string& value) override;
    ::ndk::ScopedAStatus writeUxState(const std::string& value, const std::string& pid,
                                      const std::string& tid, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeVaFeature(int32_t value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus setFreqGoverner(const std::string& governor,
                                         const std::vector<int32_t>& policies,
                                         int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus enableAudioPerf(const std::string& value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeTmemoryMemory(const std::string& value,
                                            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeTmemorySwitch(int32_t value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeTmemoryFlushBusy(int32_t value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeTmemoryFlushIdle(int32_t value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeTmemoryCapacity(int32_t value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus writeTmemoryHighWaterRatio(int32_t value, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus readTmemorySysdirtypages(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readTmemoryDirtypages(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readTmemoryErrorStat(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus readTmemoryIoLatency(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getClmThreshold(int32_t which, std::string* _aidl_return) override;
    ::ndk::ScopedAStatus getClmMuxSwitch(std::string* _aidl_return) override;
    ::ndk::ScopedAStatus setClmThreshold(const std::string& value, int32_t which) override;
    ::ndk::ScopedAStatus setClmMuxSwitch(const std::string& value) override;
    ::ndk::ScopedAStatus setWakeSeedThread(const std::string& tid, bool first, bool second,
                                           int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getWakeThreadsAffinityOrdered(
        const std::string& handle, int32_t count,
        ::aidl::vendor::vyren::hardware::performance::TaskWakeInfo* _aidl_return) override;

    // Prints the service's state for dumpsys.
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override;

  private:
    // What the service learns about the device once, at start.
    struct StartupState {
        KernelVersion version;
        bool debug;
        // Always ends in a slash.
        std::string memcgRootPath;
    };
    static StartupState probe(const DeviceContext& context);
    Performance(const DeviceContext& context, StartupState state);

    const KernelNodes mNodes;
    const bool mDebug;
    const std::string mMemcgRootPath;

    AccessMonitor mAccessMonitor;
    Clm mClm;
    DamonReclaim mDamonReclaim;
    DeviceInfo mDeviceInfo;
    Fragmentation mFragmentation;
    Governor mGovernor;
    HealthInfo mHealthInfo;
    JankInfo mJankInfo;
    MemoryDebug mMemoryDebug;
    MemoryMonitor mMemoryMonitor;
    MemoryStatistics mMemoryStatistics;
    ProcessReclaim mProcessReclaim;
    SchedAssist mSchedAssist;
    Storage mStorage;
    SwapTuning mSwapTuning;
    TaskSchedInfo mTaskSchedInfo;
    TaskStatistics mTaskStatistics;
    TaskTrack mTaskTrack;
    Tmemory mTmemory;
    UxWaker mUxWaker;
};

}  // namespace aidl::vendor::vyren::hardware::performance
