#pragma once

#include <string>

// Host only. A host has no vendor cgroup setup of its own, so a simulated device's controller
// paths are answered from <root>/proc/mounts. CgroupGetControllerPath is this with the root "/".
// The host entry point and tests hand it to the service in its device context.
bool HostCgroupControllerPath(const std::string& root, const std::string& cgroup_name,
                              std::string* path);
