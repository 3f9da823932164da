// The binder face: every operation answered by its subsystem, with an OK status. Failures
// travel in the results.

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

template <typename T, typename Result>
::ndk::ScopedAStatus answer(T* out, Result&& result) {
    *out = std::forward<Result>(result);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace

::ndk::ScopedAStatus Performance::addAcmDirName(const std::string& dirName, int64_t flag,
                                                int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.addAcmDirName(dirName, flag));
}

::ndk::ScopedAStatus Performance::addAcmNomediaDirName(const std::string& dirName,
                                                       int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.addAcmNomediaDirName(dirName));
}

::ndk::ScopedAStatus Performance::addAcmPkgName(const std::string& pkgName, int64_t flag,
                                                int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.addAcmPkgName(pkgName, flag));
}

::ndk::ScopedAStatus Performance::addTaskTrackPid(int32_t group, int32_t pid, bool clear,
                                                  int32_t* _aidl_return) {
    return answer(_aidl_return, mTaskTrack.addTaskTrackPid(group, pid, clear));
}

::ndk::ScopedAStatus Performance::clearTaskTrackGroup(int32_t group) {
    mTaskTrack.clearTaskTrackGroup(group);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::delAcmDirName(const std::string& dirName, int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.delAcmDirName(dirName));
}

::ndk::ScopedAStatus Performance::delAcmNomediaDirName(const std::string& dirName,
                                                       int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.delAcmNomediaDirName(dirName));
}

::ndk::ScopedAStatus Performance::delAcmPkgName(const std::string& pkgName, int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.delAcmPkgName(pkgName));
}

::ndk::ScopedAStatus Performance::disableDamonReclaim(int32_t* _aidl_return) {
    return answer(_aidl_return, mDamonReclaim.disableDamonReclaim());
}

::ndk::ScopedAStatus Performance::disableKmallocDebug(int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.disableKmallocDebug());
}

::ndk::ScopedAStatus Performance::disableMultiThreadOptimize(int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.disableMultiThreadOptimize());
}

::ndk::ScopedAStatus Performance::disableProcessReclaim(int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.disableProcessReclaim());
}

::ndk::ScopedAStatus Performance::disableTaskCpustats(int32_t* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.disableTaskCpustats());
}

::ndk::ScopedAStatus Performance::disableTaskPlacementDecision(int32_t* _aidl_return) {
    return answer(_aidl_return, mSchedAssist.disableTaskPlacementDecision());
}

::ndk::ScopedAStatus Performance::disableVmallocDebug(int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.disableVmallocDebug());
}

::ndk::ScopedAStatus Performance::enableDamonReclaim(int32_t* _aidl_return) {
    return answer(_aidl_return, mDamonReclaim.enableDamonReclaim());
}

::ndk::ScopedAStatus Performance::enableKmallocDebug(int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.enableKmallocDebug());
}

::ndk::ScopedAStatus Performance::enableMultiThreadOptimize(int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.enableMultiThreadOptimize());
}

::ndk::ScopedAStatus Performance::enableProcessReclaim(int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.enableProcessReclaim());
}

::ndk::ScopedAStatus Performance::enableTaskCpustats(int32_t* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.enableTaskCpustats());
}

::ndk::ScopedAStatus Performance::enableTaskPlacementDecision(int32_t* _aidl_return) {
    return answer(_aidl_return, mSchedAssist.enableTaskPlacementDecision());
}

::ndk::ScopedAStatus Performance::enableVmallocDebug(int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.enableVmallocDebug());
}

::ndk::ScopedAStatus Performance::existMemMonitor(int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryMonitor.existMemMonitor());
}

::ndk::ScopedAStatus Performance::getAcmDirFlag(const std::string& dirName, int64_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.getAcmDirFlag(dirName));
}

::ndk::ScopedAStatus Performance::getAcmOpstat(int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.getAcmOpstat());
}

::ndk::ScopedAStatus Performance::getAcmPkgFlag(const std::string& pkgName, int64_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.getAcmPkgFlag(pkgName));
}

::ndk::ScopedAStatus Performance::getDdrResidency(std::string* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.getDdrResidency());
}

::ndk::ScopedAStatus Performance::getDevinfoUfsInfo(std::string* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.getDevinfoUfsInfo());
}

::ndk::ScopedAStatus Performance::getDevinfoDDRInfo(std::string* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.getDevinfoDDRInfo());
}

::ndk::ScopedAStatus Performance::getDevinfoUfsVersionInfo(std::string* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.getDevinfoUfsVersionInfo());
}

