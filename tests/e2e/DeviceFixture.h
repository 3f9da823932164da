// A simulated device for one test case: a private copy of a device tree, a private service
// directory and the daemons started on them, all removed when the case ends. Nothing is shared
// between cases, so they can run in parallel.
#pragma once

#include <android-base/file.h>
#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>

#include <chrono>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace e2e {

using std::chrono::milliseconds;

// Bounded waits, never timing assertions: a case fails only if something never happens.
inline constexpr milliseconds kLimit(10000);

// Polls `done` until it holds or `limit` has passed; false if it never held.
bool WaitFor(const std::function<bool()>& done, milliseconds limit);

struct RunResult {
    int status = -1;  // waitpid status; -1 while running, which counts as neither
    std::string out;
    std::string err;

    bool exitedWith(int code) const { return WIFEXITED(status) && WEXITSTATUS(status) == code; }
    bool killedBy(int signal) const { return WIFSIGNALED(status) && WTERMSIG(status) == signal; }
    // "exit 0", "signal 6" or "still running" and both outputs, for failure messages.
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

// Runs argv to its end, stopping it if it is still running after kLimit.
RunResult RunProgram(const std::vector<std::string>& argv, const BeforeExec& beforeExec = nullptr);

// The programs under test, as the build placed them.
inline constexpr char kDaemon[] = E2E_DAEMON;
inline constexpr char kPerfctl[] = E2E_PERFCTL;

inline constexpr char kInstance[] = "vendor.vyren.hardware.performance.IPerformance/default";

class DeviceTest : public ::testing::Test {
  protected:
    void SetUp() override;
    // Prints the daemons' outputs when the case failed.
    void TearDown() override {
        for (const auto& child : mChildren) {
            child->stop();
            if (HasFailure()) std::cout << "--- daemon: " << child->result().describe() << '\n';
        }
    }

    // Copies sim/<tree> to this case's device directory, the node root every daemon gets.
    void copyTree(const std::string& tree);
    // Starts the daemon with --root <device> and args, and waits until it answers a ping. Fails
    // the case (with the daemon's output) and returns nullptr if it does not.
    Child* startDaemon(const std::vector<std::string>& args = {});
    ndk::SpAIBinder lookUp() const {
        return ndk::SpAIBinder(AServiceManager_checkService(kInstance));
    }

    // perfctl with the given words, as a separate process. Under a uid other than root (which
    // needs root) it runs like an app calling in, from a copy in this case's directory, which
    // becomes searchable, so that it need not be able to enter the checkout. Daemons reach it
    // only if started with --allow-uid.
    RunResult perfctl(const std::vector<std::string>& args, uid_t uid = 0) const;

    // Nodes of the device copy, by their device path ("/proc/...").
    std::string readNode(const std::string& node) const {
        std::string content;
        EXPECT_TRUE(android::base::ReadFileToString(mDevice + node, &content)) << node;
        return content;
    }
    void writeNode(const std::string& node, const std::string& content) const {
        ASSERT_TRUE(android::base::WriteStringToFile(content, mDevice + node)) << node;
    }

    TemporaryDir mDir;                                               // everything of this case
    const std::string mDevice = std::string(mDir.path) + "/device";  // node root
    std::vector<std::unique_ptr<Child>> mChildren;
};

}  // namespace e2e
