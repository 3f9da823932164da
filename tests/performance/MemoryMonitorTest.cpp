// The memory monitor: its report, the commands it takes and the probe for it.

#include <android-base/unique_fd.h>
#include <fcntl.h>

#include "MemoryMonitor.h"
#include "OperationNodes.h"
#include "TaskStatistics.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using namespace testing;

constexpr NodePair kMonitor = {"/proc/memory_monitor", "/proc/vyren_mem/memory_monitor"};
constexpr char kOpenError[] = "NULL, OPEN FILE ERROR...";
// The probe opens the node as a writer would, emptying it, and writes nothing.
const Outcome kFound = {"1", {Debug("memmonitor is exist")}};
const Outcome kGone = {"0", {Error("Failed to enable {node} (2): No such file or directory")}};

const OperationRow kRows[] = {
    linesRow(OP(getMemMonitor), kMonitor, {kOpenError, {}}),
    putRow(OP(writeMemMonitor, kPut), kMonitor),
    row(OP(existMemMonitor)).at(kMonitor).holding("1\n").leaves("").always(kFound).whenAbsent(kGone),
};
INSTANTIATE_OPERATION_ROWS(MemoryMonitor, kRows);

TEST_F(NodeRootTest, MonitorReportOpensForWritingAsWell) {
    // sysfs refuses a write open of a read-only attribute, even to root, where a statistics report
    // opened for reading only is read.
    const char* attribute = "/sys/devices/system/cpu/possible";
    if (android::base::unique_fd(open(attribute, O_RDWR)) >= 0) GTEST_SKIP() << "host lets it open";
    makeLink(kMonitor.newer, attribute);
    makeLink("/proc/task_info/task_cpustats/sgeinfo", attribute);
    EXPECT_EQ(MemoryMonitor(nodes()).getMemMonitor(), kOpenError);
    EXPECT_NE(TaskStatistics(nodes()).readSgeInfo(), "");
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
