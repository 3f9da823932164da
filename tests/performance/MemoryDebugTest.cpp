// Leak detection: its switches, tunables and reports, each on the node of its kernel's tree.

#include <cstdint>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Call, testing::Debug, testing::Error, testing::Kernels, testing::OperationRow,
    testing::Outcome, testing::Paths, testing::reportRow, testing::row, testing::same,
    testing::switchRow;

// A leak-detection node, moved to its own directory in kernel 5.10.
Paths leak(const std::string& node) {
    return {"/proc/vyren_healthinfo/" + node, "/proc/vyren_mem/memleak_detect/" + node};
}

// A value write puts its text over the start of the node's bytes, with no newline and no
// truncation, and logs it after the label, by default the operation's name. Writes that take no
// bytes are logged as failed only where zero counts as failure.
const std::string kStale = "stale bytes of the node\n";
const LogLine kNoBytes = Error("Failed to write {node} (0): Success");
const LogLine kNoOpen = Error("Failed to open {node} (2): No such file or directory");

OperationRow value(std::string name, Call op, Paths node, const std::string& text, bool zeroFails,
                   const char* label = nullptr) {
    const LogLine done = Debug("enable " + (label ? label : name) + "=" + text);
    // Writing nothing takes no bytes, whatever the node would take.
    const Outcome none = {"0", zeroFails ? std::vector{kNoBytes, done} : std::vector{done}};
    OperationRow r = row(name, op).at(node).holding(kStale).whenAbsent({"-2", {kNoOpen}});
    r.leaves(text + kStale.substr(text.size())).whenTakingNoBytes(none);
    r.whenRefused({"-1", {Error("Failed to write {node} (28): No space left on device"), done}});
    return r.whenPresent(text.empty() ? none : Outcome{std::to_string(text.size()), {done}});
}

// Typed creation has a node on the newer tree only, which older kernels address as well.
constexpr NodePair kTypedCreate = same("/proc/vyren_mem/memleak_detect/kmalloc_debug_create");
constexpr char kCreate[] = "WriteKmallocDebugCreate";
const std::string kType = "kmalloc-64 %n%s";

// One row per report and buffer size, on one or both sides of the tree move.
const OperationRow kRows[] = {
    reportRow(OP(readKmallocDebugCreate), leak("kmalloc_debug_create"), 4096),
    reportRow(OP(getKmallocOrigin), leak("kmalloc_origin"), 4096),
    reportRow(OP(getKmallocUsed), leak("kmalloc_used"), 512),
    reportRow(OP(getKmallocDebug), leak("kmalloc_debug"), 4096),
    reportRow(OP(readMemleakDetectThread), leak("memleak_detect_thread"), 32),
    reportRow(OP(readVaFeature), leak("va_feature"), 32),
    reportRow("older_" OP(getVmallocDebug), leak("vmalloc_debug"), 4096).on(Kernels::kOlder),
    reportRow("newer_" OP(getVmallocDebug), leak("stack_hash"), 524288).on(Kernels::kNewer),
    reportRow(OP(getVmallocUsed), leak("vmalloc_used"), 128),
    reportRow(OP(getVmallocHashCal), leak("vmalloc_hash_cal"), 128),
    // A NUL ends the text.
    reportRow("nul_" OP(getVmallocUsed), leak("vmalloc_used"), 128)
        .holding(std::string("x\0y", 3))
        .whenPresent({"x", {}}),
    // A refused switch write goes unnoticed.
    switchRow(OP(enableKmallocDebug), leak("kmalloc_debug_enable"), "enable Kmalloc debug"),
    switchRow(OP(disableKmallocDebug), leak("kmalloc_debug_enable"), "disable Kmalloc debug"),
    switchRow(OP(enableVmallocDebug), leak("vmalloc_debug_enable"), "eable Vmalloc debug"),
    switchRow(OP(disableVmallocDebug), leak("vmalloc_debug_enable"), "disable Vmalloc debug"),
    value(OP(writeKmallocDebugCreate, -1), leak("kmalloc_debug_create"), "-1", true, kCreate),
    value(OP(writeMemleakDetectThread, 300), leak("memleak_detect_thread"), "300", true),
    value(OP(writeVaFeature, INT32_MIN), leak("va_feature"), "-2147483648", false),
    value(OP(writeKmallocDebugCreateWithType, kType), kTypedCreate, kType, true, kCreate),
    value("empty_" OP(writeKmallocDebugCreateWithType, std::string()), kTypedCreate, "", true,
          kCreate)};
INSTANTIATE_OPERATION_ROWS(LeakDetection, kRows);

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
