// A simulated device for one test case: a private copy of a device tree, a private service
// directory and the daemons started on them, all removed when the case ends. Nothing is shared
// between cases, so they can run in parallel.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>

#include <memory>

#include "Process.h"

namespace e2e {

// The programs under test, as the build placed them.
inline constexpr char kDaemon[] = E2E_DAEMON;
inline constexpr char kPerfctl[] = E2E_PERFCTL;

inline constexpr char kInstance[] = "vendor.vyren.hardware.performance.IPerformance/default";

// Bounded waits, never timing assertions: a case fails only if something never happens.
inline constexpr milliseconds kLimit(10000);

class DeviceTest : public ::testing::Test {
  protected:
    void SetUp() override;
    // Prints the daemons' outputs when the case failed.
    void TearDown() override;

    // Copies sim/<tree> to this case's device directory, the node root every daemon gets.
    void copyTree(const std::string& tree);
    // Starts the daemon with --root <device> and args, and waits until it answers a ping. Fails
    // the case (with the daemon's output) and returns nullptr if it does not.
    Child* startDaemon(const std::vector<std::string>& args = {});
    ndk::SpAIBinder lookUp() const {
        return ndk::SpAIBinder(AServiceManager_checkService(kInstance));
    }

    // perfctl with the given words, as a separate process.
    RunResult perfctl(const std::vector<std::string>& args) const;

    // Nodes of the device copy, by their device path ("/proc/...").
    std::string readNode(const std::string& node) const;
    void writeNode(const std::string& node, const std::string& content) const;

    // Runs argv as a process of uid (root only), like an app calling in: argv[0] runs from a
    // copy in this case's directory, which becomes searchable, so that it need not be able to
    // enter the checkout. Daemons reach it only if started with --allow-uid.
    RunResult runAsUid(uid_t uid, std::vector<std::string> argv) const;

    TemporaryDir mDir;                                               // everything of this case
    const std::string mDevice = std::string(mDir.path) + "/device";  // node root
    std::vector<std::unique_ptr<Child>> mChildren;
};

}  // namespace e2e
