// The node layer's read conventions, each driven by a table of nodes: missing, refusing,
// empty, NUL-holding, overlong and failing part way.

#include <android-base/unique_fd.h>
#include <android/log.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::Debug;

constexpr char kNode[] = "/proc/node";

// A read of the process's own memory that ends at an unmapped page: the first read returns the
// bytes before the hole, the next one fails. Offsets are ints, so the page sits below 2 GiB.
constexpr uintptr_t kHole = 0x40001000;

enum class Node { kFile, kAbsent, kDirectory, kPipe, kEndsInHole };

struct ReadCase {
    const char* name;
    Node node;
    std::string content;
    int offset;
    int size;
    int result;
    std::string bytes;
    std::string debugLog;  // none when empty
};

// clang-format off
const ReadCase kReads[] = {
    // NULs pass through as bytes.
    {"from_offset", Node::kFile, std::string("ab\0defgh", 8), 1, 4, 4, std::string("b\0de", 4), ""},
    {"short_tail", Node::kFile, "0123456789", 8, 4, 2, "89", ""},
    {"past_end", Node::kFile, "0123456789", 50, 4, 0, "", ""},
    // Bad arguments are refused before the node is opened, so nothing is logged.
    {"negative_offset", Node::kFile, "text", -1, 4, -1, "", ""},
    {"zero_size_absent", Node::kAbsent, "", 0, 0, -1, "", ""},
    {"absent", Node::kAbsent, "", 0, 8, -1, "",
     "open /proc/node failed! err:No such file or directory, Linux version 5.15.78"},
    {"directory", Node::kDirectory, "", 5, 8, -1, "", "read no content! size:5"},
    {"unseekable", Node::kPipe, "", 0, 8, -1, "", "read failed! size:-1"},
    {"fails_after_some_bytes", Node::kEndsInHole, "", static_cast<int>(kHole - 4), 16, -1, "",
     "read no content! size:" + std::to_string(kHole)},
};
// clang-format on

void PrintTo(const ReadCase& c, std::ostream* os) {
    *os << c.name;
}

class ReadInterfaceTest : public NodeRootTest, public ::testing::WithParamInterface<ReadCase> {};

TEST_P(ReadInterfaceTest, ReturnsBytesAndLogsAsTheNodeAllows) {
    const ReadCase& c = GetParam();
    android::base::unique_fd pipeWriter;
    makeDirectoryAt("/proc");
    if (c.node == Node::kFile) writeNode(kNode, c.content);
    if (c.node == Node::kDirectory) makeDirectoryAt(kNode);
    if (c.node == Node::kPipe) {
        ASSERT_EQ(mkfifo(path(kNode).c_str(), 0600), 0);
        // A writer of its own, so that the service's open does not wait for one.
        pipeWriter.reset(open(path(kNode).c_str(), O_RDWR | O_CLOEXEC));
        ASSERT_GE(pipeWriter, 0);
    }
    if (c.node == Node::kEndsInHole) {
        const size_t page = sysconf(_SC_PAGESIZE);
        void* start = reinterpret_cast<void*>(kHole - page);
        if (mmap(start, 2 * page, PROT_READ | PROT_WRITE,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0) != start) {
            GTEST_SKIP() << "the address below the hole is taken";
        }
        munmap(reinterpret_cast<void*>(kHole), page);
        makeLink(kNode, "/proc/self/mem");
    }
    const KernelNodes nodes = this->nodes();
    std::string buffer(c.size, '\x7f');
    EXPECT_EQ(nodes.readInterface(kNode, c.offset, buffer.data(), c.size), c.result);
    EXPECT_EQ(buffer.substr(0, std::max(c.result, 0)), c.bytes);
    EXPECT_EQ(logs(), c.debugLog.empty() ? std::vector<LogLine>{} : std::vector{Debug(c.debugLog)});
    EXPECT_EQ(nodes.readInterface(kNode, 0, nullptr, 8), -1);
}

INSTANTIATE_TEST_SUITE_P(Nodes, ReadInterfaceTest, ::testing::ValuesIn(kReads),
                         [](const auto& info) { return std::string(info.param.name); });

using ReadFileToStringTTest = NodeRootTest;

TEST_F(ReadFileToStringTTest, ReadsOnceAndCutsAt1023Bytes) {
    // The node's bytes, or none for an absent node; the text read, and the lines logged.
    const std::tuple<const char*, std::optional<std::string>, std::string, bool> cases[] = {
        {"/proc/long", std::string(2000, 'x'), std::string(1023, 'x'), true},
        {"/proc/nul", std::string("ab\0cd", 5), "ab", true},
        {"/proc/absent", std::nullopt, "", false},
    };
    const KernelNodes nodes = this->nodes();
    for (const auto& [node, content, expected, read] : cases) {
        if (content) writeNode(node, *content);
        std::string out = "stale";
        clearLogs();
        EXPECT_EQ(nodes.ReadFileToStringT(node, &out), read) << node;
        EXPECT_EQ(out, expected) << node;
        EXPECT_EQ(logs(), read ? std::vector<LogLine>{}
                               : std::vector{testing::Info("get fd of ReadFileToStringT failed!")});
    }
}

// Whatever its components, a node path never leaves the tree it names.
TEST_F(NodeRootTest, NodePathsThatClimbOrSkipNameNoNode) {
    writeNode("/proc/x", "inside");
    for (const char* node : {"/proc/../proc/x", "/proc/./x", "/proc//x", "proc/x"}) {
        EXPECT_EQ(nodes().open(node, O_RDONLY), -1) << node;
        EXPECT_EQ(errno, EINVAL) << node;
    }
    EXPECT_EQ(nodes().readNode("/proc/x", 8), "inside");
}

TEST(SplitStringTest, SkipsEmptyTokensAndAppends) {
    std::vector<std::string> out = {"kept"};
    splitString(";1 2;;3 ", "; ", &out);
    EXPECT_EQ(out, (std::vector<std::string>{"kept", "1", "2", "3"}));
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
