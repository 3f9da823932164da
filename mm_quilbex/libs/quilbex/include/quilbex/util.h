#pragma once

#include <memory>
#include <string>

namespace vyren::quilbex::util {

// The memory-statistics character device.
inline constexpr char kQuilbexDevice[] = "/dev/quilbex";

// Device requests. The driver encodes neither a size nor a direction in them.
inline constexpr unsigned long kQuilbexVersionRequest = 0xFA01;  // no argument
inline constexpr unsigned long kQuilbexPidRequest = 0xFB01;      // proc_pid_ms
inline constexpr unsigned long kQuilbexSizeRequest = 0xFB02;     // proc_size_ms
inline constexpr unsigned long kQuilbexUidRequest = 0xFB03;      // proc_size_ms

// The character devices the service drives by ioctl (this engine's /dev/quilbex, and /dev/acm)
// are reached through this one interface, so that a stand-in driver can take the kernel's place
// on a host. kernel() makes the system calls themselves.
class DeviceIo {
  public:
    virtual ~DeviceIo() = default;
    // open(2): a new descriptor, or -1 with errno set.
    virtual int open(const char* path, int flags) = 0;
    // ioctl(2) with one pointer argument.
    virtual int ioctl(int fd, unsigned long request, void* arg) = 0;

    static std::shared_ptr<DeviceIo> kernel();
};
// Replaces the engine's device I/O and returns the one in use before. Call it before any query.
std::shared_ptr<DeviceIo> SetDeviceIo(std::shared_ptr<DeviceIo> io);

// Where the kernel's nodes are found: empty on a device, a simulated device tree on a host.
// Set once, before any query, and fixed afterwards.
void SetNodeRoot(std::string root);
const std::string& NodeRoot();

// The device descriptor, opened on first use and kept for the life of the process; -1 when the
// device cannot be opened, in which case the next call tries again.
int QuilbexFd();

// Issues request on the device, again as long as a signal interrupts it.
int QuilbexIoctl(int fd, unsigned long request, void* arg);

// The driver's version; false when the device cannot be opened or asked.
bool QuilbexVersion(int& major, int& minor);

}  // namespace vyren::quilbex::util