::ndk::ScopedAStatus Performance::getExt4FragScore(const std::string& device,
                                                   std::string* _aidl_return) {
    return answer(_aidl_return, mFragmentation.getExt4FragScore(device));
}

::ndk::ScopedAStatus Performance::getExt4FreefragInfo(const std::string& device,
                                                      std::string* _aidl_return) {
    return answer(_aidl_return, mFragmentation.getExt4FreefragInfo(device));
}

::ndk::ScopedAStatus Performance::getF2fsMovedBlks(std::string* _aidl_return) {
    return answer(_aidl_return, mFragmentation.getF2fsMovedBlks());
}

::ndk::ScopedAStatus Performance::getHIAllocWait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIAllocWait());
}

::ndk::ScopedAStatus Performance::getHICpuInfo(std::string* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHICpuInfo());
}

::ndk::ScopedAStatus Performance::getHICpuLoading(std::string* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHICpuLoading());
}

::ndk::ScopedAStatus Performance::getHIDState(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIDState());
}

::ndk::ScopedAStatus Performance::getHIEmcdrvIowait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIEmcdrvIowait());
}

::ndk::ScopedAStatus Performance::getHIFsyncWait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIFsyncWait());
}

::ndk::ScopedAStatus Performance::getHIIonWait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIIonWait());
}

::ndk::ScopedAStatus Performance::getHIIowait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIIowait());
}

::ndk::ScopedAStatus Performance::getHIIowaitHung(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIIowaitHung());
}

::ndk::ScopedAStatus Performance::getHIKswapdLoading(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIKswapdLoading());
}

::ndk::ScopedAStatus Performance::getHISchedLatency(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHISchedLatency());
}

::ndk::ScopedAStatus Performance::getHIScmCall(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIScmCall());
}

::ndk::ScopedAStatus Performance::getHIUfsFeature(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getHIUfsFeature());
}

::ndk::ScopedAStatus Performance::getKernelVersion(int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.getKernelVersion());
}

::ndk::ScopedAStatus Performance::getKmallocDebug(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.getKmallocDebug());
}

::ndk::ScopedAStatus Performance::getKmallocOrigin(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.getKmallocOrigin());
}

::ndk::ScopedAStatus Performance::getKmallocUsed(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.getKmallocUsed());
}

::ndk::ScopedAStatus Performance::getMemMonitor(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryMonitor.getMemMonitor());
}

::ndk::ScopedAStatus Performance::getPswapVersion(int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.getPswapVersion());
}

::ndk::ScopedAStatus Performance::getUfsSignalRecordUpload(std::string* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.getUfsSignalRecordUpload());
}

::ndk::ScopedAStatus Performance::getUfsplusHpbStatus(int32_t* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.getUfsplusHpbStatus());
}

::ndk::ScopedAStatus Performance::getUfsplusTwStatus(int32_t* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.getUfsplusTwStatus());
}

::ndk::ScopedAStatus Performance::getVmallocDebug(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.getVmallocDebug());
}

::ndk::ScopedAStatus Performance::getVmallocHashCal(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.getVmallocHashCal());
}

::ndk::ScopedAStatus Performance::getVmallocUsed(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.getVmallocUsed());
}

::ndk::ScopedAStatus Performance::getallocwait(std::string* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getallocwait());
}

::ndk::ScopedAStatus Performance::getdstate(std::string* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getdstate());
}

::ndk::ScopedAStatus Performance::getfsyncwait(std::string* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getfsyncwait());
}

::ndk::ScopedAStatus Performance::getionwait(std::string* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getionwait());
}

::ndk::ScopedAStatus Performance::getiowait(std::string* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getiowait());
}

::ndk::ScopedAStatus Performance::getschedlatency(std::string* _aidl_return) {
    return answer(_aidl_return, mHealthInfo.getschedlatency());
}

::ndk::ScopedAStatus Performance::hybridswap_memcg_para_read(int32_t action,
                                                             const std::string& cgroup,
                                                             std::string* _aidl_return) {
    return answer(_aidl_return, mSwapTuning.hybridswap_memcg_para_read(action, cgroup));
}

::ndk::ScopedAStatus Performance::hybridswap_memcg_para_write(int32_t action,
                                                              const std::string& cgroup,
                                                              const std::string& value,
                                                              int32_t* _aidl_return) {
    return answer(_aidl_return, mSwapTuning.hybridswap_memcg_para_write(action, cgroup, value));
}

