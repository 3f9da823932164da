// Child processes for the end-to-end tests: run-to-completion commands with captured output, and
// long-running children (daemons, looping clients) stopped by the test. Every wait is bounded so a
// hung child fails the test instead of hanging it.
#pragma once

#include <android-base/unique_fd.h>
#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace e2e {

using std::chrono::milliseconds;

// Runs in the child between fork and exec, e.g. to drop privileges. Must stay async-signal-safe.
using BeforeExec = std::function<void()>;

// "exit 0", "signal 6 (Aborted)" or "still running": a wait status for failure messages.
std::string DescribeStatus(int status);

struct RunResult {
    // waitpid status; -1 when the process had to be killed after its time limit.
    int status = -1;
    std::string out;
    std::string err;

    bool exitedWith(int code) const;
    bool killedBy(int signal) const;
    // Status and both outputs, for failure messages.
    std::string describe() const;
};

// Runs argv (argv[0] is a path) with stdin from /dev/null and both outputs captured, and waits for
// it at most `limit`.
RunResult RunProgram(const std::vector<std::string>& argv, milliseconds limit = milliseconds(10000),
                     const BeforeExec& beforeExec = nullptr);

// A child that runs until the test stops it. Its stdout is a pipe the test reads line by line;
// its stderr, and its stdout too when no pipe is wanted, go to a log file.
class Child {
  public:
    enum class Output { kLogFile, kPipe };

    static std::unique_ptr<Child> Spawn(const std::vector<std::string>& argv,
                                        const std::string& logPath, Output output,
                                        const BeforeExec& beforeExec = nullptr);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t pid() const { return mPid; }
    const std::string& logPath() const { return mLogPath; }
    std::string log() const;

    // True once the process has ended; its wait status is then in status().
    bool ended();
    int status() const { return mStatus; }
    // Waits at most `limit` for the process to end on its own.
    bool waitForEnd(milliseconds limit);
    // Reads the next line of stdout without its newline, waiting at most `limit`.
    bool readLine(std::string* line, milliseconds limit);

    void sendSignal(int signal);
    // SIGTERM, then SIGKILL if the process is still there after a few seconds; always reaps it.
    void stop();

  private:
    Child(pid_t pid, android::base::unique_fd out, std::string logPath);

    pid_t mPid;
    android::base::unique_fd mOut;
    std::string mLogPath;
    std::string mPending;
    bool mEnded = false;
    int mStatus = -1;
};

}  // namespace e2e
