#include "DeviceFixture.h"

#include <android-base/file.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <errno.h>
#include <grp.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <thread>

namespace e2e {

namespace fs = std::filesystem;

void DeviceTest::SetUp() {
    char templ[] = "/tmp/e2e-XXXXXX";
    ASSERT_NE(mkdtemp(templ), nullptr) << strerror(errno);
    mDir = templ;
    mDevice = mDir + "/device";
    mServiceDir = mDir + "/services";
    ASSERT_EQ(mkdir(mServiceDir.c_str(), 0755), 0) << strerror(errno);
    // Inherited by every child, so services and clients of this case meet here and nowhere else.
    ASSERT_EQ(setenv("HOST_BINDER_DIR", mServiceDir.c_str(), 1), 0);
}

void DeviceTest::TearDown() {
    for (auto it = mChildren.rbegin(); it != mChildren.rend(); ++it) (*it)->stop();
    if (HasFailure()) {
        for (const auto& child : mChildren) {
            std::cout << "--- " << child->logPath() << " (" << DescribeStatus(child->status())
                      << ") ---\n"
                      << child->log() << std::endl;
        }
    }
    mChildren.clear();
    std::error_code ignored;
    fs::remove_all(mDir, ignored);
}

void DeviceTest::copyTree(const std::string& tree) {
    std::error_code error;
    fs::copy(std::string(E2E_SIM_DIR) + "/" + tree, mDevice,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    ASSERT_FALSE(error) << "copying " << tree << ": " << error.message();
}

Child* DeviceTest::startService(const std::string& binary, const std::string& instance,
                                const std::vector<std::string>& args) {
    const std::string log = mDir + "/" + fs::path(binary).filename().string() + "-" +
                            std::to_string(mChildren.size()) + ".log";
    std::vector<std::string> argv = {binary, "--root", mDevice};
    argv.insert(argv.end(), args.begin(), args.end());
    auto child = Child::Spawn(argv, log, Child::Output::kLogFile);
    if (child == nullptr) {
        ADD_FAILURE() << "cannot start " << binary << ": " << strerror(errno);
        return nullptr;
    }
    Child* started = child.get();
    mChildren.push_back(std::move(child));

    const auto deadline = std::chrono::steady_clock::now() + kStartLimit;
    for (;;) {
        if (started->ended()) {
            ADD_FAILURE() << binary << " ended while starting ("
                          << DescribeStatus(started->status()) << "):\n"
                          << started->log();
            return nullptr;
        }
        ndk::SpAIBinder binder = lookUp(instance);
        if (binder.get() != nullptr && AIBinder_ping(binder.get()) == STATUS_OK) return started;
        if (std::chrono::steady_clock::now() >= deadline) {
            ADD_FAILURE() << instance << " did not answer within " << kStartLimit.count()
                          << " ms:\n"
                          << started->log();
            return nullptr;
        }
        std::this_thread::sleep_for(milliseconds(20));
    }
}

Child* DeviceTest::startDaemon(const std::string& tree, const std::string& allowedUids) {
    copyTree(tree);
    if (HasFatalFailure()) return nullptr;
    if (allowedUids.empty()) return startService(kDaemon, kDefaultInstance);
    return startService(kDaemon, kDefaultInstance, {"--allow-uid", allowedUids});
}

ndk::SpAIBinder DeviceTest::lookUp(const std::string& instance) const {
    return ndk::SpAIBinder(AServiceManager_checkService(instance.c_str()));
}

RunResult DeviceTest::perfctl(const std::vector<std::string>& args) const {
    std::vector<std::string> argv = {kPerfctl};
    argv.insert(argv.end(), args.begin(), args.end());
    return RunProgram(argv, kCallLimit);
}

std::string DeviceTest::readNode(const std::string& node) const {
    std::string content;
    EXPECT_TRUE(android::base::ReadFileToString(nodePath(node), &content)) << node;
    return content;
}

void DeviceTest::writeNode(const std::string& node, const std::string& content) const {
    ASSERT_TRUE(android::base::WriteStringToFile(content, nodePath(node))) << node;
}

RunResult DeviceTest::runAsUid(uid_t uid, std::vector<std::string> argv) const {
    RunResult refused;
    const std::string bin = mDir + "/bin";
    std::error_code error;
    fs::create_directories(bin, error);
    const std::string copy = bin + "/" + fs::path(argv[0]).filename().string();
    fs::copy_file(argv[0], copy, fs::copy_options::overwrite_existing, error);
    if (error || chmod(bin.c_str(), 0755) != 0 || chmod(mDir.c_str(), 0755) != 0) {
        ADD_FAILURE() << "cannot copy " << argv[0] << " to " << bin << ": " << error.message();
        return refused;
    }
    argv[0] = copy;
    return RunProgram(argv, kCallLimit, [uid] {
        if (setgroups(0, nullptr) != 0 || setresgid(uid, uid, uid) != 0 ||
            setresuid(uid, uid, uid) != 0) {
            _exit(126);
        }
    });
}

}  // namespace e2e
