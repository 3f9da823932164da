// Leak-detection switches, tunables and reports as rows of the operation-nodes table.

#include <cstdint>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::call;
using testing::Debug;
using testing::Error;
using testing::Kernels;
using testing::OperationRow;
using testing::Outcome;

constexpr char kAbsentNode[] = "(2): No such file or directory";

#define LEAK_NODES(name)                                                       \
    NodePair {                                                                 \
        "/proc/vyren_healthinfo/" name, "/proc/vyren_mem/memleak_detect/" name \
    }

// A refused switch write goes unnoticed.
OperationRow switchRow(const char* name, testing::Call op, NodePair node, const char* verb,
                       const char* message, const char* written) {
    const std::vector<LogLine> done = {Debug(message)};
    return {name,
            op,
            node,
            Kernels::kAll,
            "stale",
            written,
            {"0", done},
            {"-1", {Error(std::string("Failed to ") + verb + " {node} " + kAbsentNode)}},
            Outcome{"0", done}};
}

const OperationRow kSwitchRows[] = {
    switchRow("enableKmallocDebug", call(&Performance::enableKmallocDebug),
              LEAK_NODES("kmalloc_debug_enable"), "enable", "enable Kmalloc debug", "1"),
    switchRow("disableKmallocDebug", call(&Performance::disableKmallocDebug),
              LEAK_NODES("kmalloc_debug_enable"), "disable", "disable Kmalloc debug", "0"),
    switchRow("enableVmallocDebug", call(&Performance::enableVmallocDebug),
              LEAK_NODES("vmalloc_debug_enable"), "eable", "eable Vmalloc debug", "1"),
    switchRow("disableVmallocDebug", call(&Performance::disableVmallocDebug),
              LEAK_NODES("vmalloc_debug_enable"), "disable", "disable Vmalloc debug", "0"),
};
INSTANTIATE_OPERATION_ROWS(LeakDetectionSwitches, kSwitchRows);

// A value write puts its text over the start of the node's bytes, with no newline and no
// truncation. Writes that take no bytes are logged as failed only where zero counts as failure.
constexpr char kStale[] = "stale bytes of the node\n";

OperationRow valueRow(const char* name, testing::Call op, NodePair node, const std::string& text,
                      const std::string& message, bool zeroFails) {
    const std::string stale = kStale;
    std::vector<LogLine> noBytes = {Debug(message)};
    if (zeroFails) noBytes.insert(noBytes.begin(), Error("Failed to write {node} (0): Success"));
    return {name,
            op,
            node,
            Kernels::kAll,
            stale,
            text + stale.substr(text.size()),
            {std::to_string(text.size()), {Debug(message)}},
            {"-2", {Error(std::string("Failed to open {node} ") + kAbsentNode)}},
            Outcome{"-1",
                    {Error("Failed to write {node} (28): No space left on device"), Debug(message)}},
            Outcome{"0", noBytes}};
}

// Typed creation has a node on the newer tree only, which older kernels address as well.
constexpr NodePair kTypedCreate = {"/proc/vyren_mem/memleak_detect/kmalloc_debug_create",
                                   "/proc/vyren_mem/memleak_detect/kmalloc_debug_create"};

