// The jank monitor: its readers and CLM writers as operation-nodes rows, and task tracking as
// call sequences against the task_track node.

#include <android-base/properties.h>

#include <filesystem>
#include <thread>
#include <tuple>

#include "OperationNodes.h"
#include "ProcessTables.h"

#define JANK "/proc/jank_info/cpu_jank_info/"
// A CLM node's reader and writer.
#define CLM(read, write, node) reader(OP(read), JANK node), writer(OP(write, "90"), JANK node)

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using P = Performance;
using testing::call, testing::Call, testing::Error, testing::Info, testing::kUnchanged,
    testing::OperationRow, testing::Outcome;
using Table = std::map<TaskGroup, std::vector<int32_t>>;

constexpr char kOpenError[] = "NULL, OPEN FILE ERROR...";
constexpr char kTrack[] = JANK "task_track", kNoReport[] = "cannot access task track path";
const LogLine kNoNode = Error("Failed to open {node} (2): No such file or directory");
const LogLine kNoPath = Error("Failed to open  (2): No such file or directory");
const LogLine kQxtr =
    Error("DEBUG QXTR: open jank file {node} : {node} failed, No such file or directory");

OperationRow row(const char* name, Call c, const char* node, const char* content, Outcome present,
                 Outcome absent) {
    return testing::Row(name, std::move(c), node, content, kUnchanged, present, absent);
}
// A last line without its newline is read with one.
OperationRow reader(const char* name, Call c, const char* node, std::vector<LogLine> absent = {}) {
    return row(name, c, node, "10 20\n30", {"10 20\n30\n", {}}, {kOpenError, absent});
}
// A write does not truncate the node; a refused one is logged in the words of a failed open.
OperationRow writer(const char* name, Call c, const char* node) {
    const LogLine full = Error("Failed to open {node} (28): No space left on device");
    return testing::Row(name, c, node, "85\n", "90\n", {"", {}}, {"", {kNoNode}},
                        Outcome{"", {full}});
}

// Idle lines are dropped and sleeping ones shortened in a one-task summary.
constexpr char kReport[] =
    "x\nPID: 120 (a)\n0 0 0 0 0 0 0 0\n0 0 128 0 0 0 0 0 9\nPID: 13 (b)\n3\n"
    "PID: 12 (c)\n5";
constexpr char kSection120[] = "PID: 120 (a);0 0 0 0 0 0 0 0;0 0 128 0 0 0 0 0 9;";

