// Swap tuning: the nandswap control files and the hybrid-swap zram and memory-cgroup parameters.

#define LOG_TAG "PerformanceService"

#include "SwapTuning.h"

#include <android-base/file.h>
#include <android-base/stringprintf.h>
#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

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

std::string SwapTuning::readNandswapProc(const std::string& name) const {
    const std::string_view* known = findName(kNandswapReadable, name);
    if (known == nullptr) {
        ALOGE("nandswap: no such proc %s", name.c_str());
        return "null, no such proc";
    }
    const std::string path = std::string(kNandswapDir).append(*known);
    return mNodes.readWholeNode(path.c_str(), {LineOpen::kRead, "null, open proc fail"},
                                [](const char* p, int) { ALOGE("nandswap: open %s fail", p); });
}

int32_t SwapTuning::writeNandswapProc(const std::string& name, const std::string& value) const {
    const std::string_view* known = findName(kNandswapWritable, name);
    if (known == nullptr) {
        ALOGE("nandswap: no such proc %s", name.c_str());
        return -3;
    }
    const std::string path = std::string(kNandswapDir).append(*known);
    // Read-write without truncation, as the control files expect; a refused write goes unnoticed.
    android::base::unique_fd fd(mNodes.open(path.c_str(), O_RDWR | O_CLOEXEC));
    if (fd < 0) {
        ALOGE("nandswap: open %s fail", path.c_str());
        return -22;
    }
    const std::string line = value + "\n";
    (void)TEMP_FAILURE_RETRY(mNodes.write(fd, line.data(), line.size()));
    return 0;
}

std::string SwapTuning::hybridswapGlobalFile(int32_t action) const {
    if (action >= 0 && action < kFirstMemcgAction)
        return std::string(kZramDir) + kGlobalActions[action];
    if (action >= kFirstMemcgAction && action < kGlobalActionCount) {
        return mMemcgRootPath + kGlobalActions[action];
    }
    ALOGE("action %d is invalid", action);
    return "";
}

void SwapTuning::get_memcg_para_file(int32_t action, const std::string& cgroup,
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
        *path = std::string(kLegacyMemcgDir) + "apps/" + Component("uid_" + cgroup) + "/" + name;
    }
}

void SwapTuning::get_memcg_para_file_dfl(int32_t action, const std::string& cgroup,
                                         std::string* path) const {
    path->clear();
    const char* name = kGroupActions[action];
    if (cgroup == "/") {
        *path = mMemcgRootPath + name;
    } else if (cgroup == "apps" || cgroup == "system") {
        // The unified hierarchy has no such groups.
    } else if (isApplicationCgroup(cgroup)) {
        *path = std::string(kUnifiedAppDir) + Component(cgroup) + "/" + name;
    }
}

int SwapTuning::hybridswapWrite(int32_t action, const std::string& path,
                                const std::string& value) const {
    if (path.empty()) {
        ALOGE("action %d, can not find file node", action);
        return -1;
    }
    android::base::unique_fd fd(mNodes.open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (fd < 0) {
        ALOGE("open file %s failed, %s", path.c_str(), strerror(errno));
        return -1;
    }
    const ssize_t written = TEMP_FAILURE_RETRY(mNodes.write(fd, value.data(), value.size()));
    if (written != static_cast<ssize_t>(value.size())) {
        ALOGE("write file %s val %s failed, %s", path.c_str(), value.c_str(), strerror(errno));
        return -1;
    }
    return 0;
}

std::string SwapTuning::hybridswapRead(int32_t action, const std::string& path,
                                       const std::string& invalidText) const {
    // The failure text is printed into the same buffer, so it is bounded alike.
    const std::string bounded = invalidText.substr(0, kParameterBuffer - 1);
    if (path.empty()) {
        ALOGE("action %d, can not find file node", action);
        return bounded;
    }
    std::string text;
    if (!mNodes.readSmallNode(path, &text, kParameterBuffer)) {
        ALOGE("open file %s failed, %s", path.c_str(), strerror(errno));
        return bounded;
    }
    return text;
}

int32_t SwapTuning::hybridswap_zram_para_write(int32_t action, const std::string& value) const {
    if (action > kWatermarkAction) {
        ALOGD("%s:%d\n", "writeMMParameters", action);
        return -22;
    }
    if (action == kWatermarkAction) {
        ALOGD("%s:%d\n", "writeMMParameters", action);
        // The platform's whole-file write, which does not follow a symlink. A failed write
        // answers -1 like every other failed write here.
        return android::base::WriteStringToFile(value, mNodes.path(kWatermarkScaleFactor)) ? 0 : -1;
    }
    if (action >= 0 && action < kGlobalActionCount && (kReadOnlyActions >> action) & 1) {
        // "can not be write" is matched by log readers as it stands.
        ALOGE("action %d can not be write", action);
        return -1;
    }
    return hybridswapWrite(action, hybridswapGlobalFile(action), value);
}

std::string SwapTuning::hybridswap_zram_para_read(int32_t action) const {
    if (action >= kWatermarkAction) {
        ALOGD("%s:%d\n", "readMMParameters", action);
        std::string content;
        if (action == kWatermarkAction &&
            android::base::ReadFileToString(mNodes.path(kWatermarkScaleFactor), &content)) {
            return content;
        }
        return "-ERROR";
    }
    return hybridswapRead(action, hybridswapGlobalFile(action),
                          StringPrintf("Invalid action %d!!", action));
}

int32_t SwapTuning::hybridswap_memcg_para_write(int32_t action, const std::string& cgroup,
                                                const std::string& value) const {
    std::string path;
    get_memcg_para_file(action, cgroup, &path);
    return hybridswapWrite(action, path, value);
}

std::string SwapTuning::hybridswap_memcg_para_read(int32_t action, const std::string& cgroup) const {
    std::string path;
    get_memcg_para_file(action, cgroup, &path);
    return hybridswapRead(action, path,
                          StringPrintf("Invalid action %d memcg %s!!", action, cgroup.c_str()));
}

}  // namespace aidl::vendor::vyren::hardware::performance
