// The kernel's task-scheduling information: its switches, watched tasks, threshold and reports,
// passed through as text both ways.

#include "Performance.h"

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
constexpr Performance::WholeNodeRead kSchedInfoRead = {Performance::LineOpen::kReadWrite, ""};
// A refused write reports itself with the open message.
constexpr char kSchedInfoWriteFailure[] = "Failed to open %s (%d): %s";

}  // namespace

::ndk::ScopedAStatus Performance::writeTaskSchedInfo(const std::string& value) {
    (void)valueWrite(kTaskSchedInfoEnable, value, WriteCheck::kNegative, "", kSchedInfoWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writePidsSet(const std::string& value) {
    (void)valueWrite(kPidsSet, value, WriteCheck::kNegative, "", kSchedInfoWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeSchedInfoThreshold(const std::string& value) {
    (void)valueWrite(kSchedInfoThreshold, value, WriteCheck::kNegative, "", kSchedInfoWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeTidsSet(const std::string& value) {
    (void)valueWrite(kTidsSet, value, WriteCheck::kNegative, "", kSchedInfoWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeDBacktrace(const std::string& value) {
    (void)valueWrite(kDBacktrace, value, WriteCheck::kNegative, "", kSchedInfoWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeIOBacktrace(const std::string& value) {
    (void)valueWrite(kIOBacktrace, value, WriteCheck::kNegative, "", kSchedInfoWriteFailure);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readTaskSchedInfo(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kTaskSchedInfoEnable, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readPidsSet(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kPidsSet, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readSchedInfoThreshold(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kSchedInfoThreshold, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readTidsSet(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kTidsSet, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readDBacktrace(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kDBacktrace, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readIOBacktrace(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kIOBacktrace, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readDConvert(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kDConvert, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readVersion(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kVersion, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readLimitTable(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kLimitTable, kSchedInfoRead);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
