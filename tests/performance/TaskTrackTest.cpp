// Task tracking: the kernel's task reports as operation-nodes rows, and the table of tracked pids
// as call sequences against the task_track node.

#include <filesystem>
#include <thread>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Error, testing::Info, testing::row;
using Table = TaskTrack::Table;

constexpr char kTrack[] = "/proc/jank_info/cpu_jank_info/task_track";
constexpr char kEnable[] = "/proc/jank_info/cpu_jank_info/task_track_enable";
constexpr char kNoReport[] = "cannot access task track path";

// Idle lines are dropped and sleeping ones shortened in a one-task summary.
constexpr char kReport[] =
    "x\nPID: 120 (a)\n0 0 0 0 0 0 0 0\n0 0 128 0 0 0 0 0 9\nPID: 13 (b)\n3\nPID: 12 (c)\n5";
const std::string kSection120 = "PID: 120 (a);0 0 0 0 0 0 0 0;0 0 128 0 0 0 0 0 9;";

// clang-format off
const testing::OperationRow kRows[] = {
    row(OP(readJankTaskTrack)).at(kTrack).holding(kReport).whenAbsent({kOpenFileError, {}})
        .whenPresent({"Task-data:x;" + kSection120 + "PID: 13 (b);3;PID: 12 (c);5;", {}}),
    row(OP(readJankTaskTrackByPid, 12)).at(kTrack).holding(kReport).whenAbsent({kNoReport, {}})
        .whenPresent({"Task-data:PID: 120 (a);sleep;PID: 12 (c);5;", {}}),
    row(OP(readUxTaskTrack, 13, 120)).at(kTrack).holding(kReport).whenAbsent({kNoReport, {}})
        .whenPresent({"Task-data:" + kSection120 + "PID: 13 (b);3;", {}}),
    row(OP(isJankTaskTrackEnable)).at(kEnable).holding("1\n").whenPresent({"1", {}})
        .whenAbsent({"0", {Error("Failed to open {node} (2): No such file or directory")}}),
};
// clang-format on
INSTANTIATE_OPERATION_ROWS(TaskTrackNodes, kRows);

// A call on the tracker, its result (0 for a call without one) and what task_track receives.
struct Step {
    std::function<int32_t(TaskTrack&)> call;
    int32_t result = 0;
    std::string written = "";
    Step writes(std::string bytes) { return written = std::move(bytes), *this; }
};
// clang-format off
Step add(int32_t g, int32_t pid, bool clear = false) {
    return {[=](TaskTrack& t) { return t.addTaskTrackPid(g, pid, clear); }};
}
Step reject(int32_t g, int32_t pid) { Step s = add(g, pid); s.result = -1; return s; }
Step then(std::function<void(TaskTrack&)> f) { return {[=](TaskTrack& t) { return f(t), 0; }}; }
Step remove(int32_t g, int32_t p) { return then([=](auto& t) { t.removeTaskTrackPid(g, p); }); }
Step clear(int32_t g) { return then([=](auto& t) { t.clearTaskTrackGroup(g); }); }
Step enable(bool on) { return then([=](auto& t) { t.writeJankTaskTrackEnable(on); }); }
// clang-format on

const TaskGroup g1 = TaskGroup::GROUP_1, g2 = TaskGroup::GROUP_2, g3 = TaskGroup::GROUP_3;
// The kernel's report on the tasks it still follows: 101 and 1030.
const std::string kLive = "PID: 101 (a)\n1 2\nPID: 1030 (c)\n";
const LogLine kRemove300 = Error("jank enter removeTaskTrackPid with group:1 pid:300");

// Call sequences on one tracker, told as they are made; each step returns the fixture, so that
// the test's own class may chain them.
class TaskTrackTest : public NodeRootTest {
  public:
    // A tracker made with tracking on and the table from its own adds.
    TaskTrackTest& start(const Table& table, bool debug = false) {
        TaskTrack& track = mTrack.emplace(nodes(), debug);
        writeNode(kEnable, "0");
        writeNode(kTrack, "");
        track.writeJankTaskTrackEnable(true);
        for (const auto& [group, pids] : table) {
            for (const int32_t pid : pids)
                track.addTaskTrackPid(static_cast<int32_t>(group), pid, false);
        }
        EXPECT_EQ(track.trackedPids(), table);
        clearLogs();
        return *this;
    }
    // Makes the calls in turn on a task_track node holding kLive before each, which a command
    // overwrites from its start, as a plain file models it.
    TaskTrackTest& run(const std::vector<Step>& steps) {
        for (const auto& step : steps) {
            writeNode(kTrack, kLive);
            EXPECT_EQ(step.call(*mTrack), step.result);
            EXPECT_EQ(readNode(kTrack), step.written + kLive.substr(step.written.size()));
        }
        return *this;
    }
    void leaves(const Table& table, const std::vector<LogLine>& lines = {}) {
        EXPECT_EQ(mTrack->trackedPids(), table);
        EXPECT_EQ(logs(), lines);
    }