const OperationRow kValueRows[] = {
    valueRow("writeKmallocDebugCreate", call(&Performance::writeKmallocDebugCreate, -1),
             LEAK_NODES("kmalloc_debug_create"), "-1", "enable WriteKmallocDebugCreate=-1", true),
    valueRow("writeMemleakDetectThread", call(&Performance::writeMemleakDetectThread, 300),
             LEAK_NODES("memleak_detect_thread"), "300", "enable writeMemleakDetectThread=300",
             true),
    valueRow("writeVaFeature", call(&Performance::writeVaFeature, INT32_MIN),
             LEAK_NODES("va_feature"), "-2147483648", "enable writeVaFeature=-2147483648", false),
    valueRow("writeKmallocDebugCreateWithType",
             call(&Performance::writeKmallocDebugCreateWithType, std::string("kmalloc-64 %n%s")),
             kTypedCreate, "kmalloc-64 %n%s", "enable WriteKmallocDebugCreate=kmalloc-64 %n%s",
             true),
    {"writeKmallocDebugCreateWithType_empty",
     call(&Performance::writeKmallocDebugCreateWithType, std::string()),
     kTypedCreate,
     Kernels::kAll,
     kStale,
     std::nullopt,
     {"0", {Error("Failed to write {node} (0): Success"), Debug("enable WriteKmallocDebugCreate=")}},
     {"-2", {Error(std::string("Failed to open {node} ") + kAbsentNode)}},
     std::nullopt},
};
INSTANTIATE_OPERATION_ROWS(LeakDetectionValues, kValueRows);

// A report is the node's text up to its first NUL, cut at the buffer size of its tree.
std::string patterned(size_t size) {
    std::string text;
    for (size_t i = 0; i < size; ++i) text += static_cast<char>('a' + i % 26);
    return text;
}

OperationRow reportRow(const char* name, testing::Call op, NodePair node, Kernels kernels,
                       const std::string& content, const std::string& result) {
    return {name,
            op,
            node,
            kernels,
            content,
            std::nullopt,
            {result, {}},
            {"",
             {Debug(std::string("open {node} failed! err:No such file or directory, Linux "
                                "version {version}"))}},
            std::nullopt};
}

OperationRow reportRow(const char* name, testing::Call op, NodePair node, size_t size,
                       Kernels kernels = Kernels::kAll) {
    return reportRow(name, op, node, kernels, patterned(size + 100), patterned(size));
}
const OperationRow kReportRows[] = {
    reportRow("readKmallocDebugCreate", call(&Performance::readKmallocDebugCreate),
              LEAK_NODES("kmalloc_debug_create"), 4096),
    reportRow("getKmallocOrigin", call(&Performance::getKmallocOrigin),
              LEAK_NODES("kmalloc_origin"), 4096),
    reportRow("getKmallocUsed", call(&Performance::getKmallocUsed), LEAK_NODES("kmalloc_used"), 512),
    reportRow("getKmallocDebug", call(&Performance::getKmallocDebug), LEAK_NODES("kmalloc_debug"),
              4096),
    reportRow("readMemleakDetectThread", call(&Performance::readMemleakDetectThread),
              LEAK_NODES("memleak_detect_thread"), 32),
    reportRow("readVaFeature", call(&Performance::readVaFeature), LEAK_NODES("va_feature"), 32),
    reportRow("getVmallocDebug_older", call(&Performance::getVmallocDebug),
              LEAK_NODES("vmalloc_debug"), 4096, Kernels::kOlder),
    reportRow("getVmallocDebug_newer", call(&Performance::getVmallocDebug),
              LEAK_NODES("stack_hash"), 524288, Kernels::kNewer),
    reportRow("getVmallocUsed", call(&Performance::getVmallocUsed), LEAK_NODES("vmalloc_used"), 128),
    reportRow("getVmallocHashCal", call(&Performance::getVmallocHashCal),
              LEAK_NODES("vmalloc_hash_cal"), 128),
    // Lines come as they stand; a NUL ends the text; an empty node is an empty report.
    reportRow("getVmallocUsed_lines", call(&Performance::getVmallocUsed),
              LEAK_NODES("vmalloc_used"), Kernels::kAll, "one\ntwo\n", "one\ntwo\n"),
    reportRow("getVmallocUsed_nul", call(&Performance::getVmallocUsed), LEAK_NODES("vmalloc_used"),
              Kernels::kAll, std::string("before\0after", 12), "before"),
    reportRow("getVmallocUsed_empty", call(&Performance::getVmallocUsed),
              LEAK_NODES("vmalloc_used"), Kernels::kAll, "", ""),
};
INSTANTIATE_OPERATION_ROWS(LeakDetectionReports, kReportRows);

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
