// A simulated device for one test case: a private copy of a device tree, a private service
// directory and the daemons started on them, all removed when the case ends. Nothing is shared
// between cases, so they can run in parallel.
#pragma once

#include <android/binder_auto_utils.h>
#include <gtest/gtest.h>
#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "Process.h"

namespace e2e {

// The programs under test, as the build placed them.
inline constexpr char kDaemon[] = E2E_DAEMON;
inline constexpr char kClient[] = E2E_CLIENT;
inline constexpr char kPerfctl[] = E2E_PERFCTL;

inline constexpr char kDefaultInstance[] = "vendor.vyren.hardware.performance.IPerformance/default";

// Bounded waits, never timing assertions: a case fails only if something never happens.
inline constexpr milliseconds kStartLimit(10000);
inline constexpr milliseconds kCallLimit(10000);

class DeviceTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Copies sim/<tree> to this case's device directory, the node root every service gets.
    void copyTree(const std::string& tree);
    // Starts binary --root <device> [args...] and waits until `instance` answers a ping. Fails
    // the case (with the child's log) and returns nullptr if it does not.
    Child* startService(const std::string& binary, const std::string& instance,
                        const std::vector<std::string>& args = {});
    // copyTree + startService of the daemon under the default instance.
    Child* startDaemon(const std::string& tree = "kernel-5.15", const std::string& allowedUids = "");

    // A fresh proxy for `instance`, or null.
    ndk::SpAIBinder lookUp(const std::string& instance = kDefaultInstance) const;

    // perfctl with the given words, as a separate process.
    RunResult perfctl(const std::vector<std::string>& args) const;

    // Nodes of the device copy, by their device path ("/proc/...").
    std::string nodePath(const std::string& node) const { return mDevice + node; }
    std::string readNode(const std::string& node) const;
    void writeNode(const std::string& node, const std::string& content) const;

    // Runs argv as a process of uid (root only), like an app calling in: argv[0] runs from a
    // copy in this case's directory, which becomes searchable, so that it need not be able to
    // enter the checkout. Services reach it only if started with --allow-uid.
    RunResult runAsUid(uid_t uid, std::vector<std::string> argv) const;

    std::string mDir;         // everything of this case
    std::string mDevice;      // node root
    std::string mServiceDir;  // HOST_BINDER_DIR
    std::vector<std::unique_ptr<Child>> mChildren;
};

}  // namespace e2e
