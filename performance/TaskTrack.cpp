// Jank task tracking: the few processes the kernel's jank monitor follows closely, sorted into
// groups. The service keeps its own record of them (gTaskTrackTable), turns additions, removals
// and group clears into the commands the task_track node takes, keeps to the kernel's limit of
// tracked pids, and reads the kernel's per-task reports back.

#define LOG_TAG "PerformanceService"

#include <android/log.h>
#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "Performance.h"
#include "ProcessTables.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kTaskTrack[] = "/proc/jank_info/cpu_jank_info/task_track";
constexpr char kTaskTrackEnable[] = "/proc/jank_info/cpu_jank_info/task_track_enable";

constexpr uint32_t kGroupCount = 6;
// Lower pids belong to early kernel and init tasks, which are not tracked.
constexpr int32_t kMinPid = 100;
// The kernel follows at most this many tasks in all groups together.
constexpr size_t kMaxTracked = 4;

// In the report, each task's section starts with "PID: <pid> (<comm>)".
constexpr std::string_view kSectionStart = "PID: ";
// Report lines of a period with nothing to show, and of one spent asleep; a one-task summary
// drops the first and shortens the second to "sleep".
constexpr std::string_view kIdleLine = "0 0 0 0 0 0 0 0";
constexpr std::string_view kSleepLine = "0 0 128 0 0 0 0 0";

constexpr Performance::WholeNodeRead kReportRead = {Performance::LineOpen::kReadWrite,
                                                    kOpenFileError,
                                                    Performance::OpenFailureLog::kNone,
                                                    0,
                                                    nullptr,
                                                    "Task-data:",
                                                    ';'};
constexpr char kNoReport[] = "cannot access task track path";
constexpr Performance::WholeNodeRead kSwitchRead = {
    Performance::LineOpen::kReadWrite, "", Performance::OpenFailureLog::kPathErrno,
    ANDROID_LOG_ERROR, "Failed to open %s (%d): %s"};

