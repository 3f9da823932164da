// Scheduler assistance: the tuning nodes of the scheduler-assist feature and the task placement
// decision (tpd) module. Each node's failure texts are its own and differ on purpose.

#define LOG_TAG "PerformanceService"

#include <log/log.h>
#include <unistd.h>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kOpenFailed[] = "Failed to open %s (%d): %s";
constexpr char kOpenFailedOnKernel[] = "Failed to open %s (%d): %s, Linux version %d.%d.%d";
constexpr char kWriteFailed[] = "Failed to write %s (%d): %s";

// A scheduler node and how a write to it is made and reported.
struct SchedNode {
    NodePair node;
    TextWrite how;
};

constexpr SchedNode kSlideboost = {
    {"/proc/sys/kernel/slide_boost_enabled", "/proc/sys/walt/slide_boost_enabled"},
    {WriteOpen::kDescriptor, kOpenFailedOnKernel, kWriteFailed}};
constexpr SchedNode kSchedAssistScene = {
    {"/proc/sys/kernel/sched_assist_scene",
     "/proc/vyren_scheduler/sched_assist/sched_assist_scene"},
    {WriteOpen::kDescriptor, kOpenFailedOnKernel, kWriteFailed}};
// These three report a failed write with the open message.
constexpr SchedNode kFrameRate = {{"/proc/sys/kernel/frame_rate", "/proc/sys/walt/frame_rate"},
                                  {WriteOpen::kDescriptor, kOpenFailed, kOpenFailed}};
constexpr SchedNode kImFlag = {
    {"/proc/vyren_scheduler/sched_assist/im_flag", "/proc/vyren_scheduler/sched_assist/im_flag"},
    {WriteOpen::kDescriptor, kOpenFailed, kOpenFailed}};
constexpr SchedNode kFgUids = {{"/proc/fg_info/fg_uids", "/proc/fg_info/fg_uids"},
                               {WriteOpen::kDescriptor, kOpenFailed, kOpenFailed}};
// The important-task tgid node of older kernels, and the sched_assist node that replaced it.
constexpr SchedNode kImptTgid = {
    {"/proc/sys/kernel/sched_impt_tgid", "/proc/sys/kernel/sched_impt_tgid"},
    {WriteOpen::kStream, "zrk Failed to open %s (%d): %s", "zrkFailed to write %s (%d): %s"}};
constexpr SchedNode kImptTask = {{"/proc/vyren_scheduler/sched_assist/sched_impt_task",
                                  "/proc/vyren_scheduler/sched_assist/sched_impt_task"},
                                 {WriteOpen::kStream, kOpenFailedOnKernel, kWriteFailed}};
// The tpd nodes notice a failed open only.
constexpr SchedNode kTpdCmds = {
    {"/sys/module/tpd/parameters/tpd_cmds", "/proc/vyren_scheduler/sched_assist/tpd_cmds"},
    {WriteOpen::kStream, kOpenFailedOnKernel, nullptr}};
constexpr SchedNode kTpdId = {
    {"/sys/module/tpd/parameters/tpd_id", "/proc/vyren_scheduler/sched_assist/tpd_id"},
    {WriteOpen::kStream, kOpenFailedOnKernel, nullptr}};
// Only older kernels have a tpd switch.
constexpr SchedNode kTpdEnable = {{"/sys/module/tpd/parameters/tpd_enable", nullptr},
                                  {WriteOpen::kStream, kOpenFailedOnKernel, nullptr}};

// A client app marks its important task with this prefix; older kernels take its tgid alone.
constexpr std::string_view kAppTaskPrefix = "au ";

// 0 once the node was opened, whatever became of the write; -1 when it could not be.
int openedResult(const WriteOutcome& outcome) {
    return outcome.failed == WriteOutcome::Failed::kOpen ? -1 : 0;
}

}  // namespace

::ndk::ScopedAStatus Performance::setSlideboost(const std::string& value) {
    writeText(choose(kSlideboost.node), value, kSlideboost.how);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setSchedAssistScene(const std::string& value) {
    writeText(choose(kSchedAssistScene.node), value, kSchedAssistScene.how);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setFrameRate(const std::string& value) {
    writeText(choose(kFrameRate.node), value, kFrameRate.how);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setImFlag(const std::string& pid, const std::string& flag) {
    const WriteOutcome outcome =
        writeText(choose(kImFlag.node), "p " + pid + " " + flag, kImFlag.how);
    if (outcome.failed != WriteOutcome::Failed::kOpen) {
        ALOGD("setImFlag sucess,pid=%s,im_flag=%s", pid.c_str(), flag.c_str());
    }
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setFgUids(const std::string& uids) {
    writeText(choose(kFgUids.node), uids, kFgUids.how);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setSchedAssistImptTask(const std::string& value) {
    // Only the older node's presence decides, not the kernel version.
    const char* tgidNode = kImptTgid.node.older;
    if (access(nodePath(tgidNode).c_str(), F_OK) == 0 &&
        std::string_view(value).substr(0, kAppTaskPrefix.size()) == kAppTaskPrefix) {
        writeText(tgidNode, std::string_view(value).substr(kAppTaskPrefix.size()), kImptTgid.how);
    } else {
        writeText(choose(kImptTask.node), value, kImptTask.how);
    }
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setTpdSerialParams(const std::string& params,
                                                     int32_t* _aidl_return) {
    *_aidl_return = openedResult(writeText(choose(kTpdCmds.node), params, kTpdCmds.how));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::setTpdID(const std::string& id, int32_t* _aidl_return) {
    *_aidl_return = openedResult(writeText(choose(kTpdId.node), id, kTpdId.how));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::enableTaskPlacementDecision(int32_t* _aidl_return) {
    *_aidl_return = usesNewNodeTree()
                        ? -1
                        : openedResult(writeText(kTpdEnable.node.older, "1", kTpdEnable.how));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::disableTaskPlacementDecision(int32_t* _aidl_return) {
    *_aidl_return = usesNewNodeTree()
                        ? -1
                        : openedResult(writeText(kTpdEnable.node.older, "0", kTpdEnable.how));
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
