///////////////////////////////////////////////////////////////////////////////
// THIS FILE IS IMMUTABLE. DO NOT EDIT IN ANY CASE.                          //
///////////////////////////////////////////////////////////////////////////////

// This file is a snapshot of an AIDL file. Do not edit it manually. There are
// two cases:
// 1). this is a frozen version file - do not edit this in any case.
// 2). this is a 'current' file. If you make a backwards compatible change to
//     the interface (from the latest frozen version), the build system will
//     prompt you to update this file with `m <name>-update-api`.
//
// You must not make a backward incompatible change to any AIDL file built
// with the aidl_interface module type with versions property set. The module
// type is used to build AIDL files in a way that they can be used across
// independently updatable components of the system. If a device is shipped
// with such a backward incompatible change, it has a high risk of breaking
// later when a module using the interface is updated, e.g., Mainline modules.

package vendor.vyren.hardware.performance;
@VintfStability
interface IPerformance {
  int addAcmDirName(in String dirName, long flag);
  int addAcmNomediaDirName(in String dirName);
  int addAcmPkgName(in String pkgName, long flag);
  int addTaskTrackPid(int group, int pid, boolean clear);
  void clearTaskTrackGroup(int group);
  int delAcmDirName(in String dirName);
  int delAcmNomediaDirName(in String dirName);
  int delAcmPkgName(in String pkgName);
  int disableDamonReclaim();
  int disableKmallocDebug();
  int disableMultiThreadOptimize();
  int disableProcessReclaim();
  int disableTaskCpustats();
  int disableTaskPlacementDecision();
  int disableVmallocDebug();
  int enableDamonReclaim();
  int enableKmallocDebug();
  int enableMultiThreadOptimize();
  int enableProcessReclaim();
  int enableTaskCpustats();
  int enableTaskPlacementDecision();
  int enableVmallocDebug();
  int existMemMonitor();
  long getAcmDirFlag(in String dirName);
  int getAcmOpstat();
  long getAcmPkgFlag(in String pkgName);
  String getDdrResidency();
  String getDevinfoUfsInfo();
  String getDevinfoDDRInfo();
  String getDevinfoUfsVersionInfo();
  String getExt4FragScore(in String device);
  String getExt4FreefragInfo(in String device);
  String getF2fsMovedBlks();
  vendor.vyren.hardware.performance.ProcReqHal getHIAllocWait();
  String getHICpuInfo();
  String getHICpuLoading();
  vendor.vyren.hardware.performance.ProcReqHal getHIDState();
  vendor.vyren.hardware.performance.ProcReqHal getHIEmcdrvIowait();
  vendor.vyren.hardware.performance.ProcReqHal getHIFsyncWait();
  vendor.vyren.hardware.performance.ProcReqHal getHIIonWait();
  vendor.vyren.hardware.performance.ProcReqHal getHIIowait();
  vendor.vyren.hardware.performance.ProcReqHal getHIIowaitHung();
  vendor.vyren.hardware.performance.ProcReqHal getHIKswapdLoading();
  vendor.vyren.hardware.performance.ProcReqHal getHISchedLatency();
  vendor.vyren.hardware.performance.ProcReqHal getHIScmCall();
  vendor.vyren.hardware.performance.ProcReqHal getHIUfsFeature();
  int getKernelVersion();
  String getKmallocDebug();
  String getKmallocOrigin();
  String getKmallocUsed();
  String getMemMonitor();
  int getPswapVersion();
  String getUfsSignalRecordUpload();
  int getUfsplusHpbStatus();
  int getUfsplusTwStatus();
  String getVmallocDebug();
  String getVmallocHashCal();
  String getVmallocUsed();
  String getallocwait();
  String getdstate();
  String getfsyncwait();
  String getionwait();
  String getiowait();
  String getschedlatency();
  String hybridswap_memcg_para_read(int action, in String cgroup);
  int hybridswap_memcg_para_write(int action, in String cgroup, in String value);
  String hybridswap_zram_para_read(int action);
  int hybridswap_zram_para_write(int action, in String value);
  boolean isJankTaskTrackEnable();
  int perProcessMemReadahead(int pid, int mode, int size);
  int perProcessMemReclaim(int pid, int mode, int size);
  String readCallStack();
  String readClmEnable();
  String readClmHighLoadAll();
  String readClmHighLoadGrp();
  String readClmLowLoadGrp();
  String readCpuTaskstats();
  String readDBacktrace();
  String readDConvert();
  String readFgFreqsThreshold();
  String readIOBacktrace();
  String readIomonitorInfo(in String report);
  String readJankCpuIndicator();
  String readJankCpuInfo();
  String readJankCpuInfoSig();
  String readJankCpuLoad();
  String readJankCpuLoad32();
  String readJankCpuLoad32Scale();
  String readJankTaskTrack();
  String readJankTaskTrackByPid(int pid);
  String readJankVersion();
  String readKmallocDebugCreate();
  String readLimitTable();
  String readMemleakDetectThread();
  vendor.vyren.hardware.performance.ProcMemStatRet readMemoryByPids(in int[] pids, int flags);
  vendor.vyren.hardware.performance.ProcMemStatRet readMemoryByUids(in int[] uids, int flags);
  String readNandswapProc(in String name);
  String readNormalizeRealTime();
  String readNormalizeRunningTime();
  String readVyrenReserve3(int offset, int count);
  vendor.vyren.hardware.performance.QuilbexVersionRet readQuilbexVersion();
  String readPidsSet();
  String readRealTime();
  String readRunningTime();
  String readSchedInfoThreshold();
  String readSgeFreqInfo();
  String readSgeInfo();
  String readStorageFeature(in String name, in String feature, in String lookupMode);
  String readTargetProcess(in String process);
  String readTaskCpustatsEnable();
  String readTaskSchedInfo();
  String readTidsSet();
  String readUxTaskTrack(int firstPid, int secondPid);
  String readVaFeature();
  String readVersion();
  void removeTaskTrackPid(int group, int pid);
  int searchAcmNomediaDirName(in String dirName);
  int setAcmOpstat(int state);
  int setDamonReclaimColdTime(int seconds);
  int setDamonReclaimMonitoring(int sampleMs, int aggrMs);
  int setDamonReclaimQuota(int quotaMs, int quotaSizeMb, int resetIntervalMs);
  int setDamonReclaimWmarks(int metric, int high, int mid, int low);
  void setFgUids(in String uids);
  void setFrameRate(in String value);
  void setImFlag(in String pid, in String flag);
  int setProcessReclaim(in String cmd);
  void setSchedAssistImptTask(in String value);
  void setSchedAssistScene(in String value);
  void setSlideboost(in String value);
  int setTpdID(in String id);
  int setTpdSerialParams(in String params);
  void writeClmEnable(in String value);
  void writeClmHighLoadAll(in String value);
  void writeClmHighLoadGrp(in String value);
  void writeClmLowLoadGrp(in String value);
  void writeDBacktrace(in String value);
  void writeFgFreqsThreshold(in String value);
  void writeIOBacktrace(in String value);
  void writeJankTaskTrackEnable(boolean enable);
  int writeKmallocDebugCreate(int value);
  int writeKmallocDebugCreateWithType(in String type);
  int writeMemMonitor(in String cmd);
  int writeMemleakDetectThread(int value);
  int writeMonitorStatus(in String status);
  int writeNandswapProc(in String name, in String value);
  int writeVyrenReserve3(int offset, int count, in String data);
  void writePidsSet(in String value);
  void writeSchedInfoThreshold(in String value);
  int writeStorageFeature(in String name, in String feature, in String lookupMode, in String value);
  void writeTaskSchedInfo(in String value);
  void writeTidsSet(in String value);
  int writeUxState(in String value, in String pid, in String tid);
  int writeVaFeature(int value);
  int setFreqGoverner(in String governor, in int[] policies);
  int enableAudioPerf(in String value);
  int writeTmemoryMemory(in String value);
  int writeTmemorySwitch(int value);
  int writeTmemoryFlushBusy(int value);
  int writeTmemoryFlushIdle(int value);
  int writeTmemoryCapacity(int value);
  int writeTmemoryHighWaterRatio(int value);
  String readTmemorySysdirtypages();
  String readTmemoryDirtypages();
  String readTmemoryErrorStat();
  String readTmemoryIoLatency();
  String getClmThreshold(int which);
  String getClmMuxSwitch();
  void setClmThreshold(in String value, int which);
  void setClmMuxSwitch(in String value);
  int setWakeSeedThread(in String tid, boolean first, boolean second);
  vendor.vyren.hardware.performance.TaskWakeInfo getWakeThreadsAffinityOrdered(in String handle, int count);
}
