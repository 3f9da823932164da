// The CPU load monitor's nodes: each read whole and written as given.

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using P = Performance;
using testing::call, testing::Call, testing::Error, testing::OperationRow, testing::unreached;
using testing::linesRow, testing::same;

constexpr char kEnable[] = "/proc/jank_info/cpu_jank_info/clm_enable";
constexpr char kFgFreqs[] = "/proc/jank_info/cpu_jank_info/fg_freqs_threshold";
constexpr char kHighLoadAll[] = "/proc/jank_info/cpu_jank_info/clm_highload_all";
constexpr char kHighLoadGrp[] = "/proc/jank_info/cpu_jank_info/clm_highload_grp";
constexpr char kLowLoadGrp[] = "/proc/jank_info/cpu_jank_info/clm_lowload_grp";
constexpr char kMuxSwitch[] = "/proc/jank_info/cpu_jank_info/clm_mux_switch";
constexpr char kBgDstat[] = "/proc/jank_info/cpu_jank_info/bg_dstat_percent";
constexpr char kReportThreshold[] = "/proc/jank_info/cpu_jank_info/clm_report_threshold";
const LogLine kNoNode = Error("Failed to open {node} (2): No such file or directory");

const testing::Outcome kNoText = {kOpenFileError, {}};
// A write does not truncate the node; a refused one is logged in the words of a failed open.
OperationRow writer(std::string name, Call c, const char* node) {
    return testing::row(std::move(name), std::move(c))
        .at(node)
        .holding("85\n")
        .leaves("90\n")
        .whenPresent({"", {}})
        .whenAbsent({"", {kNoNode}})
        .whenRefused({"", {Error("Failed to open {node} (28): No space left on device")}});
}

// Each node read whole, and written. The threshold selector picks one of two nodes, each shown by
// one of its two operations, and another value names none; an empty value is a write of nothing,
// which is no failure.
// clang-format off
const OperationRow kRows[] = {
    linesRow(OP(readClmEnable), same(kEnable), kNoText), writer(OP(writeClmEnable, "90"), kEnable),
    linesRow(OP(readFgFreqsThreshold), same(kFgFreqs), kNoText),
    writer(OP(writeFgFreqsThreshold, "90"), kFgFreqs),
    linesRow(OP(readClmHighLoadAll), same(kHighLoadAll), kNoText),
    writer(OP(writeClmHighLoadAll, "90"), kHighLoadAll),
    linesRow(OP(readClmHighLoadGrp), same(kHighLoadGrp), kNoText),
    writer(OP(writeClmHighLoadGrp, "90"), kHighLoadGrp),
    linesRow(OP(readClmLowLoadGrp), same(kLowLoadGrp), kNoText),
    writer(OP(writeClmLowLoadGrp, "90"), kLowLoadGrp),
    linesRow(OP(getClmMuxSwitch), same(kMuxSwitch), kNoText),
    writer(OP(setClmMuxSwitch, "90"), kMuxSwitch),
    linesRow("getClmThreshold0", call(&P::getClmThreshold, 0), same(kBgDstat), kNoText),
    writer("setClmThreshold1", call(&P::setClmThreshold, "90", 1), kReportThreshold),
    unreached("getClmThreshold2", call(&P::getClmThreshold, 2), kBgDstat, kNoText),
    unreached("setClmThreshold2", call(&P::setClmThreshold, "90", -1), kBgDstat,
              {"", {Error("Failed to open  (2): No such file or directory")}}),
    testing::row("writeClmEmpty", call(&P::writeClmEnable, std::string())).at(kEnable)
        .holding("85\n").whenPresent({"", {}}).whenAbsent({"", {kNoNode}}),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(ClmNodes, kRows);

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
