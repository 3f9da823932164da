// The kernel's task-scheduling information: its switches, watched tasks, threshold and reports,
// passed through as text both ways.

#include "TaskSchedInfo.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kTaskSchedInfoEnable[] = "/proc/task_info/task_sched_info/task_sched_info_enable";
constexpr char kPidsSet[] = "/proc/task_info/task_sched_info/pids_set";
constexpr char kSchedInfoThreshold[] = "/proc/task_info/task_sched_info/sched_info_threshold";
constexpr char kTidsSet[] = "/proc/task_info/task_sched_info/tids_set";
constexpr char kDBacktrace[] = "/proc/task_info/task_sched_info/d_backtrace";
constexpr char kIOBacktrace[] = "/proc/task_info/task_sched_info/io_backtrace";
constexpr char kDConvert[] = "/proc/task_info/task_sched_info/d_convert";
constexpr char kVersion[] = "/proc/task_info/task_sched_info/version";
constexpr char kLimitTable[] = "/proc/task_info/task_sched_info/limit_table";

// A node that will not open reads as empty, like an empty one.
constexpr WholeNodeRead kSchedInfoRead = {LineOpen::kReadWrite, ""};

}  // namespace

void TaskSchedInfo::writeSchedNode(const char* node, const std::string& value) const {
    // A refused write reports itself with the open message.
    (void)mNodes.valueWrite(node, value, WriteCheck::kNegative, "", LogOpenFailure);
}

std::string TaskSchedInfo::readSchedNode(const char* node) const {
    return mNodes.readWholeNode(node, kSchedInfoRead);
}

void TaskSchedInfo::writeTaskSchedInfo(const std::string& value) const {
    writeSchedNode(kTaskSchedInfoEnable, value);
}

void TaskSchedInfo::writePidsSet(const std::string& value) const {
    writeSchedNode(kPidsSet, value);
}

void TaskSchedInfo::writeSchedInfoThreshold(const std::string& value) const {
    writeSchedNode(kSchedInfoThreshold, value);
}

void TaskSchedInfo::writeTidsSet(const std::string& value) const {
    writeSchedNode(kTidsSet, value);
}

void TaskSchedInfo::writeDBacktrace(const std::string& value) const {
    writeSchedNode(kDBacktrace, value);
}

void TaskSchedInfo::writeIOBacktrace(const std::string& value) const {
    writeSchedNode(kIOBacktrace, value);
}

std::string TaskSchedInfo::readTaskSchedInfo() const {
    return readSchedNode(kTaskSchedInfoEnable);
}

std::string TaskSchedInfo::readPidsSet() const {
    return readSchedNode(kPidsSet);
}

std::string TaskSchedInfo::readSchedInfoThreshold() const {
    return readSchedNode(kSchedInfoThreshold);
}

std::string TaskSchedInfo::readTidsSet() const {
    return readSchedNode(kTidsSet);
}

std::string TaskSchedInfo::readDBacktrace() const {
    return readSchedNode(kDBacktrace);
}

std::string TaskSchedInfo::readIOBacktrace() const {
    return readSchedNode(kIOBacktrace);
}

std::string TaskSchedInfo::readDConvert() const {
    return readSchedNode(kDConvert);
}

std::string TaskSchedInfo::readVersion() const {
    return readSchedNode(kVersion);
}

std::string TaskSchedInfo::readLimitTable() const {
    return readSchedNode(kLimitTable);
}

}  // namespace aidl::vendor::vyren::hardware::performance
