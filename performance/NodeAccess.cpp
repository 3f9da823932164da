// The conventions by which every operation reads and writes kernel nodes.

#define LOG_TAG "PerformanceService"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <log/log.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

namespace {

// Whole-node line reads take the node in chunks of this size.
constexpr size_t kLineChunk = 4096;

}  // namespace

std::string Performance::nodePath(std::string_view path) const {
    std::string resolved;
    resolved.reserve(mNodeRoot.size() + path.size());
    resolved.append(mNodeRoot).append(path);
    return resolved;
}

bool Performance::usesNewNodeTree() const {
    return mKernelMajor > 5 || (mKernelMajor == 5 && mKernelMinor >= 10);
}

const char* Performance::choose(const NodePair& node) const {
    return usesNewNodeTree() ? node.newer : node.older;
}

int Performance::readInterface(const char* path, int offset, void* buf, int size) {
    if (offset < 0 || buf == nullptr || size < 1) return -1;

    android::base::unique_fd fd(open(nodePath(path).c_str(), O_RDONLY | O_CLOEXEC));
    if (fd < 0) {
        ALOGD("open %s failed! err:%s, Linux version %d.%d.%d", path, strerror(errno), mKernelMajor,
              mKernelMinor, mKernelPatch);
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

bool Performance::ReadFileToStringT(const std::string& path, std::string* out) const {
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

int Performance::switchWrite(const char* path, bool on, const char* failFormat,
                             const char* message) {
    if (writeText(path, on ? "1" : "0", {WriteOpen::kStream, failFormat, nullptr}).failed ==
        WriteOutcome::Failed::kOpen) {
        return -1;
    }
    ALOGD("%s", message);
    return 0;
}

int Performance::valueWrite(const char* path, std::string_view text, WriteCheck check,
                            const std::string& message, const char* writeFailFormat,
                            const char* openFailFormat) {
    const int written = writeOnce(path, text, nullptr, openFailFormat);
    if (written == -2) return -2;
    const int err = errno;
    if (check == WriteCheck::kNotPositive ? written <= 0 : written < 0) {
        ALOGE(writeFailFormat, path, err, strerror(err));
    }
    if (!message.empty()) ALOGD("%s", message.c_str());
    return written;
}

std::string Performance::readNode(const char* path, size_t size) {
    return readNode(path, size, nullptr);
}

std::string Performance::readNode(const ReportNode& report) {
    return usesNewNodeTree() ? readNode(report.node.newer, report.newerSize)
                             : readNode(report.node.older, report.olderSize);
}

bool Performance::forEachLine(const char* path, LineOpen mode,
                              const std::function<void(std::string_view)>& onLine) const {
    const int flags = (mode == LineOpen::kRead ? O_RDONLY : O_RDWR) | O_CLOEXEC;
    android::base::unique_fd fd(open(nodePath(path).c_str(), flags));
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

std::string Performance::readWholeNode(const char* path, const WholeNodeRead& how) const {
    std::string text = how.prefix;
    const bool opened = forEachLine(path, how.mode, [&](std::string_view line) {
        text.append(line);
        text.push_back(how.terminator);
    });
    if (opened) return text;

    const int err = errno;
    switch (how.log) {
        case OpenFailureLog::kNone:
            break;
        case OpenFailureLog::kPath:
            __android_log_print(how.logPriority, LOG_TAG, how.logFormat, path);
            break;
        case OpenFailureLog::kPathErrno:
            __android_log_print(how.logPriority, LOG_TAG, how.logFormat, path, err, strerror(err));
            break;
        case OpenFailureLog::kPathPathError:
            __android_log_print(how.logPriority, LOG_TAG, how.logFormat, path, path, strerror(err));
            break;
        case OpenFailureLog::kKernelVersion:
            __android_log_print(how.logPriority, LOG_TAG, how.logFormat, mKernelMajor, mKernelMinor,
                                mKernelPatch);
            break;
    }
    return how.failureText;
}

std::string Performance::readNode(const char* path, size_t size, const char* fallback) {
    std::vector<char> buffer(size, '\0');
    const int count = readInterface(path, 0, buffer.data(), static_cast<int>(size));
    // The fallback overwrites the start of whatever a failed first read left.
    if (count < 1 && fallback != nullptr) {
        (void)readInterface(fallback, 0, buffer.data(), static_cast<int>(size));
    }
    // A node that fills the whole buffer leaves no terminator.
    return std::string(buffer.data(), strnlen(buffer.data(), size));
}

bool Performance::readSmallNode(const std::string& path, std::string* out, size_t size) const {
    android::base::unique_fd fd(open(nodePath(path).c_str(), O_RDONLY | O_CLOEXEC));
    if (fd < 0) return false;
    std::vector<char> buffer(size, '\0');
    // One read only: a longer node is cut at size - 1 bytes, the last byte being the terminator.
    (void)TEMP_FAILURE_RETRY(read(fd, buffer.data(), size));
    buffer[size - 1] = '\0';
    out->append(buffer.data());
    return true;
}

int Performance::writeOnce(const char* path, std::string_view bytes, const char* writeFailFormat,
                           const char* openFailFormat) {
    const WriteOutcome outcome =
        writeText(path, bytes, {WriteOpen::kDescriptor, openFailFormat, writeFailFormat});
    if (outcome.failed == WriteOutcome::Failed::kOpen) return -2;
    // Closing keeps errno, which is the write's again for the caller's own report.
    errno = outcome.err;
    return static_cast<int>(outcome.written);
}

WriteOutcome Performance::writeText(const char* path, std::string_view text, const TextWrite& how) {
    const auto failed = [&](WriteOutcome::Failed step, const char* format) {
        const int err = errno;
        // printf ignores the arguments a format does not use.
        if (format != nullptr) {
            ALOGE(format, path, err, strerror(err), mKernelMajor, mKernelMinor, mKernelPatch);
        }
        return WriteOutcome{step, err};
    };
    if (how.open == WriteOpen::kStream) {
        std::unique_ptr<FILE, FileCloser> node(fopen(nodePath(path).c_str(), "we"));
        if (node == nullptr) return failed(WriteOutcome::Failed::kOpen, how.openFailure);
        if (fwrite(text.data(), 1, text.size(), node.get()) < text.size()) {
            return failed(WriteOutcome::Failed::kWrite, how.writeFailure);
        }
        return {WriteOutcome::Failed::kNothing, 0};
    }
    android::base::unique_fd fd(open(nodePath(path).c_str(), O_WRONLY | O_CLOEXEC));
    if (fd < 0) return failed(WriteOutcome::Failed::kOpen, how.openFailure);
    // A write of nothing leaves errno alone; start from 0 so its report is not stale.
    errno = 0;
    const ssize_t written = write(fd, text.data(), text.size());
    WriteOutcome outcome = written < 0 ? failed(WriteOutcome::Failed::kWrite, how.writeFailure)
                                       : WriteOutcome{WriteOutcome::Failed::kNothing, errno};
    outcome.written = written;
    return outcome;
}

namespace {

struct DirCloser {
    void operator()(DIR* d) const { closedir(d); }
};

}  // namespace

bool Performance::forEachEntry(const char* path,
                               const std::function<bool(const dirent&)>& onEntry) const {
    std::unique_ptr<DIR, DirCloser> dir(opendir(nodePath(path).c_str()));
    if (dir == nullptr) return false;
    for (const dirent* entry; (entry = readdir(dir.get())) != nullptr;) {
        if (!onEntry(*entry)) break;
    }
    return true;
}

}  // namespace aidl::vendor::vyren::hardware::performance
