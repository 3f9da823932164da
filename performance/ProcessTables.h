#pragma once

// Process-wide state shared by the operations of several subsystems. All of it is built by static
// initialisation before the service is registered and lives until the process exits.

#include <aidl/vendor/vyren/hardware/performance/ProcReqItemHal.h>
#include <aidl/vendor/vyren/hardware/performance/TaskGroup.h>
#include <aidl/vendor/vyren/hardware/performance/TaskWakeInfo.h>
#include <quilbex/proc-memstat.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace aidl::vendor::vyren::hardware::performance {

// The memory-statistics device and its request buffers.
extern ::vyren::quilbex::memstat::ProcMemStatHelper gMemStatHelper;

// Jank task tracking: the pids tracked per group, guarded by gTaskTrackLock.
extern std::mutex gTaskTrackLock;
extern std::map<TaskGroup, std::vector<int32_t>> gTaskTrackTable;
extern std::atomic<bool> gTaskTrackEnabled;

// Waker identification: one lock per waker node.
extern std::mutex gWakerSeedLock;
extern std::mutex gWakerInfoLock;

// Key templates of the health-information nodes, in the nodes' key order. Never changed after
// start-up, so readers need no lock.
extern const std::vector<ProcReqItemHal> gEmcdrvIowaitKeys;
extern const std::vector<ProcReqItemHal> gIowaitHungKeys;
extern const std::vector<ProcReqItemHal> gSchedLatencyKeys;
extern const std::vector<ProcReqItemHal> gFsyncWaitKeys;
extern const std::vector<ProcReqItemHal> gIowaitKeys;
extern const std::vector<ProcReqItemHal> gUfsFeatureKeys;
extern const std::vector<ProcReqItemHal> gIonWaitKeys;
extern const std::vector<ProcReqItemHal> gAllocWaitKeys;
extern const std::vector<ProcReqItemHal> gDStateKeys;
extern const std::vector<ProcReqItemHal> gKswapdLoadingKeys;
extern const std::vector<ProcReqItemHal> gScmCallKeys;

// Waker thread affinity: seven entries, -1 until known.
extern std::vector<int32_t> gWakerAffinity;
// The waker answer when the kernel gives none: status -1 and one thread of the affinity above.
extern const TaskWakeInfo gWakerDefaultInfo;

// The kernel's UX-setting switch: -1 until read, then what the kernel said (1 if it said nothing).
// While it is non-zero on kernel 6 and later, only apps may set a thread's UX state.
extern std::atomic<int32_t> gUxSettingSwitch;

// Storage feature nodes by name, with the index the discovery code uses for each. A lookup of an
// unknown name adds it, so every access holds gStorageNodeLock.
extern std::mutex gStorageNodeLock;
extern std::map<std::string, int> gStorageNodeMap;

}  // namespace aidl::vendor::vyren::hardware::performance
