#include "DeviceFixture.h"

#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>
#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

namespace e2e {

namespace fs = std::filesystem;

void DeviceTest::SetUp() {
    const std::string services = std::string(mDir.path) + "/services";
    ASSERT_EQ(mkdir(services.c_str(), 0755), 0);
    // Inherited by every child, so daemons and clients of this case meet here and nowhere else.
    ASSERT_EQ(setenv("HOST_BINDER_DIR", services.c_str(), 1), 0);
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

RunResult DeviceTest::perfctl(const std::vector<std::string>& args, uid_t uid) const {
    std::vector<std::string> argv = {kPerfctl};
    if (uid != 0) {
        argv[0] = std::string(mDir.path) + "/perfctl";
        std::error_code error;
        fs::copy_file(kPerfctl, argv[0], fs::copy_options::overwrite_existing, error);
        if (error || chmod(mDir.path, 0755) != 0) {
            ADD_FAILURE() << "cannot copy perfctl to " << argv[0] << ": " << error.message();
            return {};
        }
    }
    argv.insert(argv.end(), args.begin(), args.end());
    return RunProgram(argv, [uid] {
        if (uid != 0 && (setgroups(0, nullptr) != 0 || setresgid(uid, uid, uid) != 0 ||
                         setresuid(uid, uid, uid) != 0)) {
            _exit(126);
        }
    });
}

bool WaitFor(const std::function<bool()>& done, milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(milliseconds(10));
    }
    return true;
}

std::string RunResult::describe() const {
    const std::string state = status == -1          ? "still running"
                              : WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                                    : "exit " + std::to_string(WEXITSTATUS(status));
    return state + "\n--- stdout ---\n" + out + "\n--- stderr ---\n" + err;
}

Child::Child(const std::vector<std::string>& argv, const BeforeExec& beforeExec) {
    std::vector<char*> args;
    for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    // Children started later need not hold this one's outputs open.
    fcntl(mOut.fd, F_SETFD, FD_CLOEXEC);
    fcntl(mErr.fd, F_SETFD, FD_CLOEXEC);
    const android::base::unique_fd in(open("/dev/null", O_RDONLY | O_CLOEXEC));
    mPid = fork();
    if (mPid != 0) return;
    // Only async-signal-safe calls from here on.
    if (dup2(in.get(), 0) < 0 || dup2(mOut.fd, 1) < 0 || dup2(mErr.fd, 2) < 0) _exit(127);
    if (beforeExec) beforeExec();
    execv(args[0], args.data());
    (void)!write(2, "exec failed\n", 12);
    _exit(127);
}

bool Child::ended() {
    int status = 0;
    if (mPid > 0 && waitpid(mPid, &status, WNOHANG) == mPid) {
        mPid = -1;
        mStatus = status;
    }
    return mPid <= 0;
}

void Child::stop() {
    if (ended()) return;
    kill(mPid, SIGKILL);
    if (waitpid(mPid, &mStatus, 0) == mPid) mPid = -1;
}

RunResult Child::result() const {
    RunResult result{mStatus, "", ""};
    android::base::ReadFileToString(mOut.path, &result.out);
    android::base::ReadFileToString(mErr.path, &result.err);
    return result;
}

RunResult RunProgram(const std::vector<std::string>& argv, const BeforeExec& beforeExec) {
    Child child(argv, beforeExec);
    child.waitForEnd(kLimit);
    child.stop();
    return child.result();
}

}  // namespace e2e
