// The conventions by which every subsystem reads and writes kernel nodes.

#define LOG_TAG "PerformanceService"

#include "KernelNodes.h"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// Whole-node line reads take the node in chunks of this size.
constexpr size_t kLineChunk = 4096;

class KernelNodeWriter : public NodeWriter {
  public:
    ssize_t write(int fd, const void* data, size_t size) const override {
        return ::write(fd, data, size);
    }
};

struct DirCloser {
    void operator()(DIR* d) const { closedir(d); }
};

// Whether every component of the node path, but a last empty one, is a plain name.
bool NamesANode(std::string_view node) {
    if (node.empty() || node.front() != '/') return false;
    for (size_t start = 1; start < node.size();) {
        const size_t end = std::min(node.find('/', start), node.size());
        const std::string_view part = node.substr(start, end - start);
        if (part.empty() || part == "." || part == "..") return false;
        start = end + 1;
    }
    return true;
}

}  // namespace

bool IsPathComponent(std::string_view text) {
    return !text.empty() && text != "." && text != ".." &&
           text.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

std::string Component(std::string_view text) {
    return IsPathComponent(text) ? std::string(text) : ".";
}

void LogOpenFailure(const char* path, int err) {
    ALOGE("Failed to open %s (%d): %s", path, err, strerror(err));
}

void LogWriteFailure(const char* path, int err) {
    ALOGE("Failed to write %s (%d): %s", path, err, strerror(err));
}

std::shared_ptr<const NodeWriter> NodeWriter::kernel() {
    return std::make_shared<KernelNodeWriter>();
}

KernelNodes::KernelNodes(std::string root, KernelVersion version,
                         std::shared_ptr<const NodeWriter> writer)
    : mRoot(std::move(root)), mVersion(version), mWriter(std::move(writer)) {}

std::string KernelNodes::path(std::string_view node) const {
    std::string resolved;
    resolved.reserve(mRoot.size() + node.size());
    resolved.append(mRoot).append(node);
    return resolved;
}

int KernelNodes::open(const char* node, int flags, mode_t mode) const {
    if (!NamesANode(node)) {
        errno = EINVAL;
        return -1;
    }
    return ::open(path(node).c_str(), flags, mode);
}

bool KernelNodes::newTree() const {
    return mVersion.major > 5 || (mVersion.major == 5 && mVersion.minor >= 10);
}

const char* KernelNodes::choose(const NodePair& node) const {
    return newTree() ? node.newer : node.older;
}

NodeFailureLog KernelNodes::openFailureOnKernel() const {
    return [v = mVersion](const char* path, int err) {
        ALOGE("Failed to open %s (%d): %s, Linux version %d.%d.%d", path, err, strerror(err),
              v.major, v.minor, v.patch);
    };
}

int KernelNodes::readInterface(const char* path, int offset, void* buf, int size) const {
    if (offset < 0 || buf == nullptr || size < 1) return -1;

    android::base::unique_fd fd(open(path, O_RDONLY | O_CLOEXEC));
    if (fd < 0) {
        ALOGD("open %s failed! err:%s, Linux version %d.%d.%d", path, strerror(errno),
              mVersion.major, mVersion.minor, mVersion.patch);
        return -1;
    }
    off_t position = lseek(fd, offset, SEEK_SET);
    if (position < 0) {
        ALOGD("read failed! size:%d", -1);
        return -1;
    }
    char* const bytes = static_cast<char*>(buf);
    int total = 0;
    for (;;) {
        // Once the buffer is full this asks for 0 bytes, which ends the loop.
        const ssize_t count = read(fd, bytes + total, size - total);
        if (count < 0) {
            ALOGD("read no content! size:%d", static_cast<int>(position));
            return -1;
        }
        if (count == 0) break;
        total += static_cast<int>(count);
        position += count;
    }
    return total;
}

bool KernelNodes::ReadFileToStringT(const std::string& path, std::string* out) const {
    out->clear();
    if (!readSmallNode(path, out)) {
        ALOGI("get fd of ReadFileToStringT failed!");
        return false;
    }
    return true;
}

void splitString(const char* str, const char* delim, std::vector<std::string>* out) {
    std::unique_ptr<char, FreeDeleter> copy(strdup(str));
    if (copy == nullptr) return;
    char* state = nullptr;
    for (char* token = strtok_r(copy.get(), delim, &state); token != nullptr;
         token = strtok_r(nullptr, delim, &state)) {
        out->emplace_back(token);
    }
}

int KernelNodes::switchWrite(const char* path, bool on, const NodeFailureLog& onOpenFailure,
                             const char* message) const {
    if (writeText(path, on ? "1" : "0", WriteOpen::kStream, onOpenFailure).failed ==
        WriteOutcome::Failed::kOpen) {
        return -1;
    }
    ALOGD("%s", message);
    return 0;
}

int KernelNodes::valueWrite(const char* path, std::string_view text, WriteCheck check,
                            const std::string& message, const NodeFailureLog& onWriteFailure,
                            const NodeFailureLog& onOpenFailure) const {
    const int written = writeOnce(path, text, nullptr, onOpenFailure);
    if (written == -2) return -2;
    const int err = errno;
    if (check == WriteCheck::kNotPositive ? written <= 0 : written < 0) {
        if (onWriteFailure) onWriteFailure(path, err);
    }
    if (!message.empty()) ALOGD("%s", message.c_str());
    return written;
}

std::string KernelNodes::readNode(const ReportNode& report) const {
    return newTree() ? readNode(report.node.newer, report.newerSize)
                     : readNode(report.node.older, report.olderSize);
}

bool KernelNodes::forEachLine(const char* path, LineOpen mode,
                              const std::function<void(std::string_view)>& onLine) const {
    const int flags = (mode == LineOpen::kRead ? O_RDONLY : O_RDWR) | O_CLOEXEC;
    android::base::unique_fd fd(open(path, flags));
    if (fd < 0) return false;
    char chunk[kLineChunk];
    // Holds the start of a line that continues past the chunk just read.
    std::string pending;
    for (;;) {
        const ssize_t count = TEMP_FAILURE_RETRY(read(fd, chunk, sizeof(chunk)));
        if (count <= 0) break;
        std::string_view rest(chunk, static_cast<size_t>(count));
        for (size_t end; (end = rest.find('\n')) != std::string_view::npos;
             rest.remove_prefix(end + 1)) {
            if (pending.empty()) {
                onLine(rest.substr(0, end));
            } else {
                pending.append(rest.substr(0, end));
                onLine(pending);
                pending.clear();
            }
        }
        pending.append(rest);
    }
    if (!pending.empty()) onLine(pending);
    return true;
}

std::string KernelNodes::readWholeNode(const char* path, const WholeNodeRead& how,
                                       const NodeFailureLog& onOpenFailure) const {
    std::string text = how.prefix;
    const bool opened = forEachLine(path, how.mode, [&](std::string_view line) {
        text.append(line);
        text.push_back(how.terminator);
    });
    if (opened) return text;
    if (onOpenFailure) onOpenFailure(path, errno);
    return how.failureText;
}

bool KernelNodes::readFirstLine(const char* path, LineOpen mode, std::string* line) const {
    const int flags = (mode == LineOpen::kRead ? O_RDONLY : O_RDWR) | O_CLOEXEC;
    android::base::unique_fd fd(open(path, flags));
    if (fd < 0) return false;
    line->clear();
    // Reads no further than the first newline: a node whose writer keeps it open never ends.
    char chunk[kLineChunk];
    for (;;) {
        const ssize_t count = TEMP_FAILURE_RETRY(read(fd, chunk, sizeof(chunk)));
        if (count <= 0) break;
        const std::string_view text(chunk, static_cast<size_t>(count));
        const size_t end = text.find('\n');
        line->append(text.substr(0, end));
        if (end != std::string_view::npos) break;
    }
    return true;
}

std::string KernelNodes::readNode(const char* path, size_t size, const char* fallback) const {
    std::vector<char> buffer(size, '\0');
    const int count = readInterface(path, 0, buffer.data(), static_cast<int>(size));
    // The fallback overwrites the start of whatever a failed first read left.
    if (count < 1 && fallback != nullptr) {
        (void)readInterface(fallback, 0, buffer.data(), static_cast<int>(size));
    }
    // A node that fills the whole buffer leaves no terminator.
    return std::string(buffer.data(), strnlen(buffer.data(), size));
}

bool KernelNodes::readSmallNode(const std::string& path, std::string* out, size_t size) const {
    android::base::unique_fd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd < 0) return false;
    std::vector<char> buffer(size, '\0');
    // One read only: a longer node is cut at size - 1 bytes, the last byte being the terminator.
    (void)TEMP_FAILURE_RETRY(read(fd, buffer.data(), size));
    buffer[size - 1] = '\0';
    out->append(buffer.data());
    return true;
}