    std::optional<TaskTrack> mTrack;
};

// Only adds need tracking on; turning it off empties the table.
TEST_F(TaskTrackTest, AddAndSwitch) {
    start({{g2, {1234}}})
        .run({reject(-1, 1234), add(1, 100).writes("100"), add(2, 1234), add(3, 1234).writes("1234"),
              enable(false), reject(2, 4321), enable(true), add(2, 4321).writes("4321")})
        .leaves({{g2, {4321}}});
}

TEST_F(TaskTrackTest, ClearAndRemove) {
    start({{g1, {300}}, {g2, {1234, 5678, 104}}})
        .run({add(2, 4321, true).writes("-1234 -5678 -104 4321"), add(2, 5678).writes("5678"),
              add(2, 5678, true).writes("-4321"), add(2, 5678, true),
              remove(1, 300).writes("-\x2C"), remove(1, 300), clear(2).writes("-5678"), clear(2)})
        .leaves({{g1, {}}, {g2, {}}}, {kRemove300, kRemove300});
}

// The add that prunes is still refused and live pids stay; the places it frees go to the next one.
TEST_F(TaskTrackTest, FullWithDeadPids) {
    start({{g1, {101, 102}}, {g2, {103}}, {g3, {104}}})
        .run({add(3, 105), add(3, 105).writes("105")})
        .leaves({{g1, {101}}, {g2, {}}, {g3, {105}}},
                {Error("Cannot add more task, current size 4 for 105")});
}

TEST_F(TaskTrackTest, DebugLogs) {
    // The table as the log shows it once 999 has joined group 3.
    const LogLine map = Info("Jank task map: 1 1234 5678 | 3 999 | ");
    start({{g1, {1234, 5678}}}, true)
        .run({add(3, 999).writes("999"), reject(6, 999), remove(1, 99),
              clear(1).writes("-1234 -5678")})
        .leaves(
            {{g1, {}}, {g3, {999}}},
            {Info("jank enter addTaskTrackPid with group:3 pid:999 clear:0"),
             Info("Jank task map: 1 1234 5678 | "), Info("Success add jank task (999)"), map,
             Info("jank enter addTaskTrackPid with group:6 pid:999 clear:0"), map,
             Info("Invalid group (6)"), Error("jank enter removeTaskTrackPid with group:1 pid:99"),
             Info("Invalid pid (99), Minimum is (100)"),
             Info("Success clear jank group (-1234 -5678)")});
}

TEST_F(TaskTrackTest, RefusedCommands) {
    start({{g1, {300}}, {g2, {5678}}});
    std::filesystem::remove(path(kTrack));
    makeRefusingNode(kTrack);
    for (const auto& step : {add(3, 2000), remove(1, 300), clear(2)}) {
        EXPECT_EQ(step.call(*mTrack), step.result);
    }
    const auto refused = [](const std::string& command) {
        return Error("Failed to write (" + command + ") to " + kTrack +
                     " (28): No space left on device");
    };
    leaves({{g1, {300}}, {g2, {5678}}},
           {refused("2000"), kRemove300, refused("-,"), refused("-5678")});
}

TEST_F(TaskTrackTest, ConcurrentAddRemoveClear) {
    TaskTrack& track = *start({}).mTrack;
    writeNode(kTrack, "PID: 101 (a)\nPID: 102 (b)\n1 2\nPID: 103 (c)\nPID: 104 (d)\n");
    const auto calls = [&](int32_t t) {
        for (int32_t i = 0; i < 300; ++i) {
            // Groups -1 to 6 and pids 98 to 105: some of each are invalid.
            const int32_t group = (i + t) % 8 - 1, pid = 98 + (i * 3 + t) % 8;
            track.addTaskTrackPid(group, pid, i % 3 == 0);
            if (i % 4 == t) track.removeTaskTrackPid(group, pid);
            if (i % 9 == t) track.clearTaskTrackGroup(group);
        }
    };
    std::thread a(calls, 0), b(calls, 1), c(calls, 2);
    calls(3);
    a.join(), b.join(), c.join();
    const Table table = *track.trackedPids();
    for (const auto& [group, pids] : table) {
        EXPECT_LT(static_cast<uint32_t>(group), 6u);
        for (const int32_t pid : pids) EXPECT_GE(pid, 100);
    }
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
