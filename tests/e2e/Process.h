// Child processes for the end-to-end tests. Every wait is bounded, so a hung child fails the test
// instead of hanging it.
#pragma once

#include <android-base/file.h>
#include <sys/types.h>
#include <sys/wait.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace e2e {

using std::chrono::milliseconds;

// Polls `done` until it holds or `limit` has passed; false if it never held.
bool WaitFor(const std::function<bool()>& done, milliseconds limit);

struct RunResult {
    int status = -1;  // waitpid status; -1 while running, which counts as neither
    std::string out;
    std::string err;

    bool exitedWith(int code) const { return WIFEXITED(status) && WEXITSTATUS(status) == code; }
    bool killedBy(int signal) const { return WIFSIGNALED(status) && WTERMSIG(status) == signal; }
    // "exit 0", "signal 6 (Aborted)" or "still running" and both outputs, for failure messages.
    std::string describe() const;
};

// Runs in the child between fork and exec, e.g. to drop privileges. Must stay async-signal-safe.
using BeforeExec = std::function<void()>;

// A process started from argv (argv[0] is a path), with stdin from /dev/null and stdout and
// stderr in files of its own. Destroying it stops it.
class Child {
  public:
    explicit Child(const std::vector<std::string>& argv, const BeforeExec& beforeExec = nullptr);
    ~Child() { stop(); }

    // True once the process has ended and been reaped.
    bool ended();
    bool waitForEnd(milliseconds limit) {
        return WaitFor([this] { return ended(); }, limit);
    }
    // Kills the process at once, as a crash or the low-memory killer would, and reaps it.
    void stop();
    // The status so far and everything written to both outputs.
    RunResult result() const;

  private:
    TemporaryFile mOut;
    TemporaryFile mErr;
    pid_t mPid = -1;
    int mStatus = -1;
};

// Runs argv to its end, stopping it if it is still running after `limit`.
RunResult RunProgram(const std::vector<std::string>& argv, milliseconds limit = milliseconds(10000),
                     const BeforeExec& beforeExec = nullptr);

}  // namespace e2e
