// Scheduler assistance: the tuning nodes of the scheduler-assist feature and the task placement
// decision (tpd) module. Each node's failure texts are its own and differ on purpose.

#define LOG_TAG "PerformanceService"

#include "SchedAssist.h"

#include <log/log.h>
#include <unistd.h>

#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr NodePair kSlideboost = {"/proc/sys/kernel/slide_boost_enabled",
                                  "/proc/sys/walt/slide_boost_enabled"};
constexpr NodePair kSchedAssistScene = {"/proc/sys/kernel/sched_assist_scene",
                                        "/proc/vyren_scheduler/sched_assist/sched_assist_scene"};
constexpr NodePair kFrameRate = {"/proc/sys/kernel/frame_rate", "/proc/sys/walt/frame_rate"};
constexpr char kImFlag[] = "/proc/vyren_scheduler/sched_assist/im_flag";
constexpr char kFgUids[] = "/proc/fg_info/fg_uids";
// The important-task tgid node of older kernels, and the sched_assist node that replaced it.
constexpr char kImptTgid[] = "/proc/sys/kernel/sched_impt_tgid";
constexpr char kImptTask[] = "/proc/vyren_scheduler/sched_assist/sched_impt_task";
constexpr NodePair kTpdCmds = {"/sys/module/tpd/parameters/tpd_cmds",
                               "/proc/vyren_scheduler/sched_assist/tpd_cmds"};
constexpr NodePair kTpdId = {"/sys/module/tpd/parameters/tpd_id",
                             "/proc/vyren_scheduler/sched_assist/tpd_id"};
// Only older kernels have a tpd switch.
constexpr char kTpdEnable[] = "/sys/module/tpd/parameters/tpd_enable";

// A client app marks its important task with this prefix; older kernels take its tgid alone.
constexpr std::string_view kAppTaskPrefix = "au ";

}  // namespace

int32_t SchedAssist::writeTpd(const char* node, std::string_view text) const {
    // The tpd nodes notice a failed open only.
    const WriteOutcome outcome =
        mNodes.writeText(node, text, WriteOpen::kStream, mNodes.openFailureOnKernel());
    return outcome.failed == WriteOutcome::Failed::kOpen ? -1 : 0;
}

void SchedAssist::setSlideboost(const std::string& value) const {
    mNodes.writeText(mNodes.choose(kSlideboost), value, WriteOpen::kDescriptor,
                     mNodes.openFailureOnKernel(), LogWriteFailure);
}

void SchedAssist::setSchedAssistScene(const std::string& value) const {
    mNodes.writeText(mNodes.choose(kSchedAssistScene), value, WriteOpen::kDescriptor,
                     mNodes.openFailureOnKernel(), LogWriteFailure);
}

// The frame rate, im flag and foreground uid nodes report a failed write with the open message.
void SchedAssist::setFrameRate(const std::string& value) const {
    mNodes.writeText(mNodes.choose(kFrameRate), value, WriteOpen::kDescriptor, LogOpenFailure,
                     LogOpenFailure);
}

void SchedAssist::setImFlag(const std::string& pid, const std::string& flag) const {
    const WriteOutcome outcome = mNodes.writeText(
        kImFlag, "p " + pid + " " + flag, WriteOpen::kDescriptor, LogOpenFailure, LogOpenFailure);
    if (outcome.failed != WriteOutcome::Failed::kOpen) {
        // "sucess" is matched by log readers as it stands.
        ALOGD("setImFlag sucess,pid=%s,im_flag=%s", pid.c_str(), flag.c_str());
    }
}

void SchedAssist::setFgUids(const std::string& uids) const {
    mNodes.writeText(kFgUids, uids, WriteOpen::kDescriptor, LogOpenFailure, LogOpenFailure);
}

void SchedAssist::setSchedAssistImptTask(const std::string& value) const {
    // Only the older node's presence decides, not the kernel version.
    if (access(mNodes.path(kImptTgid).c_str(), F_OK) == 0 &&
        std::string_view(value).substr(0, kAppTaskPrefix.size()) == kAppTaskPrefix) {
        // "zrk", and no space after it on a failed write, are matched by log readers as they
        // stand.
        mNodes.writeText(kImptTgid, std::string_view(value).substr(kAppTaskPrefix.size()),
                         WriteOpen::kStream, NODE_ERROR_LOG("zrk Failed to open %s (%d): %s"),
                         NODE_ERROR_LOG("zrkFailed to write %s (%d): %s"));
    } else {
        mNodes.writeText(kImptTask, value, WriteOpen::kStream, mNodes.openFailureOnKernel(),
                         LogWriteFailure);
    }
}

int32_t SchedAssist::setTpdSerialParams(const std::string& params) const {
    return writeTpd(mNodes.choose(kTpdCmds), params);
}

int32_t SchedAssist::setTpdID(const std::string& id) const {
    return writeTpd(mNodes.choose(kTpdId), id);
}

int32_t SchedAssist::enableTaskPlacementDecision() const {
    return mNodes.newTree() ? -1 : writeTpd(kTpdEnable, "1");
}

int32_t SchedAssist::disableTaskPlacementDecision() const {
    return mNodes.newTree() ? -1 : writeTpd(kTpdEnable, "0");
}

}  // namespace aidl::vendor::vyren::hardware::performance