// The threshold selector picks one of two nodes, and another names none; an empty value is a
// write of nothing, which is no failure.
// clang-format off
const OperationRow kRows[] = {
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
    reader("getClmThreshold0", call(&P::getClmThreshold, 0), JANK "bg_dstat_percent"),
    writer("setClmThreshold0", call(&P::setClmThreshold, "90", 0), JANK "bg_dstat_percent"),
    reader("getClmThreshold1", call(&P::getClmThreshold, 1), JANK "clm_report_threshold"),
    writer("setClmThreshold1", call(&P::setClmThreshold, "90", 1), JANK "clm_report_threshold"),
    row("getClmThreshold2", call(&P::getClmThreshold, 2), JANK "bg_dstat_percent",
        "30\n", {kOpenError, {}}, {kOpenError, {}}),
    row("setClmThreshold2", call(&P::setClmThreshold, "90", -1),
        JANK "bg_dstat_percent", "30\n", {"", {kNoPath}}, {"", {kNoPath}}),
    row("writeClmEmpty", call(&P::writeClmEnable, std::string()), JANK "clm_enable", "85\n",
        {"", {}}, {"", {kNoNode}}),
    row(OP(readJankTaskTrack), kTrack, kReport, {std::string("Task-data:x;") + kSection120 +
        "PID: 13 (b);3;PID: 12 (c);5;", {}}, {kOpenError, {}}),
    row(OP(readJankTaskTrackByPid, 12), kTrack, kReport,
        {"Task-data:PID: 120 (a);sleep;PID: 12 (c);5;", {}}, {kNoReport, {}}),
    row(OP(readUxTaskTrack, 13, 120), kTrack, kReport,
        {std::string("Task-data:") + kSection120 + "PID: 13 (b);3;", {}}, {kNoReport, {}}),
    row(OP(isJankTaskTrackEnable), JANK "task_track_enable", "1\n", {"1", {}}, {"0", {kNoNode}}),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(JankNodes, kRows);

using JankVersionTest = NodeRootServiceTest;

// An empty first line is not kept, so the next call reads the node again.
TEST_F(JankVersionTest, KeepsTheFirstNonEmptyLine) {
    for (const auto& [content, version] :
         {std::pair{"\nv3\n", ""}, {"v3.2\n", "v3.2"}, {"v4\n", "v3.2"}}) {
        writeNode(JANK "version", content);
        EXPECT_EQ(call(&P::readJankVersion)(*mService), version);
    }
}

const auto add = [](int32_t group, int32_t pid, bool clear = false) {
    return call(&P::addTaskTrackPid, group, pid, clear);
};
const auto remove = [](int32_t g, int32_t pid) { return call(&P::removeTaskTrackPid, g, pid); };
const auto clear = [](int32_t group) { return call(&P::clearTaskTrackGroup, group); };
const auto enable = [](bool on) { return call(&P::writeJankTaskTrackEnable, on); };
const LogLine kRemove300 = Error("jank enter removeTaskTrackPid with group:1 pid:300");
LogLine refused(const std::string& command) {
    return Error("Failed to write (" + command + ") to " + kTrack +
                 " (28): No space left on device");
}

// A call, what task_track receives ("" for nothing) and the call's result.
using Step = std::tuple<Call, std::string, std::string>;
struct Sequence {
    const char* name;
    std::optional<std::string> report;  // nullopt: a task_track node that refuses every write
    bool enabled;
    bool debug;
    Table before;
    std::vector<Step> steps;
    Table after;
    std::vector<LogLine> logs;
};

const TaskGroup g1 = TaskGroup::GROUP_1, g2 = TaskGroup::GROUP_2, g3 = TaskGroup::GROUP_3;
const std::string kAlive = "PID: 101 (a)\nPID: 102 (b)\n1 2\nPID: 103 (c)\nPID: 104 (d)\n";
const Table kFull = {{g1, {101, 102}}, {g2, {103}}, {g3, {104}}};
// The table as the debug log shows it once 999 has joined group 3.
const LogLine kMap = Info("Jank task map: 1 1234 5678 | 3 999 | ");
const LogLine kFullLog = Error("Cannot add more task, current size 4 for 105");

// clang-format off
const Sequence kSequences[] = {
    {"Arguments", "", true, false, {{g2, {1234}}},
     {{add(-1, 1234), "", "-1"}, {add(1, 100), "100", "0"}, {add(2, 1234), "", "0"},
      {add(3, 1234), "1234", "0"}}, {{g1, {100}}, {g2, {1234}}, {g3, {1234}}}, {}},
    {"Debug", "", true, true, {{g1, {1234, 5678}}},
     {{add(3, 999), "999", "0"}, {add(6, 999), "", "-1"}, {remove(1, 99), "", ""},
      {clear(1), "-1234 -5678", ""}}, {{g1, {}}, {g3, {999}}},
     {Info("jank enter addTaskTrackPid with group:3 pid:999 clear:0"),
      Info("Jank task map: 1 1234 5678 | "), Info("Success add jank task (999)"),
      kMap, Info("jank enter addTaskTrackPid with group:6 pid:999 clear:0"),
      kMap, Info("Invalid group (6)"), Error("jank enter removeTaskTrackPid with group:1 pid:99"),
      Info("Invalid pid (99), Minimum is (100)"), Info("Success clear jank group (-1234 -5678)")}},
    // Remove and clear work whatever the switch; only adds need it.
    {"Switch", "", false, false, {{g2, {1234, 5678}}},
     {{add(1, 1234), "", "-1"}, {clear(2), "-1234 -5678", ""}, {enable(true), "", ""},
      {add(2, 4321), "4321", "0"}, {enable(false), "", ""}, {add(2, 4321), "", "-1"}}, {}, {}},
    // The add that prunes is still refused and live pids stay; the places it frees go to the next
    // one.
    {"FullWithDeadPids", "PID: 101 (a)\n1 2\nPID: 1030 (c)\n", true, false, kFull,
     {{add(3, 105), "", "0"}, {add(3, 105), "105", "0"}}, {{g1, {101}}, {g2, {}}, {g3, {105}}},
     {kFullLog}},
    {"ClearMode", kAlive, true, false, {{g1, {101}}, {g2, {1234, 5678, 104}}},
     {{add(2, 4321, true), "-1234 -5678 -104 4321", "0"}, {add(2, 5678), "5678", "0"},
      {add(2, 5678, true), "-4321", "0"}, {add(2, 5678, true), "", "0"}},
     {{g1, {101}}, {g2, {5678}}}, {}},
    {"RemoveAndClear", "", true, false, {{g1, {300, 400}}, {g3, {1234, 5678}}},
     {{remove(1, 300), "-\x2C", ""}, {remove(1, 300), "", ""}, {clear(3), "-1234 -5678", ""},
      {clear(3), "", ""}}, {{g1, {400}}, {g3, {}}}, {kRemove300, kRemove300}},
    {"Refused", std::nullopt, true, false, {{g1, {300}}, {g2, {5678}}},
     {{add(3, 2000), "", "0"}, {remove(1, 300), "", ""}, {clear(2), "", ""}},
     {{g1, {300}}, {g2, {5678}}}, {refused("2000"), kRemove300, refused("-,"), refused("-5678")}},
};
// clang-format on

class TaskTrackTest : public NodeRootTest {
  protected:
    // The debug flag comes from the property when the service is made.
    std::shared_ptr<Performance> start(const Table& table, bool enabled, bool debug) {
        android::base::SetProperty("persist.sys.assert.panic", debug ? "true" : "false");
        writeNode(JANK "task_track_enable", "0");
        auto service = makeService("5.15.94");
        enable(enabled)(*service);
        std::lock_guard<std::mutex> lock(gTaskTrackLock);
        gTaskTrackTable = table;
        clearLogs();
        return service;
    }
};

TEST_F(TaskTrackTest, CallSequences) {
    for (const auto& sequence : kSequences) {
        SCOPED_TRACE(sequence.name);
        std::filesystem::remove_all(path(kTrack));
        if (!sequence.report) makeRefusingNode(kTrack);
        auto service = start(sequence.before, sequence.enabled, sequence.debug);
        for (const auto& [op, written, result] : sequence.steps) {
            if (sequence.report) writeNode(kTrack, *sequence.report);
            EXPECT_EQ(op(*service), result);
            if (!sequence.report) continue;
            // A command overwrites the start of the node, as a plain file models it.
            const std::string& report = *sequence.report;
            EXPECT_EQ(readNode(kTrack),
                      written + report.substr(std::min(written.size(), report.size())));
        }
        std::lock_guard<std::mutex> lock(gTaskTrackLock);
        EXPECT_EQ(gTaskTrackTable, sequence.after);
        EXPECT_EQ(logs(), sequence.logs);
    }
}

TEST_F(TaskTrackTest, ConcurrentAddRemoveClear) {
    writeNode(kTrack, kAlive);
    auto service = start({}, true, false);
    std::vector<std::thread> threads;
    for (int32_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int32_t i = 0; i < 300; ++i) {
                // Groups -1 to 6 and pids 98 to 105: some of each are invalid.
                const int32_t group = (i + t) % 8 - 1, pid = 98 + (i * 3 + t) % 8;
                add(group, pid, i % 3 == 0)(*service);
                if (i % 4 == t) remove(group, pid)(*service);
                if (i % 9 == t) clear(group)(*service);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (const auto& [group, pids] : gTaskTrackTable) {
        EXPECT_LT(static_cast<uint32_t>(group), 6u);
        for (const int32_t pid : pids) EXPECT_GE(pid, 100);
    }
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
