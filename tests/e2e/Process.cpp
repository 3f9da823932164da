#include "Process.h"

#include <android-base/stringprintf.h>
#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <thread>

namespace e2e {

bool WaitFor(const std::function<bool()>& done, milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(milliseconds(10));
    }
    return true;
}

std::string RunResult::describe() const {
    using android::base::StringPrintf;
    const std::string state =
        status == -1 ? "still running"
        : WIFSIGNALED(status)
            ? StringPrintf("signal %d (%s)", WTERMSIG(status), strsignal(WTERMSIG(status)))
            : StringPrintf("exit %d", WEXITSTATUS(status));
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

RunResult RunProgram(const std::vector<std::string>& argv, milliseconds limit,
                     const BeforeExec& beforeExec) {
    Child child(argv, beforeExec);
    child.waitForEnd(limit);
    child.stop();
    return child.result();
}

}  // namespace e2e
