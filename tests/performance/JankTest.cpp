// The jank monitor: its readers and CLM writers as operation-nodes rows.

#include "OperationNodes.h"

#define JANK "/proc/jank_info/cpu_jank_info/"
// An operation's name and its call with the given arguments.
#define OP(op, ...) #op, call(&Performance::op, ##__VA_ARGS__)
// A CLM node's reader and writer.
#define CLM(read, write, node) reader(OP(read), JANK node), writer(OP(write, kValue), JANK node)

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::call;
using testing::Call;
using testing::Error;
using testing::Outcome;

constexpr char kOpenError[] = "NULL, OPEN FILE ERROR...";
const std::string kValue = "90";
const LogLine kNoNode = Error("Failed to open {node} (2): No such file or directory");
const LogLine kNoPath = Error("Failed to open  (2): No such file or directory");
const LogLine kQxtr =
    Error("DEBUG QXTR: open jank file {node} : {node} failed, No such file or directory");

testing::OperationRow row(const char* name, Call c, const char* node, const char* content,
                          Outcome present, Outcome absent) {
    return {name,    c,      {node, node}, testing::Kernels::kAll, content, std::nullopt,
            present, absent, std::nullopt};
}
// A last line without its newline is read with one.
testing::OperationRow reader(const char* name, Call c, const char* node,
                             std::vector<LogLine> absent = {}) {
    return row(name, c, node, "10 20\n30", {"10 20\n30\n", {}}, {kOpenError, absent});
}
// A write does not truncate the node; a refused one is logged in the words of a failed open.
testing::OperationRow writer(const char* name, Call c, const char* node) {
    auto r = row(name, c, node, "85\n", {"", {}}, {"", {kNoNode}});
    r.written = "90\n";
    r.refused = Outcome{"", {Error("Failed to open {node} (28): No space left on device")}};
    return r;
}

// clang-format off
const testing::OperationRow kRows[] = {
    reader(OP(readJankCpuInfo), JANK "cpu_info"), reader(OP(readCallStack), JANK "callstack"),
    reader(OP(readJankCpuLoad), JANK "cpu_load", {kQxtr}),
    reader(OP(readJankCpuLoad32), JANK "cpu_load32", {kQxtr}),
    reader(OP(readJankCpuInfoSig), JANK "cpu_info_sig"),
    reader(OP(readJankCpuLoad32Scale), JANK "cpu_load32_scale"),
    reader(OP(readJankCpuIndicator), JANK "load_indicator"),
    row(OP(readJankVersion), JANK "version", "v3.2\nv4\n", {"v3.2", {}},
        {"cannot access jank version", {}}),
    CLM(readClmEnable, writeClmEnable, "clm_enable"),
    CLM(readFgFreqsThreshold, writeFgFreqsThreshold, "fg_freqs_threshold"),
    CLM(readClmHighLoadAll, writeClmHighLoadAll, "clm_highload_all"),
    CLM(readClmHighLoadGrp, writeClmHighLoadGrp, "clm_highload_grp"),
    CLM(readClmLowLoadGrp, writeClmLowLoadGrp, "clm_lowload_grp"),
    CLM(getClmMuxSwitch, setClmMuxSwitch, "clm_mux_switch"),
    reader("getClmThreshold0", call(&Performance::getClmThreshold, 0), JANK "bg_dstat_percent"),
    writer("setClmThreshold0", call(&Performance::setClmThreshold, kValue, 0),
           JANK "bg_dstat_percent"),
    reader("getClmThreshold1", call(&Performance::getClmThreshold, 1), JANK "clm_report_threshold"),
    writer("setClmThreshold1", call(&Performance::setClmThreshold, kValue, 1),
           JANK "clm_report_threshold"),
    // Another selector names no node; an empty value is a write of nothing, which is no failure.
    row("getClmThreshold2", call(&Performance::getClmThreshold, 2), JANK "bg_dstat_percent",
        "30\n", {kOpenError, {}}, {kOpenError, {}}),
    row("setClmThreshold2", call(&Performance::setClmThreshold, kValue, -1),
        JANK "bg_dstat_percent", "30\n", {"", {kNoPath}}, {"", {kNoPath}}),
    row("writeClmEmpty", call(&Performance::writeClmHighLoadAll, std::string()),
        JANK "clm_highload_all", "85\n", {"", {}}, {"", {kNoNode}}),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(JankNodes, kRows);

using JankVersionTest = NodeRootTest;

TEST_F(JankVersionTest, KeepsTheFirstNonEmptyLine) {
    auto service = makeService("5.15.94");
    const std::pair<const char*, const char*> kReads[] = {{nullptr, "cannot access jank version"},
                                                          {"\nv3\n", ""},
                                                          {"v3.2\n", "v3.2"},
                                                          {"v4\n", "v3.2"}};
    std::string version;
    for (const auto& [content, expected] : kReads) {
        if (content != nullptr) writeNode(JANK "version", content);
        ASSERT_TRUE(service->readJankVersion(&version).isOk());
        EXPECT_EQ(version, expected);
    }
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