// Runs f under the task-track lock, which guards every read and change of the table.
template <typename F>
auto locked(F f) {
    std::lock_guard<std::mutex> lock(gTaskTrackLock);
    return f();
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool validGroup(int32_t group, bool debug) {
    // Compared unsigned, so negative groups are out of range too.
    if (static_cast<uint32_t>(group) < kGroupCount) return true;
    if (debug) ALOGI("Invalid group (%d)", group);
    return false;
}

bool validTask(int32_t group, int32_t pid, bool debug) {
    if (!validGroup(group, debug)) return false;
    if (pid >= kMinPid) return true;
    if (debug) ALOGI("Invalid pid (%d), Minimum is (%d)", pid, kMinPid);
    return false;
}

// Logs the table: each group's number and pids, then " | ".
void printTaskInfo() {
    std::string text;
    locked([&] {
        for (const auto& [group, pids] : gTaskTrackTable) {
            text += std::to_string(static_cast<int32_t>(group));
            for (const int32_t pid : pids) text.append(" ").append(std::to_string(pid));
            text += " | ";
        }
        ALOGI("Jank task map: %s", text.c_str());
    });
}

// The following read or change the table; their callers hold the lock.

size_t trackedCount() {
    size_t total = 0;
    for (const auto& entry : gTaskTrackTable) total += entry.second.size();
    return total;
}

size_t groupSize(TaskGroup group) {
    const auto it = gTaskTrackTable.find(group);
    return it == gTaskTrackTable.end() ? 0 : it->second.size();
}

bool isTracked(TaskGroup group, int32_t pid) {
    const auto it = gTaskTrackTable.find(group);
    return it != gTaskTrackTable.end() &&
           std::find(it->second.begin(), it->second.end(), pid) != it->second.end();
}

// Keeps only the pids the kernel still reports, each group in its order.
void keepOnly(const std::vector<int32_t>& live) {
    for (auto& entry : gTaskTrackTable) {
        auto& pids = entry.second;
        pids.erase(std::remove_if(pids.begin(), pids.end(),
                                  [&](int32_t pid) {
                                      return std::find(live.begin(), live.end(), pid) == live.end();
                                  }),
                   pids.end());
    }
}

void appendRemoval(std::string* command, int32_t pid) {
    if (!command->empty()) command->push_back(' ');
    command->append("-").append(std::to_string(pid));
}

// The command that adds pid to group. With clear it first removes the group's other pids, and
// sends only those removals when the pid is in the group already.
std::string addCommand(TaskGroup group, int32_t pid, bool clear) {
    const auto it = gTaskTrackTable.find(group);
    if (!clear || it == gTaskTrackTable.end()) return std::to_string(pid);
    std::string command;
    bool present = false;
    for (const int32_t tracked : it->second) {
        if (tracked == pid) {
            present = true;
        } else {
            appendRemoval(&command, tracked);
        }
    }
    if (present) return command;
    if (!command.empty()) command.push_back(' ');
    return command + std::to_string(pid);
}

// Tracked pids left once the group's are removed; another thread may have grown the group since
// the total was taken.
size_t without(size_t total, size_t removed) {
    return removed < total ? total - removed : 0;
}

// The pid of a line that starts a task's section: the text up to " (", read as atoi reads it.
std::optional<int32_t> sectionPid(std::string_view line) {
    if (!startsWith(line, kSectionStart)) return std::nullopt;
    line.remove_prefix(kSectionStart.size());
    const std::string digits(line.substr(0, line.find(" (")));
    return static_cast<int32_t>(strtol(digits.c_str(), nullptr, 10));
}

// Collects, into out, the report sections whose "PID: " line starts with one of the keys (so the
// key of pid 12 selects pid 120 too), every line followed by ";". A summary drops the lines of
// idle periods and shortens those of sleeping ones to "sleep".
std::function<void(std::string_view)> sectionReader(std::vector<std::string> keys, bool summary,
                                                    std::string* out) {
    return [keys = std::move(keys), summary, out, selected = false](std::string_view line) mutable {
        if (startsWith(line, kSectionStart)) {
            selected = std::any_of(keys.begin(), keys.end(),
                                   [&](const std::string& key) { return startsWith(line, key); });
        }
        if (!selected) return;
        if (summary && startsWith(line, kIdleLine)) return;
        if (summary && startsWith(line, kSleepLine)) {
            out->append("sleep;");
            return;
        }
        out->append(line).push_back(';');
    };
}

std::string sectionKey(int32_t pid) {
    return std::string(kSectionStart) + std::to_string(pid);
}

// Reports a command the node refused, with the write's errno.
void logRefusedCommand(const std::string& command) {
    const int err = errno;
    ALOGE("Failed to write (%s) to %s (%d): %s", command.c_str(), kTaskTrack, err, strerror(err));
}

}  // namespace

