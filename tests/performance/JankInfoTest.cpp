// The jank monitor's CPU findings, read whole, and its version, read once.

#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Call, testing::OperationRow;

constexpr char kVersion[] = "/proc/jank_info/cpu_jank_info/version";
// The CPU load nodes are the ones whose absence is reported.
const LogLine kQxtr =
    testing::Error("DEBUG QXTR: open jank file {node} : {node} failed, No such file or directory");

OperationRow reader(std::string name, Call c, const char* node, std::vector<LogLine> absent = {}) {
    return testing::linesRow(std::move(name), std::move(c), testing::same(node),
                             {kOpenFileError, std::move(absent)});
}

// clang-format off
const OperationRow kRows[] = {
    reader(OP(readJankCpuInfo), "/proc/jank_info/cpu_jank_info/cpu_info"),
    reader(OP(readCallStack), "/proc/jank_info/cpu_jank_info/callstack"),
    reader(OP(readJankCpuLoad), "/proc/jank_info/cpu_jank_info/cpu_load", {kQxtr}),
    reader(OP(readJankCpuLoad32), "/proc/jank_info/cpu_jank_info/cpu_load32", {kQxtr}),
    reader(OP(readJankCpuInfoSig), "/proc/jank_info/cpu_jank_info/cpu_info_sig"),
    reader(OP(readJankCpuLoad32Scale), "/proc/jank_info/cpu_jank_info/cpu_load32_scale"),
    reader(OP(readJankCpuIndicator), "/proc/jank_info/cpu_jank_info/load_indicator"),
    testing::row(OP(readJankVersion)).at(kVersion).holding("v3.2\nv4\n").whenPresent({"v3.2", {}})
        .whenAbsent({"cannot access jank version", {}}),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(JankInfoNodes, kRows);

using JankVersionTest = NodeRootTest;

// An empty first line is not kept, so the next call reads the node again. Only the first line is
// read, so a node whose writer keeps it open, and which never ends, answers all the same.
TEST_F(JankVersionTest, KeepsTheFirstNonEmptyLine) {
    JankInfo jank(nodes());
    writeNode(kVersion, "\nv3\n");
    EXPECT_EQ(jank.readJankVersion(), "");
    std::filesystem::remove(path(kVersion));
    ASSERT_EQ(mkfifo(path(kVersion).c_str(), 0600), 0);
    android::base::unique_fd writer;
    std::thread opener([&] {
        writer.reset(open(path(kVersion).c_str(), O_WRONLY | O_CLOEXEC));
        EXPECT_TRUE(android::base::WriteStringToFd("v3.2\n", writer));
    });
    EXPECT_EQ(jank.readJankVersion(), "v3.2");
    opener.join();
    // Kept: the node is not read again, even once it has gone.
    std::filesystem::remove(path(kVersion));
    EXPECT_EQ(jank.readJankVersion(), "v3.2");
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