::ndk::ScopedAStatus Performance::hybridswap_zram_para_read(int32_t action,
                                                            std::string* _aidl_return) {
    return answer(_aidl_return, mSwapTuning.hybridswap_zram_para_read(action));
}

::ndk::ScopedAStatus Performance::hybridswap_zram_para_write(int32_t action,
                                                             const std::string& value,
                                                             int32_t* _aidl_return) {
    return answer(_aidl_return, mSwapTuning.hybridswap_zram_para_write(action, value));
}

::ndk::ScopedAStatus Performance::isJankTaskTrackEnable(bool* _aidl_return) {
    return answer(_aidl_return, mTaskTrack.isJankTaskTrackEnable());
}

::ndk::ScopedAStatus Performance::perProcessMemReadahead(int32_t pid, int32_t mode, int32_t size,
                                                         int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.perProcessMemReadahead(pid, mode, size));
}

::ndk::ScopedAStatus Performance::perProcessMemReclaim(int32_t pid, int32_t mode, int32_t size,
                                                       int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.perProcessMemReclaim(pid, mode, size));
}

::ndk::ScopedAStatus Performance::readCallStack(std::string* _aidl_return) {
    return answer(_aidl_return, mJankInfo.readCallStack());
}

::ndk::ScopedAStatus Performance::readClmEnable(std::string* _aidl_return) {
    return answer(_aidl_return, mClm.readClmEnable());
}

::ndk::ScopedAStatus Performance::readClmHighLoadAll(std::string* _aidl_return) {
    return answer(_aidl_return, mClm.readClmHighLoadAll());
}

::ndk::ScopedAStatus Performance::readClmHighLoadGrp(std::string* _aidl_return) {
    return answer(_aidl_return, mClm.readClmHighLoadGrp());
}

::ndk::ScopedAStatus Performance::readClmLowLoadGrp(std::string* _aidl_return) {
    return answer(_aidl_return, mClm.readClmLowLoadGrp());
}

::ndk::ScopedAStatus Performance::readCpuTaskstats(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readCpuTaskstats());
}

::ndk::ScopedAStatus Performance::readDBacktrace(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readDBacktrace());
}

::ndk::ScopedAStatus Performance::readDConvert(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readDConvert());
}

::ndk::ScopedAStatus Performance::readFgFreqsThreshold(std::string* _aidl_return) {
    return answer(_aidl_return, mClm.readFgFreqsThreshold());
}

::ndk::ScopedAStatus Performance::readIOBacktrace(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readIOBacktrace());
}

::ndk::ScopedAStatus Performance::readIomonitorInfo(const std::string& report,
                                                    std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readIomonitorInfo(report));
}

::ndk::ScopedAStatus Performance::readJankCpuIndicator(std::string* _aidl_return) {
    return answer(_aidl_return, mJankInfo.readJankCpuIndicator());
}

::ndk::ScopedAStatus Performance::readJankCpuInfo(std::string* _aidl_return) {
    return answer(_aidl_return, mJankInfo.readJankCpuInfo());
}

::ndk::ScopedAStatus Performance::readJankCpuInfoSig(std::string* _aidl_return) {
    return answer(_aidl_return, mJankInfo.readJankCpuInfoSig());
}

::ndk::ScopedAStatus Performance::readJankCpuLoad(std::string* _aidl_return) {
    return answer(_aidl_return, mJankInfo.readJankCpuLoad());
}

::ndk::ScopedAStatus Performance::readJankCpuLoad32(std::string* _aidl_return) {
    return answer(_aidl_return, mJankInfo.readJankCpuLoad32());
}

::ndk::ScopedAStatus Performance::readJankCpuLoad32Scale(std::string* _aidl_return) {
    return answer(_aidl_return, mJankInfo.readJankCpuLoad32Scale());
}

::ndk::ScopedAStatus Performance::readJankTaskTrack(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskTrack.readJankTaskTrack());
}

::ndk::ScopedAStatus Performance::readJankTaskTrackByPid(int32_t pid, std::string* _aidl_return) {
    return answer(_aidl_return, mTaskTrack.readJankTaskTrackByPid(pid));
}

::ndk::ScopedAStatus Performance::readJankVersion(std::string* _aidl_return) {
    return answer(_aidl_return, mJankInfo.readJankVersion());
}

::ndk::ScopedAStatus Performance::readKmallocDebugCreate(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.readKmallocDebugCreate());
}

::ndk::ScopedAStatus Performance::readLimitTable(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readLimitTable());
}

