#include "NodeRootFixture.h"

#include <android-base/file.h>
#include <android/log.h>
#include <processgroup_host.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

std::mutex gLogLock;
std::vector<LogLine> gLogs;

void captureLog(const struct __android_logger_data* data, const char* message) {
    std::lock_guard<std::mutex> lock(gLogLock);
    gLogs.push_back(
        {data->tag != nullptr ? data->tag : "", data->priority, message != nullptr ? message : ""});
}

}  // namespace

ssize_t FaultyNodeWriter::write(int fd, const void* data, size_t size) const {
    struct stat st;
    const ino_t inode = takesNoBytes.load();
    if (inode != 0 && fstat(fd, &st) == 0 && st.st_ino == inode) return 0;
    return ::write(fd, data, size);
}

void PrintTo(const LogLine& line, std::ostream* os) {
    *os << "{" << line.tag << ", " << line.priority << ", \"" << line.text << "\"}";
}

void NodeRootTest::SetUp() {
    char templ[] = "/tmp/performance-nodes-XXXXXX";
    ASSERT_NE(mkdtemp(templ), nullptr);
    mRoot = templ;
    // Registrations of this test stay in a socket directory of its own.
    setenv("HOST_BINDER_DIR", (mRoot + "-binder").c_str(), 1);
    __android_log_set_logger(captureLog);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    clearLogs();
}

DeviceContext NodeRootTest::context() const {
    DeviceContext context;
    context.nodeRoot = mRoot;
    context.cgroupControllerPath = [root = mRoot](const std::string& controller, std::string* p) {
        return HostCgroupControllerPath(root, controller, p);
    };
    context.nodeWriter = mWriter;
    return context;
}

void NodeRootTest::TearDown() {
    std::error_code ignored;
    std::filesystem::remove_all(mRoot, ignored);
    std::filesystem::remove_all(mRoot + "-binder", ignored);
}

void NodeRootTest::setKernel(const std::string& release) {
    writeNode("/proc/version", "Linux version " + release +
                                   "-android13-8-g1a2b3c4d (build@host) (clang version 14.0.7)"
                                   " #1 SMP PREEMPT Mon Oct 3 12:00:00 UTC 2022\n");
}

void NodeRootTest::writeNode(const std::string& node, const std::string& content) {
    // A file written here is never the node taking no bytes, even where it reuses that inode.
    mWriter->takesNoBytes = 0;
    std::filesystem::create_directories(std::filesystem::path(path(node)).parent_path());
    ASSERT_TRUE(android::base::WriteStringToFile(content, path(node))) << node;
}

std::string NodeRootTest::readNode(const std::string& node) const {
    std::string content;
    EXPECT_TRUE(android::base::ReadFileToString(path(node), &content)) << node;
    return content;
}

void NodeRootTest::makeLink(const std::string& node, const std::string& target) {
    std::filesystem::create_directories(std::filesystem::path(path(node)).parent_path());
    ASSERT_EQ(symlink(target.c_str(), path(node).c_str()), 0) << node;
}

void NodeRootTest::makeNodeTakingNoBytes(const std::string& node) {
    writeNode(node, "");
    struct stat st;
    ASSERT_EQ(stat(path(node).c_str(), &st), 0) << node;
    mWriter->takesNoBytes = st.st_ino;
}

std::vector<LogLine> NodeRootTest::logs() const {
    std::lock_guard<std::mutex> lock(gLogLock);
    return gLogs;
}

void NodeRootTest::clearLogs() {
    std::lock_guard<std::mutex> lock(gLogLock);
    gLogs.clear();
}

}  // namespace aidl::vendor::vyren::hardware::performance
