#pragma once

#include <string>

// Host only. A host has no vendor cgroup setup of its own, so controller paths are answered from
// the simulated device's <root>/proc/mounts instead. The entry point and tests set the root.
void CgroupSetHostNodeRoot(const std::string& root);
