#pragma once

// The device the service runs on, handed to it at construction: where its kernel nodes are, how
// it reaches the character devices, and where the memory cgroup controller is mounted. Nothing in
// the service reaches for any of these by itself.

#include <processgroup/processgroup.h>
#include <quilbex/util.h>

#include <functional>
#include <memory>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// The character devices (/dev/acm, /dev/quilbex) are reached through the memory-statistics
// engine's device-I/O interface.
using ::vyren::quilbex::util::DeviceIo;

struct DeviceContext {
    // Empty on a device; on a host, the simulated device tree every kernel path resolves in.
    std::string nodeRoot;
    std::shared_ptr<DeviceIo> deviceIo = DeviceIo::kernel();
    // The mount path of a cgroup controller, with CgroupGetControllerPath's meaning.
    std::function<bool(const std::string& controller, std::string* path)> cgroupControllerPath =
        CgroupGetControllerPath;
    std::shared_ptr<const NodeWriter> nodeWriter = NodeWriter::kernel();
};

}  // namespace aidl::vendor::vyren::hardware::performance
