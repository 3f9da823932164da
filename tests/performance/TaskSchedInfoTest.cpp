// Task-scheduling information: each node read whole and written as it stands.

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using namespace testing;

constexpr NodePair kEnable = same("/proc/task_info/task_sched_info/task_sched_info_enable");
constexpr NodePair kThreshold = same("/proc/task_info/task_sched_info/sched_info_threshold");

// A write answers nothing; a refused one is logged with the open message.
OperationRow put(std::string name, Call op, NodePair node) {
    OperationRow r = putRow(std::move(name), std::move(op), node);
    r.present.result = r.absent.result = r.takesNoBytes->result = "";
    return r.whenRefused({"", {Error("Failed to open {node} (28): No space left on device")}});
}

const OperationRow kRows[] = {
    linesRow(OP(readTaskSchedInfo), kEnable),
    put(OP(writeTaskSchedInfo, kPut), kEnable),
    linesRow(OP(readPidsSet), same("/proc/task_info/task_sched_info/pids_set")),
    put(OP(writePidsSet, kPut), same("/proc/task_info/task_sched_info/pids_set")),
    linesRow(OP(readSchedInfoThreshold), kThreshold),
    put(OP(writeSchedInfoThreshold, kPut), kThreshold),
    linesRow(OP(readTidsSet), same("/proc/task_info/task_sched_info/tids_set")),
    put(OP(writeTidsSet, kPut), same("/proc/task_info/task_sched_info/tids_set")),
    linesRow(OP(readDBacktrace), same("/proc/task_info/task_sched_info/d_backtrace")),
    put(OP(writeDBacktrace, kPut), same("/proc/task_info/task_sched_info/d_backtrace")),
    linesRow(OP(readIOBacktrace), same("/proc/task_info/task_sched_info/io_backtrace")),
    put(OP(writeIOBacktrace, kPut), same("/proc/task_info/task_sched_info/io_backtrace")),
    linesRow(OP(readDConvert), same("/proc/task_info/task_sched_info/d_convert")),
    linesRow(OP(readVersion), same("/proc/task_info/task_sched_info/version")),
    linesRow(OP(readLimitTable), same("/proc/task_info/task_sched_info/limit_table")),
};
INSTANTIATE_OPERATION_ROWS(TaskSchedInfo, kRows);

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
