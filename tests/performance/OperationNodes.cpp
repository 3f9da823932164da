#include "OperationNodes.h"

#include <filesystem>

namespace aidl::vendor::vyren::hardware::performance {

using testing::Kernels;
using testing::kKernelReleases;
using testing::OperationRow;

namespace {

constexpr char kTag[] = "PerformanceService";

bool isNewerTree(const std::string& release) {
    return release.compare(0, 2, "4.") != 0 && release.compare(0, 3, "5.4") != 0 &&
           release.compare(0, 3, "5.9") != 0;
}

std::string substituted(std::string text, const std::string& node, const std::string& release) {
    const size_t dot = release.find('.');
    const std::string kernel =
        std::to_string(std::stoi(release) * 100 + std::stoi(release.substr(dot + 1)));
    for (const auto& [key, value] : {std::pair<std::string, std::string>{"{node}", node},
                                     std::pair<std::string, std::string>{"{version}", release},
                                     std::pair<std::string, std::string>{"{kernel}", kernel}}) {
        for (size_t at; (at = text.find(key)) != std::string::npos;)
            text.replace(at, key.size(), value);
    }
    return text;
}

std::vector<LogLine> substituted(const std::vector<LogLine>& lines, const std::string& node,
                                 const std::string& release) {
    std::vector<LogLine> out;
    for (const auto& line : lines) {
        out.push_back({line.tag, line.priority, substituted(line.text, node, release)});
    }
    return out;
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

std::string testing::RowName(const ::testing::TestParamInfo<OperationRow>& info) {
    return info.param.name;
}

OperationRow testing::Row(std::string name, Call call, const char* node, std::string content,
                          std::optional<std::string> written, Outcome present, Outcome absent,
                          std::optional<Outcome> refused) {
    return {std::move(name),    std::move(call),    {node, node},
            Kernels::kAll,      std::move(content), std::move(written),
            std::move(present), std::move(absent),  std::move(refused)};
}

void testing::PrintTo(const OperationRow& row, std::ostream* os) {
    *os << row.name;
}

}  // namespace aidl::vendor::vyren::hardware::performance

namespace aidl::vendor::vyren::hardware::performance {

using testing::Kernels;
using testing::kKernelReleases;
using testing::OperationRow;

namespace {

// Runs body once per kernel the row holds for, each time on a node root holding only that
// kernel's version node.
template <typename Body>
void forEachKernel(const std::string& root, const OperationRow& row, Body body) {
    for (const char* release : kKernelReleases) {
        const bool newer = isNewerTree(release);
        if ((row.kernels == Kernels::kOlder && newer) || (row.kernels == Kernels::kNewer && !newer))
            continue;
        SCOPED_TRACE(std::string(row.name) + " on " + release);
        for (const char* top : {"/proc", "/sys", "/dev"}) std::filesystem::remove_all(root + top);
        body(release, std::string(newer ? row.node.newer : row.node.older));
    }
}

}  // namespace

TEST_P(OperationNodesTest, NodePresent) {
    const OperationRow& row = GetParam();
    forEachKernel(mRoot, row, [&](const std::string& release, const std::string& node) {
        setKernel(release);
        writeNode(node, row.content);
        auto service = makeService();
        clearLogs();
        EXPECT_EQ(row.call(*service), substituted(row.present.result, node, release));
        EXPECT_EQ(readNode(node), row.written.value_or(row.content));
        EXPECT_EQ(logs(), substituted(row.present.logs, node, release));
        if (row.refused) {
            // The same node refusing every write.
            std::filesystem::remove(path(node));
            makeRefusingNode(node);
            clearLogs();
            EXPECT_EQ(row.call(*service), substituted(row.refused->result, node, release));
            EXPECT_EQ(logs(), substituted(row.refused->logs, node, release));
        }
        if (row.takesNoBytes) {
            // The same node taking no bytes of a write.
            std::filesystem::remove(path(node));
            makeNodeTakingNoBytes(node);
            clearLogs();
            EXPECT_EQ(row.call(*service), substituted(row.takesNoBytes->result, node, release));
            EXPECT_EQ(logs(), substituted(row.takesNoBytes->logs, node, release));
        }
    });
}

TEST_P(OperationNodesTest, NodeAbsent) {
    const OperationRow& row = GetParam();
    forEachKernel(mRoot, row, [&](const std::string& release, const std::string& node) {
        auto service = makeService(release);
        // Every node lives under /proc, /sys or /dev; without those no node has a parent.
        for (const char* top : {"/proc", "/sys", "/dev"}) std::filesystem::remove_all(mRoot + top);
        clearLogs();
        EXPECT_EQ(row.call(*service), substituted(row.absent.result, node, release));
        EXPECT_EQ(logs(), substituted(row.absent.logs, node, release));
    });
}

}  // namespace aidl::vendor::vyren::hardware::performance
