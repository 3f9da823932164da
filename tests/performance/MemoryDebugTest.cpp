// Leak-detection switches, tunables and reports, on both node trees.

#include <android/log.h>

#include <filesystem>
#include <functional>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

constexpr char kTag[] = "PerformanceService";
constexpr char kOlder[] = "/proc/vyren_healthinfo/";
constexpr char kNewer[] = "/proc/vyren_mem/memleak_detect/";

// Kernels on either side of the node-tree move, with the directory each one uses.
struct Tree {
    const char* release;
    const char* dir;
};
constexpr Tree kTrees[] = {{"5.4.233", kOlder}, {"5.15.78", kNewer}};

class MemoryDebugTest : public NodeRootTest {
  protected:
    std::shared_ptr<Performance> serviceOn(const Tree& tree) {
        auto service = makeService(tree.release);
        clearLogs();
        return service;
    }
};

using testing::call;
using testing::Debug;
using testing::Error;
using testing::OperationRow;

constexpr NodePair kKmallocSwitch = {"/proc/vyren_healthinfo/kmalloc_debug_enable",
                                     "/proc/vyren_mem/memleak_detect/kmalloc_debug_enable"};
constexpr NodePair kVmallocSwitch = {"/proc/vyren_healthinfo/vmalloc_debug_enable",
                                     "/proc/vyren_mem/memleak_detect/vmalloc_debug_enable"};

// A refused switch write goes unnoticed.
const OperationRow kSwitchRows[] = {
    {"enableKmallocDebug",
     call(&Performance::enableKmallocDebug),
     kKmallocSwitch,
     testing::Kernels::kAll,
     "stale",
     "1",
     {"0", {Debug("enable Kmalloc debug")}},
     {"-1", {Error("Failed to enable {node} (2): No such file or directory")}},
     testing::Outcome{"0", {Debug("enable Kmalloc debug")}}},
    {"disableKmallocDebug",
     call(&Performance::disableKmallocDebug),
     kKmallocSwitch,
     testing::Kernels::kAll,
     "stale",
     "0",
     {"0", {Debug("disable Kmalloc debug")}},
     {"-1", {Error("Failed to disable {node} (2): No such file or directory")}},
     testing::Outcome{"0", {Debug("disable Kmalloc debug")}}},
    {"enableVmallocDebug",
     call(&Performance::enableVmallocDebug),
     kVmallocSwitch,
     testing::Kernels::kAll,
     "stale",
     "1",
     {"0", {Debug("eable Vmalloc debug")}},
     {"-1", {Error("Failed to eable {node} (2): No such file or directory")}},
     testing::Outcome{"0", {Debug("eable Vmalloc debug")}}},
    {"disableVmallocDebug",
     call(&Performance::disableVmallocDebug),
     kVmallocSwitch,
     testing::Kernels::kAll,
     "stale",
     "0",
     {"0", {Debug("disable Vmalloc debug")}},
     {"-1", {Error("Failed to disable {node} (2): No such file or directory")}},
     testing::Outcome{"0", {Debug("disable Vmalloc debug")}}},
};
INSTANTIATE_OPERATION_ROWS(LeakDetectionSwitches, kSwitchRows);

using ValueOp = std::function<::ndk::ScopedAStatus(Performance&, int32_t, int32_t*)>;

struct ValueCase {
    const char* name;
    ValueOp op;
    const char* node;
    const char* message;
    bool zeroIsFailure;
};

const ValueCase kValueWrites[] = {
    {"writeKmallocDebugCreate", &Performance::writeKmallocDebugCreate, "kmalloc_debug_create",
     "enable WriteKmallocDebugCreate=%d", true},
    {"writeMemleakDetectThread", &Performance::writeMemleakDetectThread, "memleak_detect_thread",
     "enable writeMemleakDetectThread=%d", true},
    {"writeVaFeature", &Performance::writeVaFeature, "va_feature", "enable writeVaFeature=%d",
     false},
};

std::string withValue(const char* pattern, int32_t value) {
    std::string text = pattern;
    return text.replace(text.find("%d"), 2, std::to_string(value));
}

TEST_F(MemoryDebugTest, ValueWritesReturnBytesWrittenWithoutNewline) {
    for (const auto& tree : kTrees) {
        for (const auto& c : kValueWrites) {
            for (const int32_t value : {5, 10, -1, INT32_MIN}) {
                SCOPED_TRACE(std::string(tree.release) + " " + c.name + " " + std::to_string(value));
                const std::string node = std::string(tree.dir) + c.node;
                writeNode(node, "");
                auto service = serviceOn(tree);
                int32_t result = 99;
                ASSERT_TRUE(c.op(*service, value, &result).isOk());
                EXPECT_EQ(result, static_cast<int32_t>(std::to_string(value).size()));
                EXPECT_EQ(readNode(node), std::to_string(value));
                EXPECT_EQ(
                    logs(),
                    (std::vector<LogLine>{{kTag, ANDROID_LOG_DEBUG, withValue(c.message, value)}}));
            }
        }
    }
}

TEST_F(MemoryDebugTest, ValueWritesReportMissingAndRefusingNodes) {
    for (const auto& tree : kTrees) {
        for (const auto& c : kValueWrites) {
            SCOPED_TRACE(std::string(tree.release) + " " + c.name);
            const std::string node = std::string(tree.dir) + c.node;
            auto service = serviceOn(tree);
            int32_t result = 99;
            ASSERT_TRUE(c.op(*service, 7, &result).isOk());
            EXPECT_EQ(result, -2);
            EXPECT_EQ(logs(), (std::vector<LogLine>{
                                  {kTag, ANDROID_LOG_ERROR,
                                   "Failed to open " + node + " (2): No such file or directory"}}));

            makeRefusingNode(node);
            clearLogs();
            ASSERT_TRUE(c.op(*service, 7, &result).isOk());
            EXPECT_EQ(result, -1);
            EXPECT_EQ(logs(), (std::vector<LogLine>{
                                  {kTag, ANDROID_LOG_ERROR,
                                   "Failed to write " + node + " (28): No space left on device"},
                                  {kTag, ANDROID_LOG_DEBUG, withValue(c.message, 7)}}));
            std::filesystem::remove_all(path("/proc"));
        }
    }
}

