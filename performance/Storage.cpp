// Storage features: finding the sysfs nodes of the storage device and reading or writing them.
//
// A storage feature call names its node in one of three ways, chosen by its lookup mode:
//   "2"    the HPB node `name` of the HPB directory `feature` of the logical unit that holds the
//          user-data partition (getCustDevicePath);
//   "1"    the node `feature` inside each entry of the directory `name` (getDevicePath), in
//          directory order;
//   other  the node at `name` + "/" + `feature`.
// Whatever the mode, a node is used only when its path lies under /sys/, has no ".." component,
// and still lies under /sys once every symlink is followed, and when it is not a directory.
// Anything else counts as not found, so a caller cannot reach a file outside sysfs. An HPB path
// names its node whether or not the node is there: a missing one is judged by its parent
// directory, and its open then fails.
//
// A read appends every line of every node found, without its line break. A write sends the value
// as given to the first node found and returns the bytes written.

#define LOG_TAG "PerformanceService"

#include "Storage.h"

#include <android-base/stringprintf.h>
#include <android-base/strings.h>
#include <limits.h>
#include <log/log.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

using ::android::base::StartsWith;
using ::android::base::StringAppendF;

namespace {

constexpr char kUserdataLink[] = "/dev/block/by-name/userdata";
constexpr char kUserdataLinkDir[] = "/dev/block/by-name";
// The user-data link's target is read into this many bytes: enough for any sd or dm name.
constexpr size_t kLinkTargetSize = 20;
// A SCSI disk; the letter after it is the logical unit, a for unit 0.
constexpr char kScsiDisk[] = "/dev/block/sd";
constexpr char kHpbUnitDir[] = "/sys/bus/scsi/devices/0:0:0:";
// Kinds below this are nodes of the HPB directories of the user-data unit.
constexpr int kHpbKinds = 2;

constexpr char kStorageRoot[] = "/sys";
constexpr char kByHpbUnit[] = "2";
constexpr char kByListing[] = "1";

std::string joined(const std::string& dir, const std::string& name) {
    return dir + "/" + name;
}

// A device's by-name links are absolute; a relative one (as in a copied device tree) is taken
// from the link's own directory, so "../sda34" is /dev/block/sda34.
std::string linkTarget(std::string_view target) {
    if (target.empty() || target.front() == '/') return std::string(target);
    std::string dir = kUserdataLinkDir;
    for (;;) {
        if (target.substr(0, 3) == "../") {
            const size_t slash = dir.rfind('/');
            dir.erase(slash == std::string::npos ? 0 : slash);
            target.remove_prefix(3);
        } else if (target.substr(0, 2) == "./") {
            target.remove_prefix(2);
        } else {
            return dir + "/" + std::string(target);
        }
    }
}

}  // namespace

std::vector<std::string> Storage::getDevicePath(const std::string& dir) const {
    std::vector<std::string> names;
    mNodes.forEachEntry(dir.c_str(), [&](const dirent& entry) {
        if (strcmp(entry.d_name, ".") != 0 && strcmp(entry.d_name, "..") != 0) {
            names.emplace_back(entry.d_name);
        }
        return true;
    });
    return names;
}

std::string Storage::getUfsHpbNodePath(const std::string& name, const std::string& feature) const {
    char target[kLinkTargetSize] = {};
    const ssize_t length = readlink(mNodes.path(kUserdataLink).c_str(), target, sizeof(target));
    if (length < 0) {
        const int err = errno;
        // "cant'" here and below is matched by log readers as it stands.
        ALOGE("cant' find hpb lu, getUfsHpbNodePath, ret=%d, errno=%d", static_cast<int>(length),
              err);
        return "";
    }
    const std::string device = linkTarget(std::string_view(target, length));
    const int unit = StartsWith(device, kScsiDisk) ? device.c_str()[strlen(kScsiDisk)] - 'a' : -1;
    if (unit < 0) {
        ALOGE("cant' find getUfsHpbLuSysPath lun =%d name=%s add=%s", unit, name.c_str(),
              feature.c_str());
        return "";
    }
    const std::string path = kHpbUnitDir + std::to_string(unit) + "/" + feature + "/" + name;
    ALOGE("getUfsHpbLuSysPath %s", path.c_str());
    return path;
}

