#include "Process.h"

#include <android-base/file.h>
#include <android-base/stringprintf.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

namespace e2e {

using android::base::unique_fd;
using Clock = std::chrono::steady_clock;

namespace {

constexpr milliseconds kPollStep(10);
constexpr milliseconds kStopGrace(5000);

std::vector<char*> CArgv(const std::vector<std::string>& argv) {
    std::vector<char*> out;
    for (const auto& arg : argv) out.push_back(const_cast<char*>(arg.c_str()));
    out.push_back(nullptr);
    return out;
}

// The part of a child's life between fork and exec. Only async-signal-safe calls from here on.
[[noreturn]] void ExecChild(char* const* argv, int in, int out, int err,
                            const BeforeExec& beforeExec) {
    if (dup2(in, STDIN_FILENO) < 0 || dup2(out, STDOUT_FILENO) < 0) _exit(127);
    if (dup2(err, STDERR_FILENO) < 0) _exit(127);
    if (beforeExec) beforeExec();
    execv(argv[0], argv);
    const char* reason = strerror(errno);
    (void)!write(STDERR_FILENO, "exec failed: ", 13);
    (void)!write(STDERR_FILENO, reason, strlen(reason));
    (void)!write(STDERR_FILENO, "\n", 1);
    _exit(127);
}

unique_fd DevNull() {
    return unique_fd(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

// Waits for pid until deadline; true with *status filled when it ended.
bool WaitUntil(pid_t pid, Clock::time_point deadline, int* status) {
    for (;;) {
        const pid_t done = waitpid(pid, status, WNOHANG);
        if (done == pid) return true;
        if (done < 0 && errno != EINTR) return false;
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(kPollStep);
    }
}

}  // namespace

std::string DescribeStatus(int status) {
    if (status == -1) return "still running";
    if (WIFEXITED(status)) return android::base::StringPrintf("exit %d", WEXITSTATUS(status));
    if (WIFSIGNALED(status)) {
        return android::base::StringPrintf("signal %d (%s)", WTERMSIG(status),
                                           strsignal(WTERMSIG(status)));
    }
    return android::base::StringPrintf("wait status %#x", status);
}

bool RunResult::exitedWith(int code) const {
    return status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == code;
}

bool RunResult::killedBy(int signal) const {
    return status != -1 && WIFSIGNALED(status) && WTERMSIG(status) == signal;
}

std::string RunResult::describe() const {
    return DescribeStatus(status) + "\n--- stdout ---\n" + out + "\n--- stderr ---\n" + err;
}

RunResult RunProgram(const std::vector<std::string>& argv, milliseconds limit,
                     const BeforeExec& beforeExec) {
    RunResult result;
    const Clock::time_point deadline = Clock::now() + limit;
    int outPipe[2];
    int errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0) return result;
    unique_fd outRead(outPipe[0]), outWrite(outPipe[1]);
    if (pipe2(errPipe, O_CLOEXEC) != 0) return result;
    unique_fd errRead(errPipe[0]), errWrite(errPipe[1]);
    unique_fd in = DevNull();
    std::vector<char*> args = CArgv(argv);

    const pid_t pid = fork();
    if (pid < 0) return result;
    if (pid == 0) ExecChild(args.data(), in.get(), outWrite.get(), errWrite.get(), beforeExec);
    outWrite.reset();
    errWrite.reset();

    pollfd fds[2] = {{outRead.get(), POLLIN, 0}, {errRead.get(), POLLIN, 0}};
    std::string* sinks[2] = {&result.out, &result.err};
    int open = 2;
    while (open > 0) {
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) break;
        if (poll(fds, 2, static_cast<int>(left)) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0) continue;
            char buffer[65536];
            const ssize_t count = read(fds[i].fd, buffer, sizeof(buffer));
            if (count > 0) {
                sinks[i]->append(buffer, static_cast<size_t>(count));
            } else if (count == 0 || errno != EINTR) {
                fds[i].fd = -1;
                --open;
            }
        }
    }

    int status = 0;
    if (WaitUntil(pid, deadline, &status)) {
        result.status = status;
    } else {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        result.status = -1;
    }
    return result;
}

std::unique_ptr<Child> Child::Spawn(const std::vector<std::string>& argv, const std::string& logPath,
                                    Output output, const BeforeExec& beforeExec) {
    unique_fd log(open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
    if (log.get() < 0) return nullptr;
    unique_fd outRead, outWrite;
    if (output == Output::kPipe) {
        int outPipe[2];
        if (pipe2(outPipe, O_CLOEXEC) != 0) return nullptr;
        outRead.reset(outPipe[0]);
        outWrite.reset(outPipe[1]);
    }
    unique_fd in = DevNull();
    std::vector<char*> args = CArgv(argv);

    const pid_t pid = fork();
    if (pid < 0) return nullptr;
    if (pid == 0) {
        ExecChild(args.data(), in.get(), output == Output::kPipe ? outWrite.get() : log.get(),
                  log.get(), beforeExec);
    }
    return std::unique_ptr<Child>(new Child(pid, std::move(outRead), logPath));
}

Child::Child(pid_t pid, unique_fd out, std::string logPath)
    : mPid(pid), mOut(std::move(out)), mLogPath(std::move(logPath)) {}

Child::~Child() {
    stop();
}

std::string Child::log() const {
    std::string text;
    android::base::ReadFileToString(mLogPath, &text);
    return text;
}

bool Child::ended() {
    if (mEnded) return true;
    int status = 0;
    if (waitpid(mPid, &status, WNOHANG) == mPid) {
        mEnded = true;
        mStatus = status;
    }
    return mEnded;
}

bool Child::waitForEnd(milliseconds limit) {
    if (mEnded) return true;
    int status = 0;
    if (!WaitUntil(mPid, Clock::now() + limit, &status)) return false;
    mEnded = true;
    mStatus = status;
    return true;
}

bool Child::readLine(std::string* line, milliseconds limit) {
    const Clock::time_point deadline = Clock::now() + limit;
    for (;;) {
        const size_t newline = mPending.find('\n');
        if (newline != std::string::npos) {
            *line = mPending.substr(0, newline);
            mPending.erase(0, newline + 1);
            return true;
        }
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
        if (mOut.get() < 0 || left <= 0) return false;
        pollfd fd = {mOut.get(), POLLIN, 0};
        const int ready = poll(&fd, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return false;
        char buffer[4096];
        const ssize_t count = read(mOut.get(), buffer, sizeof(buffer));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        mPending.append(buffer, static_cast<size_t>(count));
    }
}

void Child::sendSignal(int signal) {
    if (!mEnded) kill(mPid, signal);
}

void Child::stop() {
    if (ended()) return;
    kill(mPid, SIGTERM);
    if (waitForEnd(kStopGrace)) return;
    kill(mPid, SIGKILL);
    int status = 0;
    while (waitpid(mPid, &status, 0) < 0 && errno == EINTR) {
    }
    mEnded = true;
    mStatus = status;
}

}  // namespace e2e
