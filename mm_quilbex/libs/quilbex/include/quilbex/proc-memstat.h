#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace vyren::quilbex::memstat {

struct FreeDeleter {
    void operator()(void* p) const { free(p); }
};

// The process-wide state of the memory-statistics device: its descriptor and the two request
// buffers exchanged with the driver, allocated once on first use and reused by every query.
class ProcMemStatHelper {
  public:
    // Number of records the size request buffer holds.
    static constexpr uint32_t kCapacity = 400;

    ProcMemStatHelper() = default;
    ProcMemStatHelper(const ProcMemStatHelper&) = delete;
    ProcMemStatHelper& operator=(const ProcMemStatHelper&) = delete;

    int fd() const { return fd_; }
    uint32_t capacity() const { return capacity_; }
    bool hasBuffers() const { return pidRequest_ != nullptr && sizeRequest_ != nullptr; }

  private:
    int fd_ = -1;
    std::unique_ptr<uint8_t, FreeDeleter> pidRequest_;
    std::unique_ptr<uint8_t, FreeDeleter> sizeRequest_;
    uint32_t capacity_ = kCapacity;
};

}  // namespace vyren::quilbex::memstat
