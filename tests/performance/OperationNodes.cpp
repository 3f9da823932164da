#include "OperationNodes.h"

#include <filesystem>

namespace aidl::vendor::vyren::hardware::performance {

using testing::Kernels, testing::kKernelReleases, testing::OperationRow, testing::Outcome;

namespace {

constexpr char kTag[] = "PerformanceService";

// The major number times 100 plus the minor number: 504 for 5.4.233.
int kernelNumber(const std::string& release) {
    return std::stoi(release) * 100 + std::stoi(release.substr(release.find('.') + 1));
}

// A row's outcome with its node and kernel filled in.
Outcome substituted(const Outcome& outcome, const std::string& node, const std::string& release) {
    const std::string kernel = std::to_string(kernelNumber(release));
    const std::pair<std::string, std::string> keys[] = {
        {"{node}", node}, {"{version}", release}, {"{kernel}", kernel}};
    const auto fill = [&](std::string text) {
        for (const auto& [key, value] : keys) {
            for (size_t at; (at = text.find(key)) != std::string::npos;)
                text.replace(at, key.size(), value);
        }
        return text;
    };
    Outcome out = {fill(outcome.result), {}};
    for (const auto& line : outcome.logs)
        out.logs.push_back({line.tag, line.priority, fill(line.text)});
    return out;
}

// Runs body once per kernel the row holds for, each time on a node root holding no nodes.
template <typename Body>
void forEachKernel(const std::string& root, const OperationRow& row, Body body) {
    for (const char* release : kKernelReleases) {
        const bool newer = kernelNumber(release) >= 510;
        if ((row.kernels == Kernels::kOlder && newer) || (row.kernels == Kernels::kNewer && !newer))
            continue;
        SCOPED_TRACE(row.name + " on " + release);
        for (const char* top : {"/proc", "/sys", "/dev"}) std::filesystem::remove_all(root + top);
        body(release, std::string(newer ? row.node.newer : row.node.older));
    }
}

}  // namespace

const char* const testing::kKernelReleases[5] = {"4.19.157", "5.4.233", "5.9.16", "5.10.66",
                                                 "6.1.25"};

LogLine testing::Debug(std::string text) {
    return {kTag, ANDROID_LOG_DEBUG, std::move(text)};
}
LogLine testing::Info(std::string text) {
    return {kTag, ANDROID_LOG_INFO, std::move(text)};
}
LogLine testing::Error(std::string text) {
    return {kTag, ANDROID_LOG_ERROR, std::move(text)};
}

OperationRow testing::Row(std::string name, Call call, NodePair node, std::string content,
                          std::optional<std::string> written, Outcome present, Outcome absent,
                          std::optional<Outcome> refused, Kernels kernels,
                          std::optional<Outcome> takesNoBytes) {
    return {name, call, node, kernels, content, written, present, absent, refused, takesNoBytes};
}

OperationRow testing::Row(std::string name, Call call, const char* node, std::string content,
                          std::optional<std::string> written, Outcome present, Outcome absent,
                          std::optional<Outcome> refused) {
    return Row(name, call, NodePair{node, node}, content, written, present, absent, refused);
}

void testing::PrintTo(const OperationRow& row, std::ostream* os) {
    *os << row.name;
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
        if (row.refused) {
            std::filesystem::remove(path(node));
            makeRefusingNode(node);
            expectOutcome(*service, *row.refused, node, release);
        }
        if (row.takesNoBytes) {
            std::filesystem::remove(path(node));
            makeNodeTakingNoBytes(node);
            expectOutcome(*service, *row.takesNoBytes, node, release);
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
