// Swap tuning: the nandswap control files and the hybrid-swap zram and memory-cgroup parameters.

#define LOG_TAG "PerformanceService"

#include <android-base/file.h>
#include <android-base/stringprintf.h>
#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

using ::android::base::StringPrintf;

namespace {

constexpr char kNandswapDir[] = "/proc/nandswap_vnd/";
// Searched in this order; only exact names are accepted, so no other file can be reached.
constexpr std::string_view kNandswapReadable[] = {"swap_ctl", "fn_enable", "life_protect",
                                                  "stat_info"};
constexpr std::string_view kNandswapWritable[] = {"swap_ctl", "fn_enable"};

constexpr char kZramDir[] = "/sys/block/zram0/";
constexpr char kLegacyMemcgDir[] = "/dev/memcg/";
constexpr char kUnifiedAppDir[] = "/sys/fs/cgroup/uid_";
constexpr char kWatermarkScaleFactor[] = "/proc/sys/vm/watermark_scale_factor";

// Global actions 0 to 9 are zram attributes; 10 to 30 live under the memory cgroup root.
constexpr const char* kGlobalActions[] = {
    "hybridswap_enable",
    "hybridswap_core_enable",
    "hybridswap_dev_life",
    "hybridswap_loglevel",
    "hybridswap_quota_day",
    "hybridswap_swapd_pause",
    "hybridswap_zram_increase",
    "hybridswap_vmstat",
    "hybridswap_stat_snap",
    "hybridswap_report",
    "memory.avail_buffers",
    "memory.total_info_per_app",
    "memory.stored_wm_ratio",
    "memory.zram_wm_ratio",
    "memory.compress_ratio",
    "memory.swapd_pid",
    "memory.swapd_max_reclaim_size",
    "memory.area_anon_refault_threshold",
    "memory.empty_round_check_threshold",
    "memory.empty_round_skip_interval",
    "memory.max_skip_interval",
    "memory.anon_refault_snapshot_min_interval",
    "memory.swapd_memcgs_param",
    "memory.zram_critical_threshold",
    "memory.cpuload_threshold",
    "memory.reclaim_exceed_sleep_ms",
    "memory.swapd_bind",
    "memory.max_reclaimin_size_mb",
    "memory.swapd_shrink_parameter",
    "memory.active_app_info_list",
    "memory.psi",
};
constexpr int kGlobalActionCount = sizeof(kGlobalActions) / sizeof(kGlobalActions[0]);
constexpr int kFirstMemcgAction = 10;
// Statistics and reports, which the kernel only prints: actions 7, 8, 9, 29 and 30.
constexpr uint32_t kReadOnlyActions = 0x60000380;
// Beyond the tables: the vm watermark scale factor.
constexpr int kWatermarkAction = 0x10001;

// Per-group actions, inside one memory cgroup's directory.
constexpr const char* kGroupActions[] = {
    "memory.name",          "memory.swap_stat",         "memory.app_uid",
    "memory.app_score",     "memory.ub_ufs2zram_ratio", "memory.swapd_single_memcg_param",
    "memory.force_swapout", "memory.force_swapin",      "memory.force_shrink_anon",
};
constexpr int kGroupActionCount = sizeof(kGroupActions) / sizeof(kGroupActions[0]);

// One hybrid-swap read takes at most this many bytes, terminator included.
constexpr size_t kParameterBuffer = 4096;

template <size_t N>
const std::string_view* findName(const std::string_view (&names)[N], const std::string& name) {
    for (const auto& candidate : names) {
        if (candidate == name) return &candidate;
    }
    return nullptr;
}

// Application uids of every user: uid modulo 100000 in [10000, 19999]. A cgroup that is not a
// number ends the process: the conversion throws and nothing may catch it, so noexcept turns the
// throw into a deterministic termination here.
bool isApplicationCgroup(const std::string& cgroup) noexcept {
    const int uid = std::stoi(cgroup);
    const int appId = uid % 100000;
    return appId >= 10000 && appId <= 19999;
}

}  // namespace

