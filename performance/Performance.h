#pragma once

#include <aidl/vendor/vyren/hardware/performance/BnPerformance.h>
#include <dirent.h>
#include <quilbex/util.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace aidl::vendor::vyren::hardware::performance {

// What a whole-node read answers when its node cannot be opened.
inline constexpr char kOpenFileError[] = "NULL, OPEN FILE ERROR...";

// Owners of a C stream and of a malloc'ed buffer.
struct FileCloser {
    void operator()(FILE* f) const { fclose(f); }
};
struct FreeDeleter {
    void operator()(void* p) const { free(p); }
};

// A kernel node that moved when the vendor memory nodes were reorganised in kernel 5.10.
struct NodePair {
    const char* older;
    const char* newer;
};

// A report node chosen by kernel version, with the read buffer size each tree needs.
struct ReportNode {
    NodePair node;
    size_t olderSize;
    size_t newerSize;
};

// How a text write reaches its node: a write-only descriptor (no create, no truncation, one
// write(), failing only when it returns -1), or a "w" stream (truncating, one put; what the stream
// only buffers fails unnoticed at close).
enum class WriteOpen { kDescriptor, kStream };
struct TextWrite {
    WriteOpen open;
    // ERROR formats for a failed open and a failed write, or nullptr to log nothing. Each takes its
    // leading arguments from (path, errno, error text, kernel major, minor, patch).
    const char* openFailure;
    const char* writeFailure;
};
struct WriteOutcome {
    enum class Failed { kNothing, kOpen, kWrite } failed;
    // errno of the failed step, 0 on success.
    int err;
    // What the descriptor's write returned; 0 for a stream, or when the open failed.
    ssize_t written = 0;
};

// The character devices are reached through the one device-I/O interface the engine defines.
using ::vyren::quilbex::util::DeviceIo;

// A request of the access-control monitor device.
struct AcmRequest {
    unsigned int code;
    // The operation's result when the device cannot be opened.
    int openFailure;
};

// The one service object. Every operation is a guarded bridge from a binder call to a kernel
// node; each feature subsystem implements its operations in its own source file.
class Performance : public BnPerformance {
  public:
    // On a device every node path is used as it stands.
    Performance();
    // Resolves every kernel path against nodeRoot, a simulated device tree on a host.
    explicit Performance(std::string nodeRoot);
    // As above, reaching the ioctl devices through deviceIo.
    Performance(std::string nodeRoot, std::shared_ptr<DeviceIo> deviceIo);
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

    // Reads up to size bytes of the node at path, from offset, into buf. Returns the bytes
    // read, or -1 on bad arguments or a failed open, seek or read.
    int readInterface(const char* path, int offset, void* buf, int size);

    // Reads the first 1023 bytes at most of the node at path into out.
    bool ReadFileToStringT(const std::string& path, std::string* out) const;

    // The int at the start of the node at path, or 0 when the node cannot be read or holds none.
    int GetMaxValueNode(const std::string& path) const;
    // The f2fs device, among the entries of directory, whose garbage collection has moved the
    // most blocks in the background; "" when there is none.
    std::string GetDevName(const std::string& directory) const;

    // Line reads as the feature tables describe them; see forEachLine and readWholeNode.

    // How a line read opens its node: C mode "r", or "r+", which is open(O_RDWR) and so refuses
    // a node the service may only read.
    enum class LineOpen { kRead, kReadWrite };
    // What a whole-node read logs when its node cannot be opened: the format's arguments.
    enum class OpenFailureLog {
        kNone,
        kPath,           // (path)
        kPathErrno,      // (path, errno, error text)
        kPathPathError,  // (path, path, error text)
        kKernelVersion,  // (major, minor, patch)
    };
    struct WholeNodeRead {
        LineOpen mode;
        // The result when the node cannot be opened.
        const char* failureText;
        OpenFailureLog log = OpenFailureLog::kNone;
        int logPriority = 0;
        const char* logFormat = nullptr;
        // Put before the first line, and after every line.
        const char* prefix = "";
        char terminator = '\n';
    };

  private:
    // The node-access conventions shared by every subsystem.

    // Where a device node lives in this service's view of the file system.
    std::string nodePath(std::string_view path) const;
    // Kernel 5.10 and later publish the vendor memory nodes in their newer tree.
    bool usesNewNodeTree() const;
    const char* choose(const NodePair& node) const;

    // Switch write: writes "1" (on) or "0" (off) with no newline through a "w" stream. Returns
    // 0, or -1 with failFormat (path, errno, error text) logged when the node cannot be opened.
    // A refused write is not noticed. failFormat may go on to the kernel version (major, minor,
    // patch).
    int switchWrite(const char* path, bool on, const char* failFormat, const char* message);

    // Node write: writes bytes once, as they stand, to the node opened write-only (no create, no
    // truncate). Returns the write's own result, or -2, with ERROR openFailFormat (path, errno,
    // error text) logged, when the node cannot be opened. A write of -1 is logged at
    // ERROR with writeFailFormat (path, errno, error text) when it is not null; errno stays that
    // of the write for a caller with a message of its own.
    int writeOnce(const char* path, std::string_view bytes, const char* writeFailFormat,
                  const char* openFailFormat = "Failed to open %s (%d): %s");
    // Text write: writes text to the node once, as `how` says, logging a failure with its
    // format.
    WriteOutcome writeText(const char* path, std::string_view text, const TextWrite& how);

