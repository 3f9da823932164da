#include <android-base/strings.h>
#include <processgroup/processgroup.h>
#include <processgroup_host.h>

#include <fstream>
#include <sstream>

bool HostCgroupControllerPath(const std::string& root, const std::string& cgroup_name,
                              std::string* path) {
    std::ifstream mounts(root + "/proc/mounts");
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

bool CgroupGetControllerPath(const std::string& cgroup_name, std::string* path) {
    return HostCgroupControllerPath("", cgroup_name, path);
}
