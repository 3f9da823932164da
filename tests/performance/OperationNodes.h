#pragma once

// The operation-nodes table: each operation as seen from the kernel node it uses. A row names the
// call, the node on each tree, the node's bytes before and after, and the result and log lines
// with the node present, absent and, where it matters, refusing writes or taking no bytes. The
// generic tests in OperationNodes.cpp run every row on each kernel it holds for; each feature's
// test file adds its rows with INSTANTIATE_OPERATION_ROWS.

#include <android/log.h>

#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "NodeRootFixture.h"

namespace aidl::vendor::vyren::hardware::performance::testing {

// Performs one call with fixed arguments and returns its result as text: numbers and booleans in
// decimal, strings as they stand, "" for an operation without a result.
using Call = std::function<std::string(Performance&)>;

inline std::string resultText(const std::string& value) {
    return value;
}
inline std::string resultText(bool value) {
    return value ? "1" : "0";
}
template <typename T>
std::enable_if_t<std::is_integral_v<T>, std::string> resultText(T value) {
    return std::to_string(value);
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
LogLine Debug(std::string text);
LogLine Info(std::string text);
LogLine Error(std::string text);

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
OperationRow Row(std::string name, Call call, NodePair node, std::string content,
                 std::optional<std::string> written, Outcome present, Outcome absent,
                 std::optional<Outcome> refused = std::nullopt, Kernels kernels = Kernels::kAll,
                 std::optional<Outcome> takesNoBytes = std::nullopt);
// A row whose node is the same on every kernel.
OperationRow Row(std::string name, Call call, const char* node, std::string content,
                 std::optional<std::string> written, Outcome present, Outcome absent,
                 std::optional<Outcome> refused = std::nullopt);
// A row whose node is the same path on every tree, for the builders that take a pair.
constexpr NodePair same(const char* node) {
    return {node, node};
}
// Written for a row whose call leaves its node as it was.
inline constexpr std::nullopt_t kUnchanged = std::nullopt;

// The releases the generic tests run on, older trees first.
extern const char* const kKernelReleases[5];

// Names a row in test output instead of dumping its bytes.
void PrintTo(const OperationRow& row, std::ostream* os);

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
