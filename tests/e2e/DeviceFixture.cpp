#include "DeviceFixture.h"

#include <android/binder_ibinder.h>
#include <grp.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>

namespace e2e {

namespace fs = std::filesystem;

void DeviceTest::SetUp() {
    const std::string services = std::string(mDir.path) + "/services";
    ASSERT_EQ(mkdir(services.c_str(), 0755), 0);
    // Inherited by every child, so daemons and clients of this case meet here and nowhere else.
    ASSERT_EQ(setenv("HOST_BINDER_DIR", services.c_str(), 1), 0);
}

void DeviceTest::TearDown() {
    for (const auto& child : mChildren) {
        child->stop();
        if (HasFailure()) std::cout << "--- daemon: " << child->result().describe() << std::endl;
    }
}

void DeviceTest::copyTree(const std::string& tree) {
    std::error_code error;
    fs::copy(std::string(E2E_SIM_DIR) + "/" + tree, mDevice,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    ASSERT_FALSE(error) << "copying " << tree << ": " << error.message();
}

Child* DeviceTest::startDaemon(const std::vector<std::string>& args) {
    std::vector<std::string> argv = {kDaemon, "--root", mDevice};
    argv.insert(argv.end(), args.begin(), args.end());
    Child* daemon = mChildren.emplace_back(std::make_unique<Child>(argv)).get();
    const bool answered = WaitFor(
        [&] {
            ndk::SpAIBinder binder = lookUp();
            return daemon->ended() ||
                   (binder.get() != nullptr && AIBinder_ping(binder.get()) == STATUS_OK);
        },
        kLimit);
    if (answered && !daemon->ended()) return daemon;
    ADD_FAILURE() << "the daemon did not start: " << daemon->result().describe();
    return nullptr;
}

RunResult DeviceTest::perfctl(const std::vector<std::string>& args) const {
    std::vector<std::string> argv = {kPerfctl};
    argv.insert(argv.end(), args.begin(), args.end());
    return RunProgram(argv, kLimit);
}

std::string DeviceTest::readNode(const std::string& node) const {
    std::string content;
    EXPECT_TRUE(android::base::ReadFileToString(mDevice + node, &content)) << node;
    return content;
}

void DeviceTest::writeNode(const std::string& node, const std::string& content) const {
    ASSERT_TRUE(android::base::WriteStringToFile(content, mDevice + node)) << node;
}

RunResult DeviceTest::runAsUid(uid_t uid, std::vector<std::string> argv) const {
    const std::string copy = std::string(mDir.path) + "/" + fs::path(argv[0]).filename().string();
    std::error_code error;
    fs::copy_file(argv[0], copy, fs::copy_options::overwrite_existing, error);
    if (error || chmod(mDir.path, 0755) != 0) {
        ADD_FAILURE() << "cannot copy " << argv[0] << " to " << copy << ": " << error.message();
        return {};
    }
    argv[0] = copy;
    return RunProgram(argv, kLimit, [uid] {
        if (setgroups(0, nullptr) != 0 || setresgid(uid, uid, uid) != 0 ||
            setresuid(uid, uid, uid) != 0) {
            _exit(126);
        }
    });
}

}  // namespace e2e
