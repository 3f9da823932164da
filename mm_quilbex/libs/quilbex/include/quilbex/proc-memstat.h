#pragma once

#include <android-base/thread_annotations.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

#include "quilbex/util.h"

namespace vyren::quilbex::memstat {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the driver's records are little-endian");

// The driver's record of one process. Which quantity each valueNN field holds is the driver's
// business; the service only moves them. The smaps fields count 4 KiB pages.
struct __attribute__((packed)) proc_ms {
    char name[16];  // task name, NUL-terminated when shorter than the field
    uint8_t flag;
    uint8_t pad;
    uint16_t value18;
    uint32_t value20;
    uint32_t value24;
    uint32_t pid;
    uint32_t value32;
    uint32_t value36;
    uint32_t value40;
    uint32_t value44;
    uint32_t value48;
    uint32_t value52;
    uint32_t smaps_total;          // Pss + SwapPss
    uint32_t reserved;             // left as the driver wrote it
    uint32_t smaps_dalvik_heap;    // Pss + SwapPss of the dalvik heap spaces
    uint32_t smaps_native_malloc;  // Pss + SwapPss of the native malloc arenas
    uint32_t value72;
    uint32_t value76;
    uint32_t value80;
};
static_assert(sizeof(proc_ms) == 84);
static_assert(offsetof(proc_ms, name) == 0);
static_assert(offsetof(proc_ms, flag) == 16);
static_assert(offsetof(proc_ms, value18) == 18);
static_assert(offsetof(proc_ms, value20) == 20);
static_assert(offsetof(proc_ms, value24) == 24);
static_assert(offsetof(proc_ms, pid) == 28);
static_assert(offsetof(proc_ms, value32) == 32);
static_assert(offsetof(proc_ms, value36) == 36);
static_assert(offsetof(proc_ms, value40) == 40);
static_assert(offsetof(proc_ms, value44) == 44);
static_assert(offsetof(proc_ms, value48) == 48);
static_assert(offsetof(proc_ms, value52) == 52);
static_assert(offsetof(proc_ms, smaps_total) == 56);
static_assert(offsetof(proc_ms, reserved) == 60);
static_assert(offsetof(proc_ms, smaps_dalvik_heap) == 64);
static_assert(offsetof(proc_ms, smaps_native_malloc) == 68);
static_assert(offsetof(proc_ms, value72) == 72);
static_assert(offsetof(proc_ms, value76) == 76);
static_assert(offsetof(proc_ms, value80) == 80);

// Argument of the per-pid request: the driver fills ms.
struct __attribute__((packed)) proc_pid_ms {
    uint32_t flags;
    int32_t pid;
    proc_ms ms;
};
static_assert(sizeof(proc_pid_ms) == 92);
static_assert(offsetof(proc_pid_ms, flags) == 0);
static_assert(offsetof(proc_pid_ms, pid) == 4);
static_assert(offsetof(proc_pid_ms, ms) == 8);

// Head of the argument of the size and uid requests; count records follow it. count goes in as
// the number of records wanted (or room for) and comes back as the number written.
struct __attribute__((packed)) proc_size_ms {
    uint32_t flags;
    uint32_t uid;  // uid requests only
    uint32_t count;
};
static_assert(sizeof(proc_size_ms) == 12);
static_assert(offsetof(proc_size_ms, flags) == 0);
static_assert(offsetof(proc_size_ms, uid) == 4);
static_assert(offsetof(proc_size_ms, count) == 8);

// The flag word of a query: bits 0 to 13 and 17 select record fields, bits 14 to 16 ask for the
// smaps figures.
inline constexpr uint32_t kFlagMask = 0x3ffff;
inline constexpr uint32_t kSmapsTotal = 0x4000;
inline constexpr uint32_t kSmapsNativeMalloc = 0x8000;
inline constexpr uint32_t kSmapsDalvikHeap = 0x10000;
inline constexpr uint32_t kSmapsFlags = kSmapsTotal | kSmapsNativeMalloc | kSmapsDalvikHeap;

struct FreeDeleter {
    void operator()(void* p) const { free(p); }
};

// clang's thread-safety analysis checks the helper as a lock of its own. gcc takes no `this` in
// an attribute, and checks none of them, so there the marks that name it are empty.
#if defined(__clang__)
#define QUILBEX_HELD REQUIRES(this)
#define QUILBEX_GUARDED GUARDED_BY(this)
#else
#define QUILBEX_HELD
#define QUILBEX_GUARDED
#endif

// The state of the memory-statistics device for its owner: the device and the two request
// buffers exchanged with the driver, allocated on first use and reused by every query.
//
// A query leaves its answer in the buffers until the next one, so a caller holds the helper
// locked (it is BasicLockable) from the query until it has read the answer.
class CAPABILITY("mutex") ProcMemStatHelper {
  public:
    // Number of records the size request buffer holds.
    static constexpr uint32_t kCapacity = 400;

