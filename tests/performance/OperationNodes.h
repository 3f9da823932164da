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

// A row's node on an older and on a newer kernel; the same path twice when the version plays no
// part.
struct Paths {
    Paths(NodePair pair) : older(pair.older), newer(pair.newer) {}
    Paths(std::string olderPath, std::string newerPath)
        : older(std::move(olderPath)), newer(std::move(newerPath)) {}
    std::string older;
    std::string newer;
};

// A row is built by naming its parts, starting from its name and call:
//   row(OP(writeMemMonitor, "cmd")).at(kNode).holding("a").leaves("cmd").whenPresent(...)
struct OperationRow {
    // Unique within its table; letters, digits and underscores only.
    std::string name;
    Call call;
    Paths node{"", ""};
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
    std::optional<Outcome> takesNoBytes;

    OperationRow& at(Paths paths) { return node = std::move(paths), *this; }
    OperationRow& at(const char* path) { return at({path, path}); }
    OperationRow& on(Kernels which) { return kernels = which, *this; }
    OperationRow& holding(std::string bytes) { return content = std::move(bytes), *this; }
    OperationRow& leaves(std::optional<std::string> bytes) {
        return written = std::move(bytes), *this;
    }
    OperationRow& whenPresent(Outcome outcome) { return present = std::move(outcome), *this; }
    OperationRow& whenAbsent(Outcome outcome) { return absent = std::move(outcome), *this; }
    // The same outcome with the node present or absent.
    OperationRow& always(const Outcome& outcome) {
        return whenPresent(outcome).whenAbsent(outcome);
    }
    OperationRow& whenRefused(Outcome outcome) { return refused = std::move(outcome), *this; }
    OperationRow& whenTakingNoBytes(Outcome outcome) {
        return takesNoBytes = std::move(outcome), *this;
    }
};

inline OperationRow row(std::string name, Call call) {
    OperationRow r;
    r.name = std::move(name);
    r.call = std::move(call);
    return r;
}
// A row whose node is the same path on every tree, for the builders that take a pair.
constexpr NodePair same(const char* node) {
    return {node, node};
}
// Written for a row whose call leaves its node as it was.
inline constexpr std::nullopt_t kUnchanged = std::nullopt;
// A call that never reaches its node on these kernels (it is refused first, or has no node there):
// the same outcome whether the node is present or not, and the node untouched.
inline OperationRow unreached(std::string name, Call call, const char* node, Outcome outcome,
                              Kernels kernels = Kernels::kAll) {
    return row(std::move(name), std::move(call)).at(node).holding("0").always(outcome).on(kernels);
}

// A switch: writes 0 for a message that starts with "disable", else 1, and logs the message; a
// refused write goes unnoticed. Without the node it answers -1 and logs failure, by default
// "Failed to <the message's first word> {node} (2): No such file or directory".
OperationRow switchRow(std::string name, Call call, Paths node, const std::string& message,
                       std::string failure = "", Kernels kernels = Kernels::kAll);

// A node read: the node's text up to its first NUL, cut at size bytes; without the node, "" with
// its open failure logged. tried are the lines logged for nodes read before it.
OperationRow reportRow(std::string name, Call call, Paths node, size_t size,
                       std::vector<LogLine> tried = {});
// What a node read logs for a node it cannot open.
LogLine readFailure(const std::string& node);

// A whole-node read of lines longer than a read chunk, a blank line and a last line without its
// newline: each comes back newline-ended. absent is the outcome without the node. A read of
// /dev/full never ends, so there is no refusing case.
OperationRow linesRow(std::string name, Call call, Paths node, Outcome absent = {});
// A value write of kPut, as it stands, to an empty node: it answers the bytes written, 0 unlogged
// when the node takes none; without the node -2, and refused -1, with the failed open or write
// logged.
inline constexpr char kPut[] = "2041 3120";
OperationRow putRow(std::string name, Call call, Paths node);

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
