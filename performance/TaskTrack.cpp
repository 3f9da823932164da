// Jank task tracking: the few processes the kernel's jank monitor follows closely, sorted into
// groups. The service keeps its own record of them (the task-track table), turns additions,
// removals and group clears into the commands the task_track node takes, keeps to the kernel's
// limit of tracked pids, and reads the kernel's per-task reports back.

#define LOG_TAG "PerformanceService"

#include "TaskTrack.h"

#include <android-base/stringprintf.h>
#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>

namespace aidl::vendor::vyren::hardware::performance {

using ::android::base::StringAppendF;

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

constexpr WholeNodeRead kReportRead = {LineOpen::kReadWrite, kOpenFileError, "Task-data:", ';'};
constexpr char kNoReport[] = "cannot access task track path";
constexpr WholeNodeRead kSwitchRead = {LineOpen::kReadWrite, ""};

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

void appendRemoval(std::string* command, int32_t pid) {
    if (!command->empty()) command->push_back(' ');
    command->append("-").append(std::to_string(pid));
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

// Logs the table: each group's number and pids, then " | ".
void TaskTrack::printTaskInfo() const {
    std::string text;
    std::lock_guard<std::mutex> lock(mLock);
    for (const auto& [group, pids] : mTable) {
        text += std::to_string(static_cast<int32_t>(group));
        for (const int32_t pid : pids) text.append(" ").append(std::to_string(pid));
        text += " | ";
    }
    ALOGI("Jank task map: %s", text.c_str());
}

size_t TaskTrack::trackedCount() const {
    size_t total = 0;
    for (const auto& entry : mTable) total += entry.second.size();
    return total;
}

size_t TaskTrack::groupSize(TaskGroup group) const {
    const auto it = mTable.find(group);
    return it == mTable.end() ? 0 : it->second.size();
}

bool TaskTrack::isTracked(TaskGroup group, int32_t pid) const {
    const auto it = mTable.find(group);
    return it != mTable.end() &&
           std::find(it->second.begin(), it->second.end(), pid) != it->second.end();
}

// Keeps only the pids the kernel still reports, each group in its order.
void TaskTrack::keepOnly(const std::vector<int32_t>& live) {
    for (auto& entry : mTable) {
        auto& pids = entry.second;
        pids.erase(std::remove_if(pids.begin(), pids.end(),
                                  [&](int32_t pid) {
                                      return std::find(live.begin(), live.end(), pid) == live.end();
                                  }),
                   pids.end());
    }
}

// The command that adds pid to group. With clear it first removes the group's other pids, and
// sends only those removals when the pid is in the group already.
std::string TaskTrack::addCommand(TaskGroup group, int32_t pid, bool clear) const {
    const auto it = mTable.find(group);
    if (!clear || it == mTable.end()) return std::to_string(pid);
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

void TaskTrack::writeJankTaskTrackEnable(bool enable) {
    const char value = enable ? '1' : '0';
    const int written = enable ? mNodes.writeOnce(kTaskTrackEnable, std::string_view(&value, 1),
                                                  NODE_ERROR_LOG("Failed to enable %s (%d): %s"))
                               : mNodes.writeOnce(kTaskTrackEnable, std::string_view(&value, 1),
                                                  NODE_ERROR_LOG("Failed to disable %s (%d): %s"));
    if (written == -2) return;
    if (written >= 0 && enable) {
        mEnabled = true;
    } else if (written >= 0) {
        // Cleared under the lock, with the table, so no add records a pid after the disable.
        std::lock_guard<std::mutex> lock(mLock);
        mTable.clear();
        mEnabled = false;
    }
    if (mDebug) printTaskInfo();
}

bool TaskTrack::isJankTaskTrackEnable() const {
    const std::string state = mNodes.readWholeNode(kTaskTrackEnable, kSwitchRead, LogOpenFailure);
    return !state.empty() && state[0] == '1';
}

int32_t TaskTrack::addTaskTrackPid(int32_t group, int32_t pid, bool clear) {
    if (mDebug) {
        ALOGI("jank enter addTaskTrackPid with group:%d pid:%d clear:%d", group, pid, clear ? 1 : 0);
        printTaskInfo();
    }
    if (!validTask(group, pid, mDebug) || !mEnabled) return -1;
    // From here on the caller cannot tell an added pid from a refused one or a failed write.
    const auto key = static_cast<TaskGroup>(group);
    if (!clear) {
        std::lock_guard<std::mutex> lock(mLock);
        if (isTracked(key, pid)) return 0;
    }

    // The lock is taken and released step by step and not held across the command's write, so
    // two concurrent adds may both pass this limit.
    size_t total;
    {
        std::lock_guard<std::mutex> lock(mLock);
        total = trackedCount();
    }
    const auto remaining = [&] {
        if (!clear) return total;
        std::lock_guard<std::mutex> lock(mLock);
        return without(total, groupSize(key));
    };
    if (remaining() >= kMaxTracked) {
        // Forget the pids the kernel no longer reports.
        {
            std::lock_guard<std::mutex> lock(mLock);
            std::vector<int32_t> live;
            (void)mNodes.forEachLine(kTaskTrack, LineOpen::kReadWrite, [&](std::string_view line) {
                if (const auto reported = sectionPid(line)) live.push_back(*reported);
            });
            if (!live.empty()) keepOnly(live);
        }
        // Without clear the count from before the prune decides: the places it frees go to the
        // next call.
        if (remaining() >= kMaxTracked) {
            ALOGE("Cannot add more task, current size %zu for %d", total, pid);
            return 0;
        }
    }

    std::string command;
    {
        std::lock_guard<std::mutex> lock(mLock);
        command = addCommand(key, pid, clear);
    }
    if (command.empty()) return 0;
    const int written = mNodes.writeOnce(kTaskTrack, command, nullptr);
    if (written == -2) return 0;
    if (written < 0) {
        logRefusedCommand(command);
        if (mDebug) printTaskInfo();
        return 0;
    }
    if (mDebug) ALOGI("Success add jank task (%s)", command.c_str());
    {
        std::lock_guard<std::mutex> lock(mLock);
        auto& pids = mTable[key];
        if (clear) pids.clear();
        pids.push_back(pid);
    }
    if (mDebug) printTaskInfo();
    return 0;
}

void TaskTrack::removeTaskTrackPid(int32_t group, int32_t pid) {
    ALOGE("jank enter removeTaskTrackPid with group:%d pid:%d", group, pid);
    if (!validTask(group, pid, mDebug)) return;
    const auto key = static_cast<TaskGroup>(group);
    {
        std::lock_guard<std::mutex> lock(mLock);
        if (!isTracked(key, pid)) return;
    }

    // The kernel takes a removal as "-" and the pid's low byte, not its decimal text.
    const std::string command = {'-', static_cast<char>(pid)};
    const int written = mNodes.writeOnce(kTaskTrack, command, nullptr);
    if (written == -2) return;
    if (written < 0) {
        logRefusedCommand(command);
        return;
    }
    std::lock_guard<std::mutex> lock(mLock);
    const auto it = mTable.find(key);
    if (it == mTable.end()) return;
    auto& pids = it->second;
    pids.erase(std::remove(pids.begin(), pids.end(), pid), pids.end());
}

void TaskTrack::clearTaskTrackGroup(int32_t group) {
    if (!validGroup(group, mDebug)) return;
    // Held across the write, so the group cannot change between the command and the record.
    std::lock_guard<std::mutex> lock(mLock);
    const auto it = mTable.find(static_cast<TaskGroup>(group));
    if (it == mTable.end() || it->second.empty()) return;
    std::string command;
    for (const int32_t pid : it->second) appendRemoval(&command, pid);
    const int written = mNodes.writeOnce(kTaskTrack, command, nullptr);
    if (written == -2) return;
    if (written < 0) {
        logRefusedCommand(command);
        return;
    }
    // The group stays in the table, empty.
    it->second.clear();
    if (mDebug) ALOGI("Success clear jank group (%s)", command.c_str());
}

std::string TaskTrack::readJankTaskTrack() const {
    return mNodes.readWholeNode(kTaskTrack, kReportRead);
}

std::string TaskTrack::readJankTaskTrackByPid(int32_t pid) const {
    std::string report = kReportRead.prefix;
    if (!mNodes.forEachLine(kTaskTrack, LineOpen::kReadWrite,
                            sectionReader({sectionKey(pid)}, true, &report))) {
        report = kNoReport;
    }
    return report;
}

std::string TaskTrack::readUxTaskTrack(int32_t firstPid, int32_t secondPid) const {
    std::string report = kReportRead.prefix;
    if (!mNodes.forEachLine(
            kTaskTrack, LineOpen::kReadWrite,
            sectionReader({sectionKey(firstPid), sectionKey(secondPid)}, false, &report))) {
        report = kNoReport;
    }
    return report;
}

std::optional<TaskTrack::Table> TaskTrack::trackedPids() const {
    // The lock is held across node writes; never wait for it here.
    if (!mLock.try_lock()) return std::nullopt;
    std::lock_guard<std::mutex> lock(mLock, std::adopt_lock);
    return mTable;
}

void TaskTrack::dump(std::string* out) const {
    StringAppendF(out, "task tracking: %s\n", mEnabled ? "enabled" : "disabled");
    const std::optional<Table> table = trackedPids();
    if (!table) {
        *out += "task-track table: (busy)\n";
        return;
    }
    if (table->empty()) {
        *out += "task-track table: (empty)\n";
        return;
    }
    *out += "task-track table:\n";
    for (const auto& [group, pids] : *table) {
        StringAppendF(out, "  group %d:", static_cast<int32_t>(group));
        for (const int32_t pid : pids) StringAppendF(out, " %d", pid);
        *out += "\n";
    }
}

}  // namespace aidl::vendor::vyren::hardware::performance
