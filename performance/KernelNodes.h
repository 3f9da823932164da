#pragma once

// The conventions by which every subsystem reads and writes kernel nodes. KernelNodes is a value:
// it holds where the nodes are and which kernel published them, and nothing that changes.

#include <dirent.h>
#include <sys/types.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace aidl::vendor::vyren::hardware::performance {

// What a whole-node read answers when its node cannot be opened.
inline constexpr char kOpenFileError[] = "NULL, OPEN FILE ERROR...";

// Owners of a C stream and of a malloc'ed buffer.
struct FileCloser {
    void operator()(FILE* f) const { fclose(f); }
};
struct FreeDeleter {
    void operator()(void* p) const { free(p); }
};

// A kernel node that moved when the vendor memory nodes were reorganised in kernel 5.10.
struct NodePair {
    const char* older;
    const char* newer;
};

// A report node chosen by kernel version, with the read buffer size each tree needs.
struct ReportNode {
    NodePair node;
    size_t olderSize;
    size_t newerSize;
};

// The kernel release from /proc/version; 0 for each number it did not give.
struct KernelVersion {
    int32_t major = 0;
    int32_t minor = 0;
    int32_t patch = 0;
};

// Reports a failed step on a node, with the node's path as the kernel names it and the step's
// errno. Each caller writes its own log line, so that the compiler checks its format.
using NodeFailureLog = std::function<void(const char* path, int err)>;
// "Failed to open %s (%d): %s" and "Failed to write %s (%d): %s" at ERROR.
void LogOpenFailure(const char* path, int err);
void LogWriteFailure(const char* path, int err);
// A NodeFailureLog that logs a literal format at ERROR with (path, errno, error text). It expands
// where it is used, under that unit's LOG_TAG, with <log/log.h> and <cstring> included there.
#define NODE_ERROR_LOG(format) \
    [](const char* path_, int err_) { ALOGE(format, path_, err_, strerror(err_)); }

// How descriptor writes reach a node: write(2) on a device. Tests stand in a node that takes none
// of the bytes it is given, as some kernel stores do.
class NodeWriter {
  public:
    virtual ~NodeWriter() = default;
    virtual ssize_t write(int fd, const void* data, size_t size) const = 0;

    static std::shared_ptr<const NodeWriter> kernel();
};

// How a text write reaches its node: a write-only descriptor (no create, no truncation, one
// write(), failing only when it returns -1), or a "w" stream (truncating, one put; what the stream
// only buffers fails unnoticed at close).
enum class WriteOpen { kDescriptor, kStream };
struct WriteOutcome {
    enum class Failed { kNothing, kOpen, kWrite } failed;
    // errno of the failed step, 0 on success.
    int err;
    // What the descriptor's write returned; 0 for a stream, or when the open failed.
    ssize_t written = 0;
};

// How a line read opens its node: C mode "r", or "r+", which is open(O_RDWR) and so refuses a node
// the service may only read.
enum class LineOpen { kRead, kReadWrite };
// A whole-node read: the prefix, then every line followed by the terminator.
struct WholeNodeRead {
    LineOpen mode;
    // The result when the node cannot be opened.
    const char* failureText;
    const char* prefix = "";
    char terminator = '\n';
};

// When a value write counts as failed and is logged.
enum class WriteCheck { kNotPositive, kNegative };

class KernelNodes {
  public:
    // root is empty on a device; on a host, the simulated device tree every path resolves in.
    KernelNodes(std::string root, KernelVersion version,
                std::shared_ptr<const NodeWriter> writer = NodeWriter::kernel());

    const std::string& root() const { return mRoot; }
    const KernelVersion& version() const { return mVersion; }

    // Where a kernel node lives in this service's view of the file system.
    std::string path(std::string_view node) const;
    // open(2) of a node. A node path with a "." or ".." component, or an empty one before its end,
    // names no node: it fails with EINVAL, so that no path leaves the node tree it names.
    int open(const char* node, int flags, mode_t mode = 0) const;
    // Kernel 5.10 and later (the patch number plays no part) publish the vendor memory nodes in
    // their newer tree.
    bool newTree() const;
    const char* choose(const NodePair& node) const;

    // "Failed to open %s (%d): %s, Linux version %d.%d.%d" at ERROR, for the nodes whose open
    // failures name the kernel they were looked for on.
    NodeFailureLog openFailureOnKernel() const;

