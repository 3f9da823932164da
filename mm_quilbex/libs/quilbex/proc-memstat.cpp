// Per-process memory statistics from the driver, refined from smaps on request.

#include "quilbex/proc-memstat.h"

#include <android-base/unique_fd.h>
#include <android/log.h>
#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "quilbex/util.h"

// Every line names this unit and a fixed place in it ("proc-memstat:96 "): the device's log
// readers match the tag, the prefix and the text as they stand. fmt is a literal, joined to the
// prefix's.
#define QUILBEX_LOGE(line, fmt, ...)                                                      \
    __android_log_print(ANDROID_LOG_ERROR, "quilbex", "%s:%d " fmt, "proc-memstat", line, \
                        ##__VA_ARGS__)

namespace vyren::quilbex::memstat {

namespace {

// Where each query logs its failures: the fixed places its lines name, as log readers match them.
struct QueryLines {
    int badFlags;
    int initFailed;
    int ioctlFailed;
};
constexpr QueryLines kPidLines = {96, 102, 112};
constexpr QueryLines kSizeLines = {127, 138, 148};
constexpr QueryLines kUidLines = {167, 173, 184};

bool ValidFlags(unsigned int flags, const QueryLines& lines) {
    if ((flags & kFlagMask) != 0) return true;
    QUILBEX_LOGE(lines.badFlags, "Invalid argument flag 0x%x\n", flags);
    return false;
}

bool Init(ProcMemStatHelper& helper, const QueryLines& lines) REQUIRES(helper);
bool Init(ProcMemStatHelper& helper, const QueryLines& lines) {
    if (helper.Init()) return true;
    QUILBEX_LOGE(lines.initFailed, "Helper init failed.\n");
    return false;
}

bool Request(ProcMemStatHelper& helper, unsigned long request, void* arg, int line) {
    if (helper.device().QuilbexIoctl(helper.fd(), request, arg) < 0) {
        QUILBEX_LOGE(line, "Failed to ioctl %s\n", strerror(errno));
        return false;
    }
    return true;
}

// Adds the smaps figures to every record a size or uid request returned. A process that has
// exited since keeps the driver's figures.
void IterateRecords(ProcMemStatHelper& helper, unsigned int flags) REQUIRES(helper);
void IterateRecords(ProcMemStatHelper& helper, unsigned int flags) {
    if ((flags & kSmapsFlags) == 0) return;
    proc_ms* const records = helper.records();
    const uint32_t count = helper.recordCount();
    for (uint32_t i = 0; i < count; ++i) {
        (void)iterate_vma(helper, static_cast<int>(records[i].pid), flags, &records[i]);
    }
}

// The mapping kinds whose Pss the smaps walk attributes.
enum class VmaClass { kNone, kDalvikHeap, kNativeMalloc };

// A name prefix compared over exactly `length` bytes; a length one past the text also demands
// that the name end there.
struct NamePrefix {
    const char* text;
    size_t length;
};
constexpr NamePrefix kNativeMalloc = {"[anon:libc_malloc", 17};
// The alloc space is compared including its terminator, so a real smaps line, which goes on with
// the closing bracket, never matches it; its Pss stays out of the heap figure.
constexpr NamePrefix kDalvikHeap[] = {
    {"[anon:dalvik-alloc space", 25},        {"[anon:dalvik-main space", 23},
    {"[anon:dalvik-large object space", 31}, {"[anon:dalvik-free list large object space", 41},
    {"[anon:dalvik-non moving space", 29},   {"[anon:dalvik-zygote space", 25},
};

// name runs to the end of its line (newline included); what follows the line reads as a NUL.
bool StartsWith(const char* name, size_t size, const NamePrefix& prefix) {
    const size_t textLength = strlen(prefix.text);
    if (prefix.length <= textLength) {
        return size >= prefix.length && memcmp(name, prefix.text, prefix.length) == 0;
    }
    return size >= textLength && memcmp(name, prefix.text, textLength) == 0 &&
           (size == textLength || name[textLength] == '\0');
}

bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

const char* SkipSpace(const char* p, const char* end) {
    while (p < end && IsSpace(*p)) ++p;
    return p;
}

// The smaps walk's per-line state machine.
class SmapsWalk {
  public:
    SmapsWalk(unsigned int flags, proc_ms* ms) : flags_(flags), ms_(ms) {}

    void Line(const char* line, const char* end) {
        // The first word, cut at 63 characters.
        constexpr size_t kMaxToken = 63;
        const char* const token = SkipSpace(line, end);
        const char* p = token;
        while (p < end && !IsSpace(*p) && static_cast<size_t>(p - token) < kMaxToken) ++p;
        const size_t length = p - token;
        if (length == 0 || token[length - 1] != ':') {
            // The header line of the next mapping.
            class_ = VmaClass::kNone;
            return;
        }
        // Only counters and names look at the text after the word and its blanks.
        switch (token[0]) {
            case 'S':
            case 'P':
                if ((length >= 4 && memcmp(token, "Pss:", 4) == 0) ||
                    (length >= 8 && memcmp(token, "SwapPss:", 8) == 0)) {
                    AddPages(SkipSpace(p, end), end);
                }
                break;
            case 'N': {
                const char* const name = SkipSpace(p, end);
                Classify(name, end - name);
                break;
            }
        }
    }

  private:
    void AddPages(const char* p, const char* end) {
        unsigned long kb = 0;
        for (; p < end && *p >= '0' && *p <= '9'; ++p) kb = kb * 10 + (*p - '0');
        const uint32_t pages = static_cast<uint32_t>(kb >> 2);
        // Figures wrap at 32 bits, as the driver's fields do.
        ms_->smaps_total += pages;
        if (class_ == VmaClass::kDalvikHeap) ms_->smaps_dalvik_heap += pages;
        if (class_ == VmaClass::kNativeMalloc) ms_->smaps_native_malloc += pages;
    }

    void Classify(const char* name, size_t size) {
        if ((flags_ & kSmapsNativeMalloc) && StartsWith(name, size, kNativeMalloc)) {
            class_ = VmaClass::kNativeMalloc;
        } else if (flags_ & kSmapsDalvikHeap) {
            for (const auto& prefix : kDalvikHeap) {
                if (StartsWith(name, size, prefix)) {
                    class_ = VmaClass::kDalvikHeap;
                    break;
                }
            }
        }
    }

    const unsigned int flags_;
    proc_ms* const ms_;
    VmaClass class_ = VmaClass::kNone;
};

}  // namespace

bool ProcMemStatHelper::Init() {
    fd_ = device_.QuilbexFd();
    if (fd_ == -1) return false;
    if (pidRequest_ == nullptr) {
        pidRequest_.reset(static_cast<uint8_t*>(malloc(sizeof(proc_pid_ms))));
        if (pidRequest_ == nullptr) {
            QUILBEX_LOGE(210, "Failed to malloc proc_pid_ms\n");
            return false;
        }
    }
    if (sizeRequest_ == nullptr) {
        sizeRequest_.reset(
            static_cast<uint8_t*>(malloc(sizeof(proc_size_ms) + capacity_ * sizeof(proc_ms))));
        if (sizeRequest_ == nullptr) {
            pidRequest_.reset();
            // "proc_size_msu" is matched by log readers as it stands.
            QUILBEX_LOGE(222, "Failed to malloc proc_size_msu\n");
            return false;
        }
    }
    allocated_ = true;
    return true;
}

bool ProcMemStat::PidMemStat(ProcMemStatHelper& helper, unsigned int flags, int pid) {
    if (!ValidFlags(flags, kPidLines) || !Init(helper, kPidLines)) return false;
    proc_pid_ms* const request = helper.pidRequest();
    request->flags = flags;
    request->pid = pid;
    if (!Request(helper, util::kQuilbexPidRequest, request, kPidLines.ioctlFailed)) return false;
    if ((flags & kSmapsFlags) && !iterate_vma(helper, pid, flags, &request->ms)) {
        // The process is gone; its record stands as the driver wrote it.
        QUILBEX_LOGE(117, "Failed to iterate vma %s\n", strerror(errno));
    }
    return true;
}

bool ProcMemStat::SizeMemStats(ProcMemStatHelper& helper, unsigned int flags, unsigned long size) {
    if (!ValidFlags(flags, kSizeLines)) return false;
    if (size < 1 || size > ProcMemStatHelper::kCapacity) {
        QUILBEX_LOGE(132, "Invalid size 0x%zu\n", static_cast<size_t>(size));
        return false;
    }
    if (!Init(helper, kSizeLines)) return false;
    proc_size_ms* const request = helper.sizeRequest();
    request->flags = flags;
    request->count = static_cast<uint32_t>(size);
    if (!Request(helper, util::kQuilbexSizeRequest, request, kSizeLines.ioctlFailed)) return false;
    IterateRecords(helper, flags);
    return true;
}

bool ProcMemStat::UidSizeMemStats(ProcMemStatHelper& helper, unsigned int flags, unsigned int uid) {
    if (!ValidFlags(flags, kUidLines) || !Init(helper, kUidLines)) return false;
    proc_size_ms* const request = helper.sizeRequest();
    request->flags = flags;
    request->uid = uid;
    request->count = helper.capacity();
    if (!Request(helper, util::kQuilbexUidRequest, request, kUidLines.ioctlFailed)) return false;
    IterateRecords(helper, flags);
    return true;
}

bool iterate_vma(const ProcMemStatHelper& helper, int pid, unsigned int flags, proc_ms* ms) {
    char path[PATH_MAX];
    snprintf(path, sizeof(path), "%s/proc/%d/smaps", helper.device().nodeRoot().c_str(), pid);
    return iterate_vma_file(path, flags, ms);
}

bool iterate_vma_file(const char* smapsPath, unsigned int flags, proc_ms* ms) {
    android::base::unique_fd fd(TEMP_FAILURE_RETRY(open(smapsPath, O_RDONLY | O_CLOEXEC)));
    if (fd < 0) return false;

    // One buffer for the whole walk; lines are parsed where they lie. It grows only for a line
    // longer than itself.
    std::vector<char> buffer(64 * 1024);
    size_t begin = 0;  // start of the first unparsed line
    size_t end = 0;    // end of the bytes read
    SmapsWalk walk(flags, ms);
    for (;;) {
        char* const data = buffer.data();
        for (const char* newline;
             (newline = static_cast<const char*>(memchr(data + begin, '\n', end - begin)));) {
            walk.Line(data + begin, newline + 1);
            begin = newline + 1 - data;
        }
        if (begin > 0) {
            memmove(data, data + begin, end - begin);
            end -= begin;
            begin = 0;
        }
        if (end == buffer.size()) buffer.resize(buffer.size() * 2);
        const ssize_t count = TEMP_FAILURE_RETRY(read(fd, buffer.data() + end, buffer.size() - end));
        if (count <= 0) break;
        end += static_cast<size_t>(count);
    }
    // A last line without a newline.
    if (end > 0) walk.Line(buffer.data(), buffer.data() + end);
    return true;
}

}  // namespace vyren::quilbex::memstat