::ndk::ScopedAStatus Performance::readNandswapProc(const std::string& name,
                                                   std::string* _aidl_return) {
    const std::string_view* known = findName(kNandswapReadable, name);
    if (known == nullptr) {
        ALOGE("nandswap: no such proc %s", name.c_str());
        *_aidl_return = "null, no such proc";
        return ::ndk::ScopedAStatus::ok();
    }
    const std::string path = std::string(kNandswapDir).append(*known);
    *_aidl_return =
        readWholeNode(path.c_str(), {LineOpen::kRead, "null, open proc fail", OpenFailureLog::kPath,
                                     ANDROID_LOG_ERROR, "nandswap: open %s fail"});
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::writeNandswapProc(const std::string& name,
                                                    const std::string& value,
                                                    int32_t* _aidl_return) {
    const std::string_view* known = findName(kNandswapWritable, name);
    if (known == nullptr) {
        ALOGE("nandswap: no such proc %s", name.c_str());
        *_aidl_return = -3;
        return ::ndk::ScopedAStatus::ok();
    }
    const std::string path = std::string(kNandswapDir).append(*known);
    // Read-write without truncation, as the control files expect; a refused write goes unnoticed.
    android::base::unique_fd fd(open(nodePath(path).c_str(), O_RDWR | O_CLOEXEC));
    if (fd < 0) {
        ALOGE("nandswap: open %s fail", path.c_str());
        *_aidl_return = -22;
        return ::ndk::ScopedAStatus::ok();
    }
    const std::string line = value + "\n";
    (void)TEMP_FAILURE_RETRY(write(fd, line.data(), line.size()));
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus::ok();
}

std::string Performance::hybridswapGlobalFile(int32_t action) const {
    if (action >= 0 && action < kFirstMemcgAction)
        return std::string(kZramDir) + kGlobalActions[action];
    if (action >= kFirstMemcgAction && action < kGlobalActionCount) {
        return mMemcgRootPath + kGlobalActions[action];
    }
    ALOGE("action %d is invalid", action);
    return "";
}

void Performance::get_memcg_para_file(int32_t action, const std::string& cgroup,
                                      std::string* path) const {
    path->clear();
    if (action < 0 || action >= kGroupActionCount) {
        ALOGE("action %d is invalid", action);
        return;
    }
    if (cgroup.empty()) {
        ALOGE("cgroup is empty");
        return;
    }
    // A root under /sys is the unified hierarchy.
    if (mMemcgRootPath.size() > 1 && mMemcgRootPath[1] == 's') {
        get_memcg_para_file_dfl(action, cgroup, path);
        return;
    }
    const char* name = kGroupActions[action];
    if (cgroup == "/") {
        *path = std::string(kLegacyMemcgDir) + name;
    } else if (cgroup == "apps" || cgroup == "system") {
        *path = std::string(kLegacyMemcgDir) + cgroup + "/" + name;
    } else if (isApplicationCgroup(cgroup)) {
        *path = std::string(kLegacyMemcgDir) + "apps/uid_" + cgroup + "/" + name;
    }
}

void Performance::get_memcg_para_file_dfl(int32_t action, const std::string& cgroup,
                                          std::string* path) const {
    path->clear();
    const char* name = kGroupActions[action];
    if (cgroup == "/") {
        *path = mMemcgRootPath + name;
    } else if (cgroup == "apps" || cgroup == "system") {
        // The unified hierarchy has no such groups.
    } else if (isApplicationCgroup(cgroup)) {
        *path = std::string(kUnifiedAppDir) + cgroup + "/" + name;
    }
}

int Performance::hybridswapWrite(int32_t action, const std::string& path, const std::string& value) {
    if (path.empty()) {
        ALOGE("action %d, can not find file node", action);
        return -1;
    }
    android::base::unique_fd fd(open(nodePath(path).c_str(), O_WRONLY | O_CLOEXEC));
    if (fd < 0) {
        ALOGE("open file %s failed, %s", path.c_str(), strerror(errno));
        return -1;
    }
    const ssize_t written = TEMP_FAILURE_RETRY(write(fd, value.data(), value.size()));
    if (written != static_cast<ssize_t>(value.size())) {
        ALOGE("write file %s val %s failed, %s", path.c_str(), value.c_str(), strerror(errno));
        return -1;
    }
    return 0;
}

std::string Performance::hybridswapRead(int32_t action, const std::string& path,
                                        const std::string& invalidText) {
    // The failure text is printed into the same buffer, so it is bounded alike.
    const std::string bounded = invalidText.substr(0, kParameterBuffer - 1);
    if (path.empty()) {
        ALOGE("action %d, can not find file node", action);
        return bounded;
    }
    std::string text;
    if (!readSmallNode(path, &text, kParameterBuffer)) {
        ALOGE("open file %s failed, %s", path.c_str(), strerror(errno));
        return bounded;
    }
    return text;
}

::ndk::ScopedAStatus Performance::hybridswap_zram_para_write(int32_t action,
                                                             const std::string& value,
                                                             int32_t* _aidl_return) {
    if (action > kWatermarkAction) {
        ALOGD("%s:%d\n", "writeMMParameters", action);
        *_aidl_return = -22;
    } else if (action == kWatermarkAction) {
        ALOGD("%s:%d\n", "writeMMParameters", action);
        // The platform's whole-file write, which does not follow a symlink. A failed write
        // answers -1 like every other failed write here.
        *_aidl_return =
            android::base::WriteStringToFile(value, nodePath(kWatermarkScaleFactor)) ? 0 : -1;
    } else if (action >= 0 && action < kGlobalActionCount && (kReadOnlyActions >> action) & 1) {
        ALOGE("action %d can not be write", action);
        *_aidl_return = -1;
    } else {
        *_aidl_return = hybridswapWrite(action, hybridswapGlobalFile(action), value);
    }
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::hybridswap_zram_para_read(int32_t action,
                                                            std::string* _aidl_return) {
    if (action >= kWatermarkAction) {
        *_aidl_return = "-ERROR";
        ALOGD("%s:%d\n", "readMMParameters", action);
        std::string content;
        if (action == kWatermarkAction &&
            android::base::ReadFileToString(nodePath(kWatermarkScaleFactor), &content)) {
            *_aidl_return = std::move(content);
        }
        return ::ndk::ScopedAStatus::ok();
    }
    *_aidl_return = hybridswapRead(action, hybridswapGlobalFile(action),
                                   StringPrintf("Invalid action %d!!", action));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::hybridswap_memcg_para_write(int32_t action,
                                                              const std::string& cgroup,
                                                              const std::string& value,
                                                              int32_t* _aidl_return) {
    std::string path;
    get_memcg_para_file(action, cgroup, &path);
    *_aidl_return = hybridswapWrite(action, path, value);
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Performance::hybridswap_memcg_para_read(int32_t action,
                                                             const std::string& cgroup,
                                                             std::string* _aidl_return) {
    std::string path;
    get_memcg_para_file(action, cgroup, &path);
    *_aidl_return = hybridswapRead(
        action, path, StringPrintf("Invalid action %d memcg %s!!", action, cgroup.c_str()));
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::vyren::hardware::performance
