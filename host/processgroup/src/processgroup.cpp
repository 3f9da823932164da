#include <android-base/strings.h>
#include <processgroup/processgroup.h>
#include <processgroup_host.h>

#include <fstream>
#include <mutex>
#include <sstream>

namespace {

std::mutex gRootLock;
std::string gRoot;

std::string hostRoot() {
    std::lock_guard<std::mutex> lock(gRootLock);
    return gRoot;
}

}  // namespace

void CgroupSetHostNodeRoot(const std::string& root) {
    std::lock_guard<std::mutex> lock(gRootLock);
    gRoot = root;
}

bool CgroupGetControllerPath(const std::string& cgroup_name, std::string* path) {
    std::ifstream mounts(hostRoot() + "/proc/mounts");
    std::string line;
    while (std::getline(mounts, line)) {
        // <device> <mount point> <type> <options> <dump> <pass>
        std::istringstream fields(line);
        std::string device, mountPoint, type, options;
        if (!(fields >> device >> mountPoint >> type >> options) || type != "cgroup") continue;
        for (const auto& option : android::base::Split(options, ",")) {
            if (option != cgroup_name) continue;
            if (path != nullptr) *path = mountPoint;
            return true;
        }
    }
    return false;
}