TEST_F(MemoryDebugTest, TypedCreationUsesOnlyTheNewerTree) {
    const std::string node = std::string(kNewer) + "kmalloc_debug_create";
    writeNode(node, "");
    // An older kernel still addresses the newer node; with no such node there it cannot open.
    auto older = serviceOn(kTrees[0]);
    writeNode(std::string(kOlder) + "kmalloc_debug_create", "");
    std::filesystem::remove_all(path("/proc/vyren_mem"));
    int32_t result = 99;
    ASSERT_TRUE(older->writeKmallocDebugCreateWithType("kmalloc-64", &result).isOk());
    EXPECT_EQ(result, -2);
    EXPECT_EQ(readNode(std::string(kOlder) + "kmalloc_debug_create"), "");

    writeNode(node, "");
    auto newer = serviceOn(kTrees[1]);
    ASSERT_TRUE(newer->writeKmallocDebugCreateWithType("kmalloc-64 %n%s", &result).isOk());
    EXPECT_EQ(result, 15);
    EXPECT_EQ(readNode(node), "kmalloc-64 %n%s");
    EXPECT_EQ(logs(), (std::vector<LogLine>{{kTag, ANDROID_LOG_DEBUG,
                                             "enable WriteKmallocDebugCreate=kmalloc-64 %n%s"}}));

    // Nothing written counts as a failed write, and the message still follows.
    clearLogs();
    ASSERT_TRUE(newer->writeKmallocDebugCreateWithType("", &result).isOk());
    EXPECT_EQ(result, 0);
    EXPECT_EQ(logs(), (std::vector<LogLine>{
                          {kTag, ANDROID_LOG_ERROR, "Failed to write " + node + " (0): Success"},
                          {kTag, ANDROID_LOG_DEBUG, "enable WriteKmallocDebugCreate="}}));
}

using StringOp = std::function<::ndk::ScopedAStatus(Performance&, std::string*)>;

struct ReportCase {
    const char* name;
    StringOp op;
    const char* olderNode;
    size_t olderSize;
    const char* newerNode;
    size_t newerSize;
};

const ReportCase kReports[] = {
    {"readKmallocDebugCreate", &Performance::readKmallocDebugCreate, "kmalloc_debug_create", 4096,
     "kmalloc_debug_create", 4096},
    {"getKmallocOrigin", &Performance::getKmallocOrigin, "kmalloc_origin", 4096, "kmalloc_origin",
     4096},
    {"getKmallocUsed", &Performance::getKmallocUsed, "kmalloc_used", 512, "kmalloc_used", 512},
    {"getKmallocDebug", &Performance::getKmallocDebug, "kmalloc_debug", 4096, "kmalloc_debug", 4096},
    {"readMemleakDetectThread", &Performance::readMemleakDetectThread, "memleak_detect_thread", 32,
     "memleak_detect_thread", 32},
    {"readVaFeature", &Performance::readVaFeature, "va_feature", 32, "va_feature", 32},
    {"getVmallocDebug", &Performance::getVmallocDebug, "vmalloc_debug", 4096, "stack_hash", 524288},
    {"getVmallocUsed", &Performance::getVmallocUsed, "vmalloc_used", 128, "vmalloc_used", 128},
    {"getVmallocHashCal", &Performance::getVmallocHashCal, "vmalloc_hash_cal", 128,
     "vmalloc_hash_cal", 128},
};

std::string patterned(size_t size) {
    std::string text;
    for (size_t i = 0; i < size; ++i) text += static_cast<char>('a' + i % 26);
    return text;
}

TEST_F(MemoryDebugTest, ReportsAreBoundedByTheirBuffer) {
    for (const auto& tree : kTrees) {
        for (const auto& c : kReports) {
            SCOPED_TRACE(std::string(tree.release) + " " + c.name);
            const bool newer = tree.dir == kNewer;
            const std::string node = std::string(tree.dir) + (newer ? c.newerNode : c.olderNode);
            const size_t size = newer ? c.newerSize : c.olderSize;
            auto service = serviceOn(tree);
            std::string result = "stale";

            writeNode(node, patterned(size + 100));
            ASSERT_TRUE(c.op(*service, &result).isOk());
            EXPECT_EQ(result, patterned(size));

            writeNode(node, "line one\nline two\n");
            ASSERT_TRUE(c.op(*service, &result).isOk());
            EXPECT_EQ(result, "line one\nline two\n");

            writeNode(node, std::string("before\0after", 12));
            ASSERT_TRUE(c.op(*service, &result).isOk());
            EXPECT_EQ(result, "before");
            EXPECT_TRUE(logs().empty());

            std::filesystem::remove_all(path("/proc"));
            ASSERT_TRUE(c.op(*service, &result).isOk());
            EXPECT_EQ(result, "");
            EXPECT_EQ(logs(),
                      (std::vector<LogLine>{{kTag, ANDROID_LOG_DEBUG,
                                             "open " + node +
                                                 " failed! err:No such file or directory, Linux "
                                                 "version " +
                                                 std::string(tree.release)}}));
        }
    }
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