::ndk::ScopedAStatus Performance::writeJankTaskTrackEnable(bool enable) {
    const char value = enable ? '1' : '0';
    const int written =
        writeOnce(kTaskTrackEnable, std::string_view(&value, 1),
                  enable ? "Failed to enable %s (%d): %s" : "Failed to disable %s (%d): %s");
    if (written == -2) return ::ndk::ScopedAStatus::ok();
    if (written >= 0 && enable) {
        gTaskTrackEnabled = true;
    } else if (written >= 0) {
        // Cleared under the lock, with the table, so no add records a pid after the disable.
        locked([] {
            gTaskTrackTable.clear();
            gTaskTrackEnabled = false;
        });
    }
    if (mDebug) printTaskInfo();
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::isJankTaskTrackEnable(bool* _aidl_return) {
    const std::string state = readWholeNode(kTaskTrackEnable, kSwitchRead);
    *_aidl_return = !state.empty() && state[0] == '1';
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::addTaskTrackPid(int32_t group, int32_t pid, bool clear,
                                                  int32_t* _aidl_return) {
    if (mDebug) {
        ALOGI("jank enter addTaskTrackPid with group:%d pid:%d clear:%d", group, pid, clear ? 1 : 0);
        printTaskInfo();
    }
    if (!validTask(group, pid, mDebug) || !gTaskTrackEnabled) {
        *_aidl_return = -1;
        return ::ndk::ScopedAStatus::ok();
    }
    // From here on the caller cannot tell an added pid from a refused one or a failed write.
    *_aidl_return = 0;
    const auto key = static_cast<TaskGroup>(group);
    if (!clear && locked([&] { return isTracked(key, pid); })) return ::ndk::ScopedAStatus::ok();

    // The lock is taken and released step by step and not held across the command's write, so
    // two concurrent adds may both pass this limit.
    const size_t total = locked(trackedCount);
    const auto remaining = [&] {
        return clear ? without(total, locked([&] { return groupSize(key); })) : total;
    };
    if (remaining() >= kMaxTracked) {
        // Forget the pids the kernel no longer reports.
        locked([&] {
            std::vector<int32_t> live;
            (void)forEachLine(kTaskTrack, LineOpen::kReadWrite, [&](std::string_view line) {
                if (const auto reported = sectionPid(line)) live.push_back(*reported);
            });
            if (!live.empty()) keepOnly(live);
        });
        // Without clear the count from before the prune decides: the places it frees go to the
        // next call.
        if (remaining() >= kMaxTracked) {
            ALOGE("Cannot add more task, current size %zu for %d", total, pid);
            return ::ndk::ScopedAStatus::ok();
        }
    }

    const std::string command = locked([&] { return addCommand(key, pid, clear); });
    if (command.empty()) return ::ndk::ScopedAStatus::ok();
    const int written = writeOnce(kTaskTrack, command, nullptr);
    if (written == -2) return ::ndk::ScopedAStatus::ok();
    if (written < 0) {
        logRefusedCommand(command);
        if (mDebug) printTaskInfo();
        return ::ndk::ScopedAStatus::ok();
    }
    if (mDebug) ALOGI("Success add jank task (%s)", command.c_str());
    locked([&] {
        auto& pids = gTaskTrackTable[key];
        if (clear) pids.clear();
        pids.push_back(pid);
    });
    if (mDebug) printTaskInfo();
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::removeTaskTrackPid(int32_t group, int32_t pid) {
    ALOGE("jank enter removeTaskTrackPid with group:%d pid:%d", group, pid);
    if (!validTask(group, pid, mDebug)) return ::ndk::ScopedAStatus::ok();
    const auto key = static_cast<TaskGroup>(group);
    if (!locked([&] { return isTracked(key, pid); })) return ::ndk::ScopedAStatus::ok();

    // The kernel takes a removal as "-" and the pid's low byte, not its decimal text.
    const std::string command = {'-', static_cast<char>(pid)};
    const int written = writeOnce(kTaskTrack, command, nullptr);
    if (written == -2) return ::ndk::ScopedAStatus::ok();
    if (written < 0) {
        logRefusedCommand(command);
        return ::ndk::ScopedAStatus::ok();
    }
    locked([&] {
        const auto it = gTaskTrackTable.find(key);
        if (it == gTaskTrackTable.end()) return;
        auto& pids = it->second;
        pids.erase(std::remove(pids.begin(), pids.end(), pid), pids.end());
    });
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::clearTaskTrackGroup(int32_t group) {
    if (!validGroup(group, mDebug)) return ::ndk::ScopedAStatus::ok();
    // Held across the write, so the group cannot change between the command and the record.
    std::lock_guard<std::mutex> lock(gTaskTrackLock);
    const auto it = gTaskTrackTable.find(static_cast<TaskGroup>(group));
    if (it == gTaskTrackTable.end() || it->second.empty()) return ::ndk::ScopedAStatus::ok();
    std::string command;
    for (const int32_t pid : it->second) appendRemoval(&command, pid);
    const int written = writeOnce(kTaskTrack, command, nullptr);
    if (written == -2) return ::ndk::ScopedAStatus::ok();
    if (written < 0) {
        logRefusedCommand(command);
        return ::ndk::ScopedAStatus::ok();
    }
    // The group stays in the table, empty.
    it->second.clear();
    if (mDebug) ALOGI("Success clear jank group (%s)", command.c_str());
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readJankTaskTrack(std::string* _aidl_return) {
    *_aidl_return = readWholeNode(kTaskTrack, kReportRead);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readJankTaskTrackByPid(int32_t pid, std::string* _aidl_return) {
    std::string report = kReportRead.prefix;
    if (!forEachLine(kTaskTrack, LineOpen::kReadWrite,
                     sectionReader({sectionKey(pid)}, true, &report))) {
        report = kNoReport;
    }
    *_aidl_return = std::move(report);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::readUxTaskTrack(int32_t firstPid, int32_t secondPid,
                                                  std::string* _aidl_return) {
    std::string report = kReportRead.prefix;
    if (!forEachLine(kTaskTrack, LineOpen::kReadWrite,
                     sectionReader({sectionKey(firstPid), sectionKey(secondPid)}, false, &report))) {
        report = kNoReport;
    }
    *_aidl_return = std::move(report);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