std::vector<std::string> Storage::getCustDevicePath(const std::string& name,
                                                    const std::string& feature) {
    int kind;
    {
        // An unknown feature joins the map as kind 0, an HPB node.
        std::lock_guard<std::mutex> lock(mLock);
        kind = mNodeKinds[feature];
    }
    if (kind >= kHpbKinds) return {};
    std::string path = getUfsHpbNodePath(name, feature);
    if (path.empty()) return {};
    return {std::move(path)};
}

bool Storage::isStorageNode(const std::string& path, bool mayBeMissing) const {
    const std::string root = std::string(kStorageRoot) + "/";
    if (!StartsWith(path, root) || path.find('\0') != std::string::npos ||
        (path + "/").find("/../") != std::string::npos) {
        return false;
    }
    char sysfs[PATH_MAX];
    char real[PATH_MAX];
    struct stat st;
    if (realpath(mNodes.path(kStorageRoot).c_str(), sysfs) == nullptr) return false;
    const std::string inSysfs = std::string(sysfs) + "/";
    if (realpath(mNodes.path(path).c_str(), real) != nullptr) {
        return StartsWith(real, inSysfs) && stat(real, &st) == 0 && !S_ISDIR(st.st_mode);
    }
    // Only a name that is not there at all, not a link to somewhere missing, is judged by the
    // directory it would be in.
    if (!mayBeMissing || lstat(mNodes.path(path).c_str(), &st) == 0 || errno != ENOENT) {
        return false;
    }
    const std::string parent = path.substr(0, path.rfind('/'));
    return realpath(mNodes.path(parent).c_str(), real) != nullptr &&
           StartsWith(std::string(real) + "/", inSysfs) && stat(real, &st) == 0 &&
           S_ISDIR(st.st_mode);
}

std::vector<std::string> Storage::findStorageNodes(const std::string& name,
                                                   const std::string& feature,
                                                   const std::string& lookupMode) {
    std::vector<std::string> candidates;
    if (lookupMode == kByHpbUnit) {
        candidates = getCustDevicePath(name, feature);
    } else if (lookupMode == kByListing) {
        for (const auto& entry : getDevicePath(name)) {
            candidates.push_back(joined(joined(name, entry), feature));
        }
    } else {
        candidates.push_back(joined(name, feature));
    }
    std::vector<std::string> nodes;
    for (auto& candidate : candidates) {
        if (isStorageNode(candidate, lookupMode == kByHpbUnit)) {
            nodes.push_back(std::move(candidate));
        }
    }
    if (nodes.empty()) {
        const std::string wanted =
            lookupMode == kByHpbUnit ? joined(feature, name) : joined(name, feature);
        ALOGE("storage_feature: get %s fail", wanted.c_str());
    }
    return nodes;
}

std::string Storage::readStorageFeature(const std::string& name, const std::string& feature,
                                        const std::string& lookupMode) {
    const std::vector<std::string> nodes = findStorageNodes(name, feature, lookupMode);
    std::string text = nodes.empty() ? "-1" : "";
    for (const auto& node : nodes) {
        if (!mNodes.forEachLine(node.c_str(), LineOpen::kRead,
                                [&](std::string_view line) { text.append(line); })) {
            ALOGE("storage_feature: open %s fail", node.c_str());
            text = "-1";
            break;
        }
    }
    return text;
}

int32_t Storage::writeStorageFeature(const std::string& name, const std::string& feature,
                                     const std::string& lookupMode, const std::string& value) {
    const std::vector<std::string> nodes = findStorageNodes(name, feature, lookupMode);
    if (nodes.empty()) return -1;
    return mNodes.valueWrite(
        nodes.front().c_str(), value, WriteCheck::kNegative, "", LogWriteFailure,
        [](const char* path, int) { ALOGE("storage_feature: open %s fail", path); });
}

std::map<std::string, int> Storage::nodeKinds() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mNodeKinds;
}

void Storage::dump(std::string* out) const {
    *out += "storage nodes:\n";
    for (const auto& [name, kind] : nodeKinds()) {
        StringAppendF(out, "  %s: %d\n", name.c_str(), kind);
    }
}

}  // namespace aidl::vendor::vyren::hardware::performance
