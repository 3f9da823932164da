// Operations whose subsystems are not built yet. Each answers EX_UNSUPPORTED_OPERATION, so a
// caller can tell them from a built operation that failed.

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

::ndk::ScopedAStatus Performance::addAcmDirName(const std::string&, int64_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::addAcmNomediaDirName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::addAcmPkgName(const std::string&, int64_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::addTaskTrackPid(int32_t, int32_t, bool, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::clearTaskTrackGroup(int32_t) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::delAcmDirName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::delAcmNomediaDirName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::delAcmPkgName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::disableDamonReclaim(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::disableMultiThreadOptimize(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::disableProcessReclaim(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::disableTaskCpustats(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::disableTaskPlacementDecision(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::enableDamonReclaim(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::enableMultiThreadOptimize(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::enableProcessReclaim(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::enableTaskCpustats(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::enableTaskPlacementDecision(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::existMemMonitor(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getAcmDirFlag(const std::string&, int64_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getAcmOpstat(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getAcmPkgFlag(const std::string&, int64_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getDdrResidency(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getDevinfoUfsInfo(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getDevinfoDDRInfo(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getDevinfoUfsVersionInfo(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getExt4FragScore(const std::string&, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getExt4FreefragInfo(const std::string&, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getF2fsMovedBlks(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIAllocWait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHICpuInfo(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHICpuLoading(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIDState(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIEmcdrvIowait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIFsyncWait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIIonWait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIIowait(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIIowaitHung(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIKswapdLoading(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHISchedLatency(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIScmCall(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getHIUfsFeature(
    ::aidl::vendor::vyren::hardware::performance::ProcReqHal*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getKernelVersion(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getMemMonitor(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getPswapVersion(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getUfsSignalRecordUpload(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getUfsplusHpbStatus(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getUfsplusTwStatus(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getallocwait(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getdstate(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getfsyncwait(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getionwait(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getiowait(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getschedlatency(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::hybridswap_memcg_para_read(int32_t, const std::string&,
                                                             std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::hybridswap_memcg_para_write(int32_t, const std::string&,
                                                              const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::hybridswap_zram_para_read(int32_t, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::hybridswap_zram_para_write(int32_t, const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::isJankTaskTrackEnable(bool*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::perProcessMemReadahead(int32_t, int32_t, int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::perProcessMemReclaim(int32_t, int32_t, int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readCallStack(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readClmEnable(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readClmHighLoadAll(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readClmHighLoadGrp(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readClmLowLoadGrp(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readCpuTaskstats(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readDBacktrace(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readDConvert(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readFgFreqsThreshold(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readIOBacktrace(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readIomonitorInfo(const std::string&, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankCpuIndicator(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankCpuInfo(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankCpuInfoSig(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankCpuLoad(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankCpuLoad32(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankCpuLoad32Scale(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankTaskTrack(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankTaskTrackByPid(int32_t, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readJankVersion(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readLimitTable(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readNandswapProc(const std::string&, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readNormalizeRealTime(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readNormalizeRunningTime(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readVyrenReserve3(int32_t, int32_t, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readPidsSet(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readRealTime(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readRunningTime(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readSchedInfoThreshold(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readSgeFreqInfo(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readSgeInfo(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readStorageFeature(const std::string&, const std::string&,
                                                     const std::string&, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTargetProcess(const std::string&, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTaskCpustatsEnable(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTaskSchedInfo(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTidsSet(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readUxTaskTrack(int32_t, int32_t, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readVersion(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::removeTaskTrackPid(int32_t, int32_t) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::searchAcmNomediaDirName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setAcmOpstat(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setDamonReclaimColdTime(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setDamonReclaimMonitoring(int32_t, int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setDamonReclaimQuota(int32_t, int32_t, int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setDamonReclaimWmarks(int32_t, int32_t, int32_t, int32_t,
                                                        int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setFgUids(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setFrameRate(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setImFlag(const std::string&, const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setProcessReclaim(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setSchedAssistImptTask(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setSchedAssistScene(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setSlideboost(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setTpdID(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setTpdSerialParams(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeClmEnable(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeClmHighLoadAll(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeClmHighLoadGrp(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeClmLowLoadGrp(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeDBacktrace(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeFgFreqsThreshold(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeIOBacktrace(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeJankTaskTrackEnable(bool) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeMemMonitor(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeMonitorStatus(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeNandswapProc(const std::string&, const std::string&,
                                                    int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeVyrenReserve3(int32_t, int32_t, const std::string&,
                                                     int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writePidsSet(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeSchedInfoThreshold(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeStorageFeature(const std::string&, const std::string&,
                                                      const std::string&, const std::string&,
                                                      int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTaskSchedInfo(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTidsSet(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeUxState(const std::string&, const std::string&,
                                               const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setFreqGoverner(const std::string&, const std::vector<int32_t>&,
                                                  int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::enableAudioPerf(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryMemory(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemorySwitch(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryFlushBusy(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryFlushIdle(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryCapacity(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryHighWaterRatio(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTmemorySysdirtypages(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTmemoryDirtypages(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTmemoryErrorStat(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTmemoryIoLatency(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getClmThreshold(int32_t, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getClmMuxSwitch(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setClmThreshold(const std::string&, int32_t) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setClmMuxSwitch(const std::string&) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setWakeSeedThread(const std::string&, bool, bool, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getWakeThreadsAffinityOrdered(
    const std::string&, int32_t, ::aidl::vendor::vyren::hardware::performance::TaskWakeInfo*) {
    return notYetBuilt();
}

}  // namespace aidl::vendor::vyren::hardware::performance