::ndk::ScopedAStatus Performance::readMemleakDetectThread(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.readMemleakDetectThread());
}

::ndk::ScopedAStatus Performance::readMemoryByPids(
    const std::vector<int32_t>& pids, int32_t flags,
    ::aidl::vendor::vyren::hardware::performance::ProcMemStatRet* _aidl_return) {
    return answer(_aidl_return, mMemoryStatistics.readMemoryByPids(pids, flags));
}

::ndk::ScopedAStatus Performance::readMemoryByUids(
    const std::vector<int32_t>& uids, int32_t flags,
    ::aidl::vendor::vyren::hardware::performance::ProcMemStatRet* _aidl_return) {
    return answer(_aidl_return, mMemoryStatistics.readMemoryByUids(uids, flags));
}

::ndk::ScopedAStatus Performance::readNandswapProc(const std::string& name,
                                                   std::string* _aidl_return) {
    return answer(_aidl_return, mSwapTuning.readNandswapProc(name));
}

::ndk::ScopedAStatus Performance::readNormalizeRealTime(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readNormalizeRealTime());
}

::ndk::ScopedAStatus Performance::readNormalizeRunningTime(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readNormalizeRunningTime());
}

::ndk::ScopedAStatus Performance::readVyrenReserve3(int32_t offset, int32_t count,
                                                    std::string* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.readVyrenReserve3(offset, count));
}

::ndk::ScopedAStatus Performance::readQuilbexVersion(
    ::aidl::vendor::vyren::hardware::performance::QuilbexVersionRet* _aidl_return) {
    return answer(_aidl_return, mMemoryStatistics.readQuilbexVersion());
}

::ndk::ScopedAStatus Performance::readPidsSet(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readPidsSet());
}

::ndk::ScopedAStatus Performance::readRealTime(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readRealTime());
}

::ndk::ScopedAStatus Performance::readRunningTime(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readRunningTime());
}

::ndk::ScopedAStatus Performance::readSchedInfoThreshold(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readSchedInfoThreshold());
}

::ndk::ScopedAStatus Performance::readSgeFreqInfo(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readSgeFreqInfo());
}

::ndk::ScopedAStatus Performance::readSgeInfo(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readSgeInfo());
}

::ndk::ScopedAStatus Performance::readStorageFeature(const std::string& name,
                                                     const std::string& feature,
                                                     const std::string& lookupMode,
                                                     std::string* _aidl_return) {
    return answer(_aidl_return, mStorage.readStorageFeature(name, feature, lookupMode));
}

::ndk::ScopedAStatus Performance::readTargetProcess(const std::string& process,
                                                    std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readTargetProcess(process));
}

::ndk::ScopedAStatus Performance::readTaskCpustatsEnable(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.readTaskCpustatsEnable());
}

::ndk::ScopedAStatus Performance::readTaskSchedInfo(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readTaskSchedInfo());
}

::ndk::ScopedAStatus Performance::readTidsSet(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readTidsSet());
}

::ndk::ScopedAStatus Performance::readUxTaskTrack(int32_t firstPid, int32_t secondPid,
                                                  std::string* _aidl_return) {
    return answer(_aidl_return, mTaskTrack.readUxTaskTrack(firstPid, secondPid));
}

::ndk::ScopedAStatus Performance::readVaFeature(std::string* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.readVaFeature());
}

::ndk::ScopedAStatus Performance::readVersion(std::string* _aidl_return) {
    return answer(_aidl_return, mTaskSchedInfo.readVersion());
}

::ndk::ScopedAStatus Performance::removeTaskTrackPid(int32_t group, int32_t pid) {
    mTaskTrack.removeTaskTrackPid(group, pid);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::searchAcmNomediaDirName(const std::string& dirName,
                                                          int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.searchAcmNomediaDirName(dirName));
}

::ndk::ScopedAStatus Performance::setAcmOpstat(int32_t state, int32_t* _aidl_return) {
    return answer(_aidl_return, mAccessMonitor.setAcmOpstat(state));
}

::ndk::ScopedAStatus Performance::setDamonReclaimColdTime(int32_t seconds, int32_t* _aidl_return) {
    return answer(_aidl_return, mDamonReclaim.setDamonReclaimColdTime(seconds));
}

::ndk::ScopedAStatus Performance::setDamonReclaimMonitoring(int32_t sampleMs, int32_t aggrMs,
                                                            int32_t* _aidl_return) {
    return answer(_aidl_return, mDamonReclaim.setDamonReclaimMonitoring(sampleMs, aggrMs));
}

