#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "DeviceContext.h"
#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

struct LogLine {
    std::string tag;
    int priority;
    std::string text;

    bool operator==(const LogLine& other) const {
        return tag == other.tag && priority == other.priority && text == other.text;
    }
};
void PrintTo(const LogLine& line, std::ostream* os);

// Descriptor writes as the kernel does them, except on the one node that takes no bytes.
class FaultyNodeWriter : public NodeWriter {
  public:
    ssize_t write(int fd, const void* data, size_t size) const override;
    // The inode of the node whose writes take no bytes; 0 for none.
    std::atomic<ino_t> takesNoBytes{0};
};

// A temporary node root standing in for the kernel's procfs and sysfs, and a capture of every log
// line the service writes. An absent node is modelled by an absent parent directory (a "w" open of
// a missing procfs node fails, where in a plain directory it would create the file); a node that
// refuses writes is a symlink to /dev/full, and one that takes none of the bytes written a file
// whose descriptor writes return 0.
class NodeRootTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Writes proc/version as a kernel of the given release, e.g. "5.15.78".
    void setKernel(const std::string& release);
    // The simulated device: this root, its mounts, and the fixture's node writer.
    DeviceContext context() const;
    // The node layer as a service on the given kernel sees it.
    KernelNodes nodes(KernelVersion version = {5, 15, 78}) const {
        return KernelNodes(mRoot, version, mWriter);
    }
    std::shared_ptr<Performance> makeService() {
        return ndk::SharedRefBase::make<Performance>(context());
    }
    std::shared_ptr<Performance> makeService(const std::string& release) {
        setKernel(release);
        return makeService();
    }
    // A service on the given kernel, with its start-up lines cleared from the logs.
    std::shared_ptr<Performance> quietService(const std::string& release) {
        auto service = makeService(release);
        clearLogs();
        return service;
    }

    std::string path(const std::string& node) const { return mRoot + node; }
    void writeNode(const std::string& node, const std::string& content);
    std::string readNode(const std::string& node) const;
    void makeDirectoryAt(const std::string& node) {
        std::filesystem::create_directories(path(node));
    }
    void makeRefusingNode(const std::string& node) { makeLink(node, "/dev/full"); }
    // Makes the node a symlink to target, e.g. a node of the host.
    void makeLink(const std::string& node, const std::string& target);
    void makeNodeTakingNoBytes(const std::string& node);

    std::vector<LogLine> logs() const;
    void clearLogs();

    std::string mRoot;
    std::shared_ptr<FaultyNodeWriter> mWriter = std::make_shared<FaultyNodeWriter>();
};

// A node root with a service on a 5.15 kernel, made before the test with its lines cleared.
class NodeRootServiceTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        mService = quietService("5.15.78");
    }

    std::shared_ptr<Performance> mService;
};

}  // namespace aidl::vendor::vyren::hardware::performance