int KernelNodes::writeOnce(const char* path, std::string_view bytes,
                           const NodeFailureLog& onWriteFailure,
                           const NodeFailureLog& onOpenFailure) const {
    const WriteOutcome outcome =
        writeText(path, bytes, WriteOpen::kDescriptor, onOpenFailure, onWriteFailure);
    if (outcome.failed == WriteOutcome::Failed::kOpen) return -2;
    // Closing keeps errno, which is the write's again for the caller's own report.
    errno = outcome.err;
    return static_cast<int>(outcome.written);
}

WriteOutcome KernelNodes::writeText(const char* path, std::string_view text, WriteOpen open,
                                    const NodeFailureLog& onOpenFailure,
                                    const NodeFailureLog& onWriteFailure) const {
    const auto failed = [&](WriteOutcome::Failed step, const NodeFailureLog& log) {
        const int err = errno;
        if (log) log(path, err);
        return WriteOutcome{step, err};
    };
    if (open == WriteOpen::kStream) {
        // A "w" stream: write-only, created and truncated, as fopen opens it.
        android::base::unique_fd fd(
            this->open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
        std::unique_ptr<FILE, FileCloser> node(fd < 0 ? nullptr : fdopen(fd.get(), "w"));
        // The stream owns the descriptor from here.
        if (node != nullptr) [[maybe_unused]] const int owned = fd.release();
        if (node == nullptr) return failed(WriteOutcome::Failed::kOpen, onOpenFailure);
        if (fwrite(text.data(), 1, text.size(), node.get()) < text.size()) {
            return failed(WriteOutcome::Failed::kWrite, onWriteFailure);
        }
        return {WriteOutcome::Failed::kNothing, 0};
    }
    android::base::unique_fd fd(this->open(path, O_WRONLY | O_CLOEXEC));
    if (fd < 0) return failed(WriteOutcome::Failed::kOpen, onOpenFailure);
    // A write of nothing leaves errno alone; start from 0 so its report is not stale.
    errno = 0;
    const ssize_t written = mWriter->write(fd, text.data(), text.size());
    WriteOutcome outcome = written < 0 ? failed(WriteOutcome::Failed::kWrite, onWriteFailure)
                                       : WriteOutcome{WriteOutcome::Failed::kNothing, errno};
    outcome.written = written;
    return outcome;
}

bool KernelNodes::forEachEntry(const char* path,
                               const std::function<bool(const dirent&)>& onEntry) const {
    android::base::unique_fd fd(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::unique_ptr<DIR, DirCloser> dir(fd < 0 ? nullptr : fdopendir(fd.get()));
    // The directory stream owns the descriptor from here.
    if (dir != nullptr) [[maybe_unused]] const int owned = fd.release();
    if (dir == nullptr) return false;
    for (const dirent* entry; (entry = readdir(dir.get())) != nullptr;) {
        if (!onEntry(*entry)) break;
    }
    return true;
}

}  // namespace aidl::vendor::vyren::hardware::performance