::ndk::ScopedAStatus Performance::setDamonReclaimQuota(int32_t quotaMs, int32_t quotaSizeMb,
                                                       int32_t resetIntervalMs,
                                                       int32_t* _aidl_return) {
    return answer(_aidl_return,
                  mDamonReclaim.setDamonReclaimQuota(quotaMs, quotaSizeMb, resetIntervalMs));
}

::ndk::ScopedAStatus Performance::setDamonReclaimWmarks(int32_t metric, int32_t high, int32_t mid,
                                                        int32_t low, int32_t* _aidl_return) {
    return answer(_aidl_return, mDamonReclaim.setDamonReclaimWmarks(metric, high, mid, low));
}

::ndk::ScopedAStatus Performance::setFgUids(const std::string& uids) {
    mSchedAssist.setFgUids(uids);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setFrameRate(const std::string& value) {
    mSchedAssist.setFrameRate(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setImFlag(const std::string& pid, const std::string& flag) {
    mSchedAssist.setImFlag(pid, flag);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setProcessReclaim(const std::string& cmd, int32_t* _aidl_return) {
    return answer(_aidl_return, mProcessReclaim.setProcessReclaim(cmd));
}

::ndk::ScopedAStatus Performance::setSchedAssistImptTask(const std::string& value) {
    mSchedAssist.setSchedAssistImptTask(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setSchedAssistScene(const std::string& value) {
    mSchedAssist.setSchedAssistScene(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setSlideboost(const std::string& value) {
    mSchedAssist.setSlideboost(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setTpdID(const std::string& id, int32_t* _aidl_return) {
    return answer(_aidl_return, mSchedAssist.setTpdID(id));
}

::ndk::ScopedAStatus Performance::setTpdSerialParams(const std::string& params,
                                                     int32_t* _aidl_return) {
    return answer(_aidl_return, mSchedAssist.setTpdSerialParams(params));
}

::ndk::ScopedAStatus Performance::writeClmEnable(const std::string& value) {
    mClm.writeClmEnable(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeClmHighLoadAll(const std::string& value) {
    mClm.writeClmHighLoadAll(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeClmHighLoadGrp(const std::string& value) {
    mClm.writeClmHighLoadGrp(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeClmLowLoadGrp(const std::string& value) {
    mClm.writeClmLowLoadGrp(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeDBacktrace(const std::string& value) {
    mTaskSchedInfo.writeDBacktrace(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeFgFreqsThreshold(const std::string& value) {
    mClm.writeFgFreqsThreshold(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeIOBacktrace(const std::string& value) {
    mTaskSchedInfo.writeIOBacktrace(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeJankTaskTrackEnable(bool enable) {
    mTaskTrack.writeJankTaskTrackEnable(enable);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeKmallocDebugCreate(int32_t value, int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.writeKmallocDebugCreate(value));
}

::ndk::ScopedAStatus Performance::writeKmallocDebugCreateWithType(const std::string& type,
                                                                  int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.writeKmallocDebugCreateWithType(type));
}

::ndk::ScopedAStatus Performance::writeMemMonitor(const std::string& cmd, int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryMonitor.writeMemMonitor(cmd));
}

::ndk::ScopedAStatus Performance::writeMemleakDetectThread(int32_t value, int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.writeMemleakDetectThread(value));
}

::ndk::ScopedAStatus Performance::writeMonitorStatus(const std::string& status,
                                                     int32_t* _aidl_return) {
    return answer(_aidl_return, mTaskStatistics.writeMonitorStatus(status));
}

::ndk::ScopedAStatus Performance::writeNandswapProc(const std::string& name,
                                                    const std::string& value,
                                                    int32_t* _aidl_return) {
    return answer(_aidl_return, mSwapTuning.writeNandswapProc(name, value));
}

::ndk::ScopedAStatus Performance::writeVyrenReserve3(int32_t offset, int32_t count,
                                                     const std::string& data,
                                                     int32_t* _aidl_return) {
    return answer(_aidl_return, mDeviceInfo.writeVyrenReserve3(offset, count, data));
}

::ndk::ScopedAStatus Performance::writePidsSet(const std::string& value) {
    mTaskSchedInfo.writePidsSet(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeSchedInfoThreshold(const std::string& value) {
    mTaskSchedInfo.writeSchedInfoThreshold(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeStorageFeature(const std::string& name,
                                                      const std::string& feature,
                                                      const std::string& lookupMode,
                                                      const std::string& value,
                                                      int32_t* _aidl_return) {
    return answer(_aidl_return, mStorage.writeStorageFeature(name, feature, lookupMode, value));
}

::ndk::ScopedAStatus Performance::writeTaskSchedInfo(const std::string& value) {
    mTaskSchedInfo.writeTaskSchedInfo(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeTidsSet(const std::string& value) {
    mTaskSchedInfo.writeTidsSet(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeUxState(const std::string& value, const std::string& pid,
                                               const std::string& tid, int32_t* _aidl_return) {
    return answer(_aidl_return, mUxWaker.writeUxState(value, pid, tid));
}

::ndk::ScopedAStatus Performance::writeVaFeature(int32_t value, int32_t* _aidl_return) {
    return answer(_aidl_return, mMemoryDebug.writeVaFeature(value));
}

::ndk::ScopedAStatus Performance::setFreqGoverner(const std::string& governor,
                                                  const std::vector<int32_t>& policies,
                                                  int32_t* _aidl_return) {
    return answer(_aidl_return, mGovernor.setFreqGoverner(governor, policies));
}

::ndk::ScopedAStatus Performance::enableAudioPerf(const std::string& value, int32_t* _aidl_return) {
    return answer(_aidl_return, mGovernor.enableAudioPerf(value));
}

::ndk::ScopedAStatus Performance::writeTmemoryMemory(const std::string& value,
                                                     int32_t* _aidl_return) {
    return answer(_aidl_return, mTmemory.writeTmemoryMemory(value));
}

::ndk::ScopedAStatus Performance::writeTmemorySwitch(int32_t value, int32_t* _aidl_return) {
    return answer(_aidl_return, mTmemory.writeTmemorySwitch(value));
}

::ndk::ScopedAStatus Performance::writeTmemoryFlushBusy(int32_t value, int32_t* _aidl_return) {
    return answer(_aidl_return, mTmemory.writeTmemoryFlushBusy(value));
}

::ndk::ScopedAStatus Performance::writeTmemoryFlushIdle(int32_t value, int32_t* _aidl_return) {
    return answer(_aidl_return, mTmemory.writeTmemoryFlushIdle(value));
}

::ndk::ScopedAStatus Performance::writeTmemoryCapacity(int32_t value, int32_t* _aidl_return) {
    return answer(_aidl_return, mTmemory.writeTmemoryCapacity(value));
}

::ndk::ScopedAStatus Performance::writeTmemoryHighWaterRatio(int32_t value, int32_t* _aidl_return) {
    return answer(_aidl_return, mTmemory.writeTmemoryHighWaterRatio(value));
}

::ndk::ScopedAStatus Performance::readTmemorySysdirtypages(std::string* _aidl_return) {
    return answer(_aidl_return, mTmemory.readTmemorySysdirtypages());
}

::ndk::ScopedAStatus Performance::readTmemoryDirtypages(std::string* _aidl_return) {
    return answer(_aidl_return, mTmemory.readTmemoryDirtypages());
}

::ndk::ScopedAStatus Performance::readTmemoryErrorStat(std::string* _aidl_return) {
    return answer(_aidl_return, mTmemory.readTmemoryErrorStat());
}

::ndk::ScopedAStatus Performance::readTmemoryIoLatency(std::string* _aidl_return) {
    return answer(_aidl_return, mTmemory.readTmemoryIoLatency());
}

::ndk::ScopedAStatus Performance::getClmThreshold(int32_t which, std::string* _aidl_return) {
    return answer(_aidl_return, mClm.getClmThreshold(which));
}

::ndk::ScopedAStatus Performance::getClmMuxSwitch(std::string* _aidl_return) {
    return answer(_aidl_return, mClm.getClmMuxSwitch());
}

::ndk::ScopedAStatus Performance::setClmThreshold(const std::string& value, int32_t which) {
    mClm.setClmThreshold(value, which);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setClmMuxSwitch(const std::string& value) {
    mClm.setClmMuxSwitch(value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setWakeSeedThread(const std::string& tid, bool first, bool second,
                                                    int32_t* _aidl_return) {
    return answer(_aidl_return, mUxWaker.setWakeSeedThread(tid, first, second));
}

::ndk::ScopedAStatus Performance::getWakeThreadsAffinityOrdered(
    const std::string& handle, int32_t count,
    ::aidl::vendor::vyren::hardware::performance::TaskWakeInfo* _aidl_return) {
    return answer(_aidl_return, mUxWaker.getWakeThreadsAffinityOrdered(handle, count));
}

}  // namespace aidl::vendor::vyren::hardware::performance