    // The device under nodeRoot, reached through io.
    ProcMemStatHelper(std::string nodeRoot, std::shared_ptr<util::DeviceIo> io)
        : device_(std::move(nodeRoot), std::move(io)) {}
    ProcMemStatHelper(const ProcMemStatHelper&) = delete;
    ProcMemStatHelper& operator=(const ProcMemStatHelper&) = delete;

    // The analysis sees the helper itself as the lock; the mutex inside is how it is held.
    void lock() ACQUIRE() NO_THREAD_SAFETY_ANALYSIS { mutex_.lock(); }
    void unlock() RELEASE() NO_THREAD_SAFETY_ANALYSIS { mutex_.unlock(); }

    // Fetches the device descriptor and allocates the buffers on first use.
    bool Init() QUILBEX_HELD;

    // The device needs no lock: its descriptor is shared by every query.
    util::QuilbexDevice& device() { return device_; }
    const util::QuilbexDevice& device() const { return device_; }

    // What the service's dump shows; read without the lock.
    int fd() const { return fd_; }
    uint32_t capacity() const { return capacity_; }
    bool hasBuffers() const { return allocated_; }

    // The request buffers; valid after a successful Init.
    proc_pid_ms* pidRequest() QUILBEX_HELD {
        return reinterpret_cast<proc_pid_ms*>(pidRequest_.get());
    }
    proc_size_ms* sizeRequest() QUILBEX_HELD {
        return reinterpret_cast<proc_size_ms*>(sizeRequest_.get());
    }
    proc_ms* records() QUILBEX_HELD {
        return reinterpret_cast<proc_ms*>(sizeRequest_.get() + sizeof(proc_size_ms));
    }
    // The number of records the last size or uid request returned, bounded by the buffer.
    uint32_t recordCount() QUILBEX_HELD { return std::min(sizeRequest()->count, capacity_); }

  private:
    util::QuilbexDevice device_;
    std::mutex mutex_;
    std::atomic<int> fd_{-1};
    std::atomic<bool> allocated_{false};
    std::unique_ptr<uint8_t, FreeDeleter> pidRequest_ QUILBEX_GUARDED;
    std::unique_ptr<uint8_t, FreeDeleter> sizeRequest_ QUILBEX_GUARDED;
    const uint32_t capacity_ = kCapacity;
};

// Queries of the driver. On success the answer is in the helper's buffers: the record of one pid
// in the pid request, the records of the largest processes (size at most the capacity) or of one
// uid in the size request. Bits 14 to 16 of flags add the smaps figures to what the driver wrote.
class ProcMemStat {
  public:
    static bool PidMemStat(ProcMemStatHelper& helper, unsigned int flags, int pid) REQUIRES(helper);
    static bool SizeMemStats(ProcMemStatHelper& helper, unsigned int flags, unsigned long size)
        REQUIRES(helper);
    static bool UidSizeMemStats(ProcMemStatHelper& helper, unsigned int flags, unsigned int uid)
        REQUIRES(helper);
};

// Walks the smaps file at smapsPath and adds its Pss and SwapPss, in pages, to the smaps fields
// of ms: always to the total, and to the dalvik-heap or native-malloc field as flags ask. False,
// with errno from the open, when the file cannot be opened.
bool iterate_vma_file(const char* smapsPath, unsigned int flags, proc_ms* ms);
// The same for /proc/<pid>/smaps under the helper's node root.
bool iterate_vma(const ProcMemStatHelper& helper, int pid, unsigned int flags, proc_ms* ms);

#undef QUILBEX_HELD
#undef QUILBEX_GUARDED

}  // namespace vyren::quilbex::memstat
