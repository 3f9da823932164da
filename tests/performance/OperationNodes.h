#pragma once

// The operation-nodes table: each operation as seen from the kernel node it uses. A row names the
// call, the node on each tree, the node's bytes before and after, and the result and log lines
// with the node present, absent and, where it matters, refusing writes or taking no bytes. The
// generic tests in OperationNodes.cpp run every row on each kernel it holds for; each feature's
// test file adds its rows with INSTANTIATE_OPERATION_ROWS.

#include <android/log.h>

#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "NodeRootFixture.h"

namespace aidl::vendor::vyren::hardware::performance::testing {

// Performs one call with fixed arguments and returns its result as text: numbers and booleans in
// decimal, strings as they stand, "" for an operation without a result.
using Call = std::function<std::string(Performance&)>;

// A result's text; a test file adds an overload for a parcelable result its rows compare.
template <typename T>
std::string resultText(const T& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

// call(&Performance::writeMemMonitor, "cmd") is the row's call with that argument.
template <typename... Params, typename... Args>
Call call(::ndk::ScopedAStatus (Performance::*op)(Params...), Args... args) {
    return [=](Performance& service) -> std::string {
        if constexpr (sizeof...(Params) == sizeof...(Args)) {
            EXPECT_TRUE((service.*op)(args...).isOk());
            return "";
        } else {
            using Out = std::remove_pointer_t<
                std::tuple_element_t<sizeof...(Params) - 1, std::tuple<Params...>>>;
            Out out{};
            EXPECT_TRUE((service.*op)(args..., &out).isOk());
            return resultText(out);
        }
    };
}

// Log lines under the service's tag. In a row's results and texts "{node}" stands for the node's
// device path, "{version}" for the kernel's release, e.g. 5.4.233, and "{kernel}" for its major
// number times 100 plus its minor number, e.g. 504.
constexpr char kServiceTag[] = "PerformanceService";
struct ServiceLog {
    int priority;
    LogLine operator()(std::string text) const { return {kServiceTag, priority, std::move(text)}; }
};
inline constexpr ServiceLog Debug{ANDROID_LOG_DEBUG}, Info{ANDROID_LOG_INFO},
    Error{ANDROID_LOG_ERROR};

// The kernels a row holds for: every one, or those on one side of the 5.10 node-tree move.
enum class Kernels { kAll, kOlder, kNewer };

struct Outcome {
    std::string result;
    std::vector<LogLine> logs;
};

struct OperationRow {
    // Unique within its table; letters, digits and underscores only.
    std::string name;
    Call call;
    // The node on an older and on a newer kernel; the same path twice when the version plays no
    // part.
    NodePair node;
    Kernels kernels = Kernels::kAll;
    // The node's bytes before the call.
    std::string content;
    // The node's bytes after the call; nullopt when the call leaves the node as it was.
    std::optional<std::string> written;
    // With the node present, and with its parent directory absent.
    Outcome present;
    Outcome absent;
    // With the node a symlink to /dev/full, which takes an open and refuses every write.
    std::optional<Outcome> refused;
    // With the node taking none of the bytes written: each write returns 0.
    std::optional<Outcome> takesNoBytes = std::nullopt;
};

// Rows are built by functions rather than braces, so that a table of them stays compact. This one
// is for a node chosen by the kernel's tree, on the kernels given.
inline OperationRow Row(std::string name, Call call, NodePair node, std::string content,
                        std::optional<std::string> written, Outcome present, Outcome absent,
                        std::optional<Outcome> refused = {}, Kernels kernels = Kernels::kAll,
                        std::optional<Outcome> takesNoBytes = {}) {
    return {name, call, node, kernels, content, written, present, absent, refused, takesNoBytes};
}
// A row whose node is the same path on every tree, for the builders that take a pair.
constexpr NodePair same(const char* node) {
    return {node, node};
}
// A row whose node is the same on every kernel.
inline OperationRow Row(std::string name, Call call, const char* node, std::string content,
                        std::optional<std::string> written, Outcome present, Outcome absent,
                        std::optional<Outcome> refused = std::nullopt) {
    return Row(name, call, same(node), content, written, present, absent, refused);
}
// Written for a row whose call leaves its node as it was.
inline constexpr std::nullopt_t kUnchanged = std::nullopt;
// A call that never reaches its node on these kernels (it is refused first, or has no node there):
// the same outcome whether the node is present or not, and the node untouched.
inline OperationRow unreached(std::string name, Call call, const char* node, Outcome outcome,
                              Kernels kernels = Kernels::kAll) {
    return Row(name, call, same(node), "0", kUnchanged, outcome, outcome, {}, kernels);
}

// A switch: writes 0 for a message that starts with "disable", else 1, and logs the message; a
// refused write goes unnoticed. Without the node it answers -1 and logs failure, by default
// "Failed to <the message's first word> {node} (2): No such file or directory".
OperationRow switchRow(std::string name, Call call, NodePair node, const std::string& message,
                       std::string failure = "", Kernels kernels = Kernels::kAll);

// Names a row in test output instead of dumping its bytes.
inline void PrintTo(const OperationRow& row, std::ostream* os) {
    *os << row.name;
}

}  // namespace aidl::vendor::vyren::hardware::performance::testing

namespace aidl::vendor::vyren::hardware::performance {

class OperationNodesTest : public NodeRootTest,
                           public ::testing::WithParamInterface<testing::OperationRow> {
  protected:
    // Calls the row's operation and checks its result and log lines against expected, with the
    // node and the kernel of release filled in.
    void expectOutcome(Performance& service, const testing::Outcome& expected,
                       const std::string& node, const std::string& release);
};

}  // namespace aidl::vendor::vyren::hardware::performance

// Adds a feature's rows to the table; use it inside namespace
// aidl::vendor::vyren::hardware::performance.
#define INSTANTIATE_OPERATION_ROWS(group, rows)                                    \
    INSTANTIATE_TEST_SUITE_P(group, OperationNodesTest, ::testing::ValuesIn(rows), \
                             [](const auto& info) { return info.param.name; })

// OP(writeMemMonitor, "cmd") is a row's name and call: the operation's name, and the operation
// called with those arguments.
#define OP(op, ...)                                                   \
#op, ::aidl::vendor::vyren::hardware::performance::testing::call( \
             &::aidl::vendor::vyren::hardware::performance::Performance::op, ##__VA_ARGS__)
