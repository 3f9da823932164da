#pragma once

#include <string>

// The subset of libprocessgroup the service uses, with the platform's name and semantics: the
// mount path of a cgroup controller, or false when the controller is not mounted.
bool CgroupGetControllerPath(const std::string& cgroup_name, std::string* path);
