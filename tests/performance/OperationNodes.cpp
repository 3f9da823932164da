#include "OperationNodes.h"

#include <android-base/strings.h>

#include <filesystem>

namespace aidl::vendor::vyren::hardware::performance {

using testing::Kernels, testing::OperationRow, testing::Outcome;

namespace {

// The releases rows run on: each side of the 5.10 node-tree move and of a major number change.
constexpr const char* kKernelReleases[] = {"4.19.157", "5.9.16", "5.10.66", "6.1.25"};

constexpr char kNoNode[] = " {node} (2): No such file or directory";

// The major number times 100 plus the minor number: 504 for 5.4.233.
int kernelNumber(const std::string& release) {
    return std::stoi(release) * 100 + std::stoi(release.substr(release.find('.') + 1));
}

// A row's outcome with its node and kernel filled in.
Outcome substituted(Outcome outcome, const std::string& node, const std::string& release) {
    const std::string keys[][2] = {{"{node}", node},
                                   {"{version}", release},
                                   {"{kernel}", std::to_string(kernelNumber(release))}};
    const auto fill = [&](std::string& text) {
        for (const auto& [key, value] : keys)
            text = android::base::StringReplace(text, key, value, true);
    };
    fill(outcome.result);
    for (auto& line : outcome.logs) fill(line.text);
    return outcome;
}

// Runs body once per kernel the row holds for, each time on a node root holding no nodes.
template <typename Body>
void forEachKernel(const std::string& root, const OperationRow& row, Body body) {
    for (const char* release : kKernelReleases) {
        const bool newer = kernelNumber(release) >= 510;
        if (row.kernels != Kernels::kAll && newer != (row.kernels == Kernels::kNewer)) continue;
        SCOPED_TRACE(row.name + " on " + release);
        for (const char* top : {"/proc", "/sys", "/dev"}) std::filesystem::remove_all(root + top);
        body(release, std::string(newer ? row.node.newer : row.node.older));
    }
}

}  // namespace

OperationRow testing::switchRow(std::string name, Call call, NodePair node,
                                const std::string& message, std::string failure, Kernels kernels) {
    const Outcome done = {"0", {Debug(message)}};
    if (failure.empty()) failure = "Failed to " + message.substr(0, message.find(' ')) + kNoNode;
    return Row(name, call, node, "stale", message.rfind("disable", 0) == 0 ? "0" : "1", done,
               {"-1", {Error(failure)}}, done, kernels);
}

void OperationNodesTest::expectOutcome(Performance& service, const Outcome& expected,
                                       const std::string& node, const std::string& release) {
    const Outcome outcome = substituted(expected, node, release);
    clearLogs();
    EXPECT_EQ(GetParam().call(service), outcome.result);
    EXPECT_EQ(logs(), outcome.logs);
}

TEST_P(OperationNodesTest, NodePresent) {
    const OperationRow& row = GetParam();
    forEachKernel(mRoot, row, [&](const std::string& release, const std::string& node) {
        setKernel(release);
        writeNode(node, row.content);
        auto service = makeService();
        expectOutcome(*service, row.present, node, release);
        EXPECT_EQ(readNode(node), row.written.value_or(row.content));
        // The same node refusing every write, then taking no bytes of one.
        for (const auto* outcome : {&row.refused, &row.takesNoBytes}) {
            if (!*outcome) continue;
            std::filesystem::remove(path(node));
            outcome == &row.refused ? makeRefusingNode(node) : makeNodeTakingNoBytes(node);
            expectOutcome(*service, **outcome, node, release);
        }
    });
}

TEST_P(OperationNodesTest, NodeAbsent) {
    forEachKernel(mRoot, GetParam(), [&](const std::string& release, const std::string& node) {
        auto service = makeService(release);
        // Every node lives under /proc, /sys or /dev; without those no node has a parent.
        for (const char* top : {"/proc", "/sys", "/dev"}) std::filesystem::remove_all(path(top));
        expectOutcome(*service, GetParam().absent, node, release);
    });
}

}  // namespace aidl::vendor::vyren::hardware::performance