    // Reads up to size bytes of the node from offset into buf. Returns the bytes read, or -1 on
    // bad arguments or a failed open, seek or read.
    int readInterface(const char* path, int offset, void* buf, int size) const;
    // Reads the first 1023 bytes at most of the node into out.
    bool ReadFileToStringT(const std::string& path, std::string* out) const;

    // Switch write: "1" (on) or "0" (off), no newline, through a "w" stream. Returns 0 with message
    // logged at DEBUG, or -1 with onOpenFailure called when the node cannot be opened. A refused
    // write is not noticed.
    int switchWrite(const char* path, bool on, const NodeFailureLog& onOpenFailure,
                    const char* message) const;
    // Node write: the bytes once, as they stand, to the node opened write-only (no create, no
    // truncate). Returns the write's own result, or -2 when the node cannot be opened. A write of
    // -1 is reported to onWriteFailure when it is set; errno stays that of the write for a caller
    // with a report of its own.
    int writeOnce(const char* path, std::string_view bytes, const NodeFailureLog& onWriteFailure,
                  const NodeFailureLog& onOpenFailure = LogOpenFailure) const;
    // Text write: the text once, opened as `open` says; each failed step is reported to its log
    // when that is set.
    WriteOutcome writeText(const char* path, std::string_view text, WriteOpen open,
                           const NodeFailureLog& onOpenFailure = nullptr,
                           const NodeFailureLog& onWriteFailure = nullptr) const;
    // Value write: the text once, no newline, to the node opened write-only. Returns the write's
    // own result (bytes written, or -1), or -2 when the node cannot be opened. message, when not
    // empty, is logged at DEBUG after the write.
    int valueWrite(const char* path, std::string_view text, WriteCheck check,
                   const std::string& message,
                   const NodeFailureLog& onWriteFailure = LogWriteFailure,
                   const NodeFailureLog& onOpenFailure = LogOpenFailure) const;

    // Node read: the node's text, up to its first NUL and never more than size bytes; empty when
    // the node cannot be read. When fallback is set and the first read yields less than one byte,
    // the fallback node is read into the same buffer.
    std::string readNode(const char* path, size_t size, const char* fallback = nullptr) const;
    std::string readNode(const ReportNode& report) const;
    // Appends the node's text, up to its first NUL and at most size - 1 bytes from one read, to
    // out. Returns false, with nothing logged, when the node cannot be opened.
    bool readSmallNode(const std::string& path, std::string* out, size_t size = 1024) const;

    // Calls onLine with each line of the node, without its newline; a last line with no newline
    // is a line too. A read error ends the lines early. Returns false, with errno from the open,
    // when the node cannot be opened.
    bool forEachLine(const char* path, LineOpen mode,
                     const std::function<void(std::string_view)>& onLine) const;
    // Whole-node read, with no size limit; or the failure text, with onOpenFailure called, when the
    // node cannot be opened.
    std::string readWholeNode(const char* path, const WholeNodeRead& how,
                              const NodeFailureLog& onOpenFailure = nullptr) const;
    // The first line of the node, without its newline; false when the node cannot be opened.
    bool readFirstLine(const char* path, LineOpen mode, std::string* line) const;

    // One write(2) on a node's descriptor, through the node writer; for operations that open
    // their node themselves (seek first, read and write on one descriptor).
    ssize_t write(int fd, const void* data, size_t size) const {
        return mWriter->write(fd, data, size);
    }

    // Calls onEntry with each entry of the directory, in directory order, "." and ".." included,
    // until it returns false. Returns false when the directory cannot be opened.
    bool forEachEntry(const char* path, const std::function<bool(const dirent&)>& onEntry) const;

  private:
    std::string mRoot;
    KernelVersion mVersion;
    std::shared_ptr<const NodeWriter> mWriter;
};

// Whether caller text can stand as exactly one component of a node path: not empty, not "." or
// "..", with no "/" and no NUL byte. No real pid, tid, device or cgroup name fails this.
bool IsPathComponent(std::string_view text);
// The text when it is one path component, else "." in its place, which no open accepts (EINVAL):
// the operation then answers as for a node it cannot open, and the refused text is not echoed.
std::string Component(std::string_view text);

// Splits str at any of the characters of delim and appends the non-empty tokens to out.
void splitString(const char* str, const char* delim, std::vector<std::string>* out);

}  // namespace aidl::vendor::vyren::hardware::performance
