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

OperationRow testing::switchRow(std::string name, Call call, Paths node, const std::string& message,
                                std::string failure, Kernels kernels) {
    const Outcome done = {"0", {Debug(message)}};
    if (failure.empty()) failure = "Failed to " + message.substr(0, message.find(' ')) + kNoNode;
    return row(name, call)
        .at(node)
        .on(kernels)
        .holding("stale")
        .leaves(message.rfind("disable", 0) == 0 ? "0" : "1")
        .whenPresent(done)
        .whenAbsent({"-1", {Error(failure)}})
        .whenRefused(done);
}

LogLine testing::readFailure(const std::string& n) {
    return Debug("open " + n + " failed! err:No such file or directory, Linux version {version}");
}

OperationRow testing::reportRow(std::string name, Call call, Paths node, size_t size,
                                std::vector<LogLine> tried) {
    // Text in short lines, so that both a cut and a read that stops at a line show.
    std::string text;
    for (size_t i = 0; i < size + 100; ++i) text += i % 27 == 26 ? '\n' : char('a' + i % 27);
    const Outcome present = {text.substr(0, size), tried};
    tried.push_back(readFailure("{node}"));
    return row(name, call).at(node).holding(text).whenPresent(present).whenAbsent({"", tried});
}

OperationRow testing::linesRow(std::string name, Call call, Paths node, Outcome absent) {
    const std::string lines = std::string(5000, 'x') + "\n\nlast";
    return row(name, call).at(node).holding(lines).whenPresent({lines + "\n", {}}).whenAbsent(absent);
}

OperationRow testing::putRow(std::string name, Call call, Paths node) {
    const Outcome refused = {"-1", {Error("Failed to write {node} (28): No space left on device")}};
    OperationRow r =
        row(name, call).at(node).leaves(kPut).whenPresent({"9", {}}).whenRefused(refused);
    r.whenAbsent({"-2", {Error(std::string("Failed to open") + kNoNode)}});
    return r.whenTakingNoBytes({"0", {}});
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