    // When a value write counts as failed and is logged.
    enum class WriteCheck { kNotPositive, kNegative };
    // Value write: writes text once, with no newline, to the node opened write-only. Returns the
    // write's own result (bytes written, or -1), or -2 when the node cannot be opened. message,
    // when not empty, is logged at DEBUG after the write. A failed write logs writeFailFormat
    // (path, errno, error text), a failed open openFailFormat (the same arguments).
    int valueWrite(const char* path, std::string_view text, WriteCheck check,
                   const std::string& message,
                   const char* writeFailFormat = "Failed to write %s (%d): %s",
                   const char* openFailFormat = "Failed to open %s (%d): %s");

    // Node read: the node's text, up to its first NUL and never more than size bytes; empty
    // when the node cannot be read.
    std::string readNode(const char* path, size_t size);
    std::string readNode(const ReportNode& report);
    // Node read that, when fallback is not null and the first read yields less than one byte,
    // reads the fallback node into the same buffer.
    std::string readNode(const char* path, size_t size, const char* fallback);
    // Appends the node's text, up to its first NUL and at most 1023 bytes from one read, to
    // out. Returns false, with nothing logged, when the node cannot be opened.
    bool readSmallNode(const std::string& path, std::string* out, size_t size = 1024) const;

    // Calls onLine with each line of the node, without its newline; a last line with no newline
    // is a line too. A read error ends the lines early. Returns false, with errno from the
    // open, when the node cannot be opened.
    bool forEachLine(const char* path, LineOpen mode,
                     const std::function<void(std::string_view)>& onLine) const;
    // Whole-node read: the prefix, then every line followed by the terminator, with no size
    // limit; or the failure text, logged as the read says, when the node cannot be opened.
    std::string readWholeNode(const char* path, const WholeNodeRead& how) const;

    // Swap tuning. The hybrid-swap node of a global action, or "" for an action with none.
    std::string hybridswapGlobalFile(int32_t action) const;
    // The node of a per-group action in one memory cgroup, or "" when there is none.
    void get_memcg_para_file(int32_t action, const std::string& cgroup, std::string* path) const;
    // The same on the unified hierarchy.
    void get_memcg_para_file_dfl(int32_t action, const std::string& cgroup, std::string* path) const;
    // Writes value once, exactly; 0 when all of it was taken, else -1.
    int hybridswapWrite(int32_t action, const std::string& path, const std::string& value);
    // One read of at most 4095 bytes, or invalidText when there is no node to read.
    std::string hybridswapRead(int32_t action, const std::string& path,
                               const std::string& invalidText);
    // Turns the DAMON reclaim module on or off.
    int damonSwitch(bool on);
    // Device information: the value of a UFS status line, and the reserve partition to open.
    int32_t ufsplusStatus(const char* key) const;
    const char* reservePartition() const;
    // Calls onEntry with each entry of the directory at path, in directory order, "." and ".."
    // included, until it returns false. Returns false when the directory cannot be opened.
    bool forEachEntry(const char* path, const std::function<bool(const dirent&)>& onEntry) const;

    // Storage feature nodes (Storage.cpp).
    std::vector<std::string> getDevicePath(const std::string& dir) const;
    std::string getUfsHpbNodePath(const std::string& name, const std::string& feature) const;
    std::vector<std::string> getCustDevicePath(const std::string& name,
                                               const std::string& feature) const;
    bool isStorageNode(const std::string& path) const;
    std::vector<std::string> findStorageNodes(const std::string& name, const std::string& feature,
                                              const std::string& lookupMode) const;

    // Tmemory write-back cache (Tmemory.cpp).
    bool findTmemoryPath(std::string& dir) const;
    void writeTmemoryNode(const std::string& node, const char* buf, int count, int* result) const;
    int writeTmemoryText(const char* node, const std::string& text) const;
    std::string readTmemoryNode(const char* node) const;

    // Access-control monitor (AccessMonitor.cpp): one request on the device; the request's
    // result, or its open-failure result when the device cannot be opened.
    int acmRequest(const AcmRequest& request, void* arg) const;

    // Fixed at construction. Nodes and streams are opened and closed within the call that uses
    // them, so the object holds none.
    const std::string mNodeRoot;
    const std::shared_ptr<DeviceIo> mDeviceIo;
    int32_t mKernelMajor = 0;
    int32_t mKernelMinor = 0;
    int32_t mKernelPatch = 0;
    bool mDebug = false;
    // Always ends in a slash.
    std::string mMemcgRootPath;

    // Filled by the first successful jank version read and returned unchanged afterwards.
    std::mutex mJankVersionLock;
    std::string mJankVersion;
};

// Splits str at any of the characters of delim and appends the non-empty tokens to out.
void splitString(const char* str, const char* delim, std::vector<std::string>* out);

}  // namespace aidl::vendor::vyren::hardware::performance
