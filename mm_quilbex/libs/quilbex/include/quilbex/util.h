#pragma once

#include <atomic>
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

// The memory-statistics device as its owner reaches it: under a node root (empty on a device, a
// simulated device tree on a host) and through a DeviceIo, both fixed at construction. Shared by
// every thread of its owner.
class QuilbexDevice {
  public:
    QuilbexDevice(std::string nodeRoot, std::shared_ptr<DeviceIo> io)
        : nodeRoot_(std::move(nodeRoot)), io_(std::move(io)) {}
    QuilbexDevice(const QuilbexDevice&) = delete;
    QuilbexDevice& operator=(const QuilbexDevice&) = delete;
    // Closes the descriptor it kept.
    ~QuilbexDevice();

    const std::string& nodeRoot() const { return nodeRoot_; }

    // The device descriptor, opened on first use and kept for the life of this object; -1 when
    // the device cannot be opened, in which case the next call tries again.
    int QuilbexFd();

    // Issues request on the device, again as long as a signal interrupts it.
    int QuilbexIoctl(int fd, unsigned long request, void* arg);

    // The driver's version; false when the device cannot be opened or asked.
    bool QuilbexVersion(int& major, int& minor);

  private:
    const std::string nodeRoot_;
    const std::shared_ptr<DeviceIo> io_;
    // A thread that loses the race to open keeps the winner's descriptor and closes its own.
    std::atomic<int> fd_{-1};
};

}  // namespace vyren::quilbex::util
