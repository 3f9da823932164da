/*
 * Binder calls between processes over the socket transport. Services run in their own
 * process (the binder_toy_server helper); every test gets a private service directory.
 */
#include <aidl/vendor/test/toy/IToy.h>
#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "temp_binder_dir.h"
#include "toy_checks.h"
#include "toy_service.h"

extern char** environ;

namespace {

using aidl::vendor::test::toy::IToy;
using android::base::unique_fd;

const std::string kName = std::string(IToy::descriptor) + "/default";
// The file name the service directory uses for kName.
const std::string kSocketName = "vendor.test.toy.IToy%2Fdefault";

constexpr uint32_t kRequestMagic = B_PACK_CHARS('H', 'B', 'T', 'X');
constexpr uint32_t kReplyMagic = B_PACK_CHARS('H', 'B', 'R', 'X');

// Polls until cond holds. The bound only keeps a broken build from hanging the suite.
template <typename Cond>
bool eventually(Cond cond) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!cond()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

int32_t sleepersNow(IToy* toy) {
    std::vector<int32_t> stats;
    return toy->sleepStats(&stats).isOk() && stats.size() == 2 ? stats[0] : -1;
}

// A proxy of its own, looked up once.
std::shared_ptr<IToy> connectToyOnce() {
    ndk::SpAIBinder binder(AServiceManager_checkService(kName.c_str()));
    return binder.get() == nullptr ? nullptr : IToy::fromBinder(binder);
}

unique_fd rawConnect(const std::string& path) {
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, path.c_str(), sizeof(addr.sun_path) - 1);
    unique_fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (connect(fd.get(), reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0) return {};
    const timeval timeout = {20, 0};
    setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
    return fd;
}

class RemoteTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(mDir.ok()); }

    void TearDown() override {
        for (pid_t pid : mServers) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }

    pid_t spawnServer(const std::string& name, int threads, const std::string& allowedUid = "") {
        const std::string threadArg = std::to_string(threads);
        char* argv[] = {const_cast<char*>(TOY_SERVER_PATH), const_cast<char*>(name.c_str()),
                        const_cast<char*>(threadArg.c_str()),
                        allowedUid.empty() ? nullptr : const_cast<char*>(allowedUid.c_str()),
                        nullptr};
        pid_t pid = -1;
        if (posix_spawn(&pid, TOY_SERVER_PATH, nullptr, nullptr, argv, environ) != 0) return -1;
        mServers.push_back(pid);
        return pid;
    }

    // Starts a server and waits until it answers.
    pid_t startServer(const std::string& name = kName, int threads = 4,
                      const std::string& allowedUid = "") {
        pid_t pid = spawnServer(name, threads, allowedUid);
        ndk::SpAIBinder binder(AServiceManager_waitForService(name.c_str()));
        return binder.get() != nullptr ? pid : -1;
    }

    void stopServer(pid_t pid) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        mServers.erase(std::find(mServers.begin(), mServers.end(), pid));
    }

    static std::shared_ptr<IToy> connectToy(const std::string& name = kName) {
        ndk::SpAIBinder binder(AServiceManager_getService(name.c_str()));
        return binder.get() == nullptr ? nullptr : IToy::fromBinder(binder);
    }

    std::string socketPath(const std::string& fileName = kSocketName) const {
        return mDir.path() + "/" + fileName;
    }

    TempBinderDir mDir;
    std::vector<pid_t> mServers;
};

TEST_F(RemoteTest, CallsRoundTripThroughAProxy) {
    ASSERT_GT(startServer(), 0);
    EXPECT_TRUE(std::filesystem::exists(socketPath()));
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    AIBinder* binder = toy->asBinder().get();
    EXPECT_TRUE(toy->isRemote());
    EXPECT_TRUE(AIBinder_isRemote(binder));
    EXPECT_TRUE(AIBinder_isAlive(binder));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(binder));

    toy::expectEveryShapeRoundTrips(toy.get());
    toy::expectErrorsReachTheCaller(toy.get());

    std::vector<int32_t> identity;
    ASSERT_TRUE(toy->callerIdentity(&identity).isOk());
    EXPECT_EQ((std::vector<int32_t>{static_cast<int32_t>(getuid()), static_cast<int32_t>(getpid())}),
              identity);
}

TEST_F(RemoteTest, ProxyOnlyAssociatesWithTheServedDescriptor) {
    ASSERT_GT(startServer(), 0);
    static AIBinder_Class* other =
        AIBinder_Class_define("vendor.test.toy.IOther", nullptr, nullptr,
                              [](AIBinder*, transaction_code_t, const AParcel*,
                                 AParcel*) -> binder_status_t { return STATUS_OK; });
    ndk::SpAIBinder binder(AServiceManager_checkService(kName.c_str()));
    ASSERT_NE(nullptr, binder.get());
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), other));
    EXPECT_NE(nullptr, IToy::fromBinder(binder));
}

TEST_F(RemoteTest, LargeCallsUpToTheFrameLimit) {
    ASSERT_GT(startServer(), 0);
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    // About 800 KiB as UTF-16 each way: several partial socket writes, within one frame.
    const std::string big(400 * 1024, 'x');
    std::string echoed;
    ASSERT_TRUE(toy->echoString(big, &echoed).isOk());
    EXPECT_EQ(big, echoed);

    ndk::ScopedAStatus status = toy->echoString(std::string(600 * 1024, 'y'), &echoed);
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, status.getStatus());
    EXPECT_TRUE(toy->echoString("small", &echoed).isOk());
}

TEST_F(RemoteTest, ConcurrentThreadsShareOneProxy) {
    ASSERT_GT(startServer(), 0);
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 100; ++i) {
                const std::string sent = std::to_string(t * 1000 + i);
                std::string received;
                if (!toy->echoString(sent, &received).isOk() || received != sent) ++failures;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, failures.load());
}

TEST_F(RemoteTest, ConcurrentClientsPassASlowCall) {
    ASSERT_GT(startServer(kName, 4), 0);
    std::shared_ptr<IToy> slow = connectToy();
    std::shared_ptr<IToy> observer = connectToy();
    ASSERT_NE(nullptr, slow);
    ASSERT_NE(nullptr, observer);
    auto slowCall = std::async(std::launch::async, [&] {
        int32_t woken = 0;
        slow->sleepMillis(60000, &woken);
        return woken;
    });
    ASSERT_TRUE(eventually([&] { return sleepersNow(observer.get()) == 1; }));

    std::vector<std::future<bool>> others;
    for (int i = 0; i < 3; ++i) {
        others.push_back(std::async(std::launch::async, [] {
            std::shared_ptr<IToy> client = connectToy();
            std::string echoed;
            return client != nullptr && client->echoString("quick", &echoed).isOk() &&
                   echoed == "quick";
        }));
    }
    for (auto& other : others) EXPECT_TRUE(other.get());
    // The other clients finished while the slow call was still asleep.
    EXPECT_EQ(std::future_status::timeout, slowCall.wait_for(std::chrono::seconds(0)));

    ASSERT_TRUE(observer->wakeSleepers().isOk());
    EXPECT_EQ(1, slowCall.get());
}

TEST_F(RemoteTest, ThreadPoolLimitsConcurrentTransactions) {
    ASSERT_GT(startServer(kName, 2), 0);
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    std::vector<std::thread> callers;
    for (int i = 0; i < 6; ++i) {
        callers.emplace_back([&] {
            int32_t woken;
            toy->sleepMillis(200, &woken);
        });
    }
    for (std::thread& caller : callers) caller.join();
    std::vector<int32_t> stats;
    ASSERT_TRUE(toy->sleepStats(&stats).isOk());
    ASSERT_EQ(2u, stats.size());
    EXPECT_GE(stats[1], 1);
    EXPECT_LE(stats[1], 2);
}

// A client process dropping to uid 10123, perhaps after a call as root on the same connection.
// It exits 0 when its calls fare as expected.
struct UidCase {
    const char* name;
    const char* allowedUid;  // passed to the server
    bool callFirstAsRoot;
    bool appAllowed;
};

TEST_F(RemoteTest, CallerCredentialsComeFromEachTransaction) {
    if (geteuid() != 0) GTEST_SKIP() << "switching the client to uid 10123 needs root";
    const UidCase cases[] = {{"inside_allowed", "10123", false, true},
                             {"outside_allowed", "10124", false, false},
                             {"private_by_default", "", false, false},
                             {"changes_uid_on_one_connection", "10123", true, true},
                             {"drops_to_a_refused_uid", "10124", true, false}};
    for (const UidCase& c : cases) {
        SCOPED_TRACE(c.name);
        pid_t server = startServer(kName, 4, c.allowedUid);
        ASSERT_GT(server, 0);
        pid_t child = fork();
        ASSERT_NE(-1, child);
        if (child == 0) {
            alarm(30);
            std::shared_ptr<IToy> toy = c.callFirstAsRoot ? connectToyOnce() : nullptr;
            std::vector<int32_t> identity;
            if (c.callFirstAsRoot && (toy == nullptr || !toy->callerIdentity(&identity).isOk() ||
                                      identity != std::vector<int32_t>{0, getpid()})) {
                _exit(11);
            }
            if (setgroups(0, nullptr) != 0 || setresgid(10123, 10123, 10123) != 0 ||
                setresuid(10123, 10123, 10123) != 0) {
                _exit(10);
            }
            if (toy == nullptr) toy = connectToyOnce();
            const bool called = toy != nullptr && toy->callerIdentity(&identity).isOk() &&
                                identity == std::vector<int32_t>{10123, getpid()};
            _exit(called == c.appAllowed ? 0 : 12);
        }
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "10: setuid, 11: as root";
        stopServer(server);
    }
}

TEST_F(RemoteTest, ClientKilledMidCallLeavesServerRunning) {
    pid_t server = startServer();
    ASSERT_GT(server, 0);
    std::shared_ptr<IToy> observer = connectToy();
    ASSERT_NE(nullptr, observer);
    pid_t child = fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
        alarm(60);
        std::shared_ptr<IToy> toy = connectToy();
        int32_t woken;
        if (toy != nullptr) toy->sleepMillis(60000, &woken);
        _exit(0);
    }
    ASSERT_TRUE(eventually([&] { return sleepersNow(observer.get()) == 1; }));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);

    // The woken call now replies into a closed socket.
    ASSERT_TRUE(observer->wakeSleepers().isOk());
    ASSERT_TRUE(eventually([&] { return sleepersNow(observer.get()) == 0; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // let the reply go out
    std::string echoed;
    EXPECT_TRUE(observer->echoString("still here", &echoed).isOk());
    EXPECT_EQ(0, waitpid(server, nullptr, WNOHANG));
}

std::vector<uint8_t> frame(uint32_t magic, uint32_t code, uint32_t flags, uint32_t size,
                           const std::vector<uint8_t>& payload = {}) {
    const uint32_t header[] = {magic, code, flags, size};
    std::vector<uint8_t> bytes(sizeof(header) + payload.size());
    memcpy(bytes.data(), header, sizeof(header));
    if (!payload.empty()) memcpy(bytes.data() + sizeof(header), payload.data(), payload.size());
    return bytes;
}

// An interface token for descriptor followed by extra int32 words.
std::vector<uint8_t> tokenPayload(const char* descriptor, std::vector<int32_t> extra = {},
                                  const std::string& text = "") {
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel_writeInt32(parcel.get(), 0);
    AParcel_writeInt32(parcel.get(), -1);
    AParcel_writeInt32(parcel.get(), B_PACK_CHARS('V', 'N', 'D', 'R'));
    AParcel_writeString(parcel.get(), descriptor, static_cast<int32_t>(strlen(descriptor)));
    for (int32_t word : extra) AParcel_writeInt32(parcel.get(), word);
    if (!text.empty()) AParcel_writeString(parcel.get(), text.data(), text.size());
    std::vector<uint8_t> bytes(static_cast<size_t>(AParcel_getDataSize(parcel.get())));
    AParcel_marshal(parcel.get(), bytes.data(), 0, bytes.size());
    return bytes;
}

std::vector<uint8_t> request(uint32_t code, const std::vector<uint8_t>& payload,
                             uint32_t flags = 0) {
    return frame(kRequestMagic, code, flags, static_cast<uint32_t>(payload.size()), payload);
}

struct MalformedCase {
    const char* name;
    std::vector<uint8_t> bytes;
    // Send only these bytes and then end the stream.
    bool halfClose;
    // The error reply expected, if any.
    std::optional<binder_status_t> reply;
    bool closesConnection;
    // Descriptors attached to the send that starts at byte fdOffset.
    int fdCount = 0;
    size_t fdOffset = 0;
};

// Sends bytes, attaching fdCount copies of stdin's descriptor to the part from fdOffset on.
bool sendWithFds(int socket, const std::vector<uint8_t>& bytes, int fdCount, size_t fdOffset) {
    if (fdCount == 0) return send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0;
    if (fdOffset > 0 && send(socket, bytes.data(), fdOffset, MSG_NOSIGNAL) <= 0) return false;
    iovec iov = {const_cast<uint8_t*>(bytes.data()) + fdOffset, bytes.size() - fdOffset};
    alignas(cmsghdr) char control[CMSG_SPACE(2 * sizeof(int))] = {};
    msghdr msg = {nullptr, 0, &iov, 1, control, CMSG_SPACE(fdCount * sizeof(int)), 0};
    cmsghdr* cmsg = CMSG_FIRSTHDR(&msg);
    *cmsg = {CMSG_LEN(fdCount * sizeof(int)), SOL_SOCKET, SCM_RIGHTS};
    const int fds[2] = {STDIN_FILENO, STDIN_FILENO};
    memcpy(CMSG_DATA(cmsg), fds, fdCount * sizeof(int));
    return sendmsg(socket, &msg, MSG_NOSIGNAL) == static_cast<ssize_t>(iov.iov_len);
}

std::vector<MalformedCase> malformedCases() {
    const uint32_t doNothing = FIRST_CALL_TRANSACTION + 6;
    const uint32_t reverseInts = FIRST_CALL_TRANSACTION + 2;
    std::vector<uint8_t> header = frame(kRequestMagic, doNothing, 0, 100);
    std::vector<uint8_t> truncatedPayload = header;
    truncatedPayload.resize(header.size() + 10, 0xab);
    return {
        {"garbage",
         {'n', 'o', 't', ' ', 'a', ' ', 'b', 'i', 'n', 'd', 'e', 'r', 'f', 'r', 'a', 'm'},
         false,
         std::nullopt,
         true},
        {"oversized", frame(kRequestMagic, doNothing, 0, 2 * 1024 * 1024), false, STATUS_BAD_VALUE,
         true},
        {"truncated_header", std::vector<uint8_t>(header.begin(), header.begin() + 8), true,
         std::nullopt, true},
        {"truncated_payload", truncatedPayload, true, std::nullopt, true},
        {"unknown_code", request(FIRST_CALL_TRANSACTION + 1000, tokenPayload(IToy::descriptor)),
         false, STATUS_UNKNOWN_TRANSACTION, false},
        {"unknown_special_code", request(B_PACK_CHARS('_', 'X', 'Y', 'Z'), {}), false,
         STATUS_UNKNOWN_TRANSACTION, false},
        {"wrong_descriptor", request(doNothing, tokenPayload("vendor.test.toy.IOther")), false,
         STATUS_BAD_TYPE, false},
        {"missing_token", request(doNothing, {}), false, STATUS_BAD_TYPE, false},
        {"unknown_flags", request(doNothing, tokenPayload(IToy::descriptor), 0x100), false,
         STATUS_BAD_VALUE, false},
        {"dump_without_fd", request(B_PACK_CHARS('_', 'D', 'M', 'P'), {0, 0, 0, 0}), false,
         STATUS_BAD_VALUE, false},
        {"absurd_array_length", request(reverseInts, tokenPayload(IToy::descriptor, {0x7fffffff})),
         false, STATUS_BAD_VALUE, false},
        // Only a dump's header may bring a descriptor, and only one.
        {"fd_with_a_call", request(doNothing, tokenPayload(IToy::descriptor)), false,
         STATUS_FDS_NOT_ALLOWED, false, 1, 0},
        {"fd_with_payload_bytes", request(doNothing, tokenPayload(IToy::descriptor)), false,
         std::nullopt, true, 1, 20},
        {"two_fds_with_a_dump", request(B_PACK_CHARS('_', 'D', 'M', 'P'), {0, 0, 0, 0}), false,
         std::nullopt, true, 2, 0},
    };
}

TEST_F(RemoteTest, MalformedFramesGetAnErrorOrAClosedConnection) {
    pid_t server = startServer();
    ASSERT_GT(server, 0);
    for (const MalformedCase& c : malformedCases()) {
        SCOPED_TRACE(c.name);
        unique_fd fd = rawConnect(socketPath());
        ASSERT_TRUE(fd.ok());
        ASSERT_TRUE(sendWithFds(fd.get(), c.bytes, c.fdCount, c.fdOffset));
        if (c.halfClose) shutdown(fd.get(), SHUT_WR);

        if (c.reply.has_value()) {
            uint32_t reply[4] = {};
            ASSERT_EQ(static_cast<ssize_t>(sizeof(reply)),
                      recv(fd.get(), reply, sizeof(reply), MSG_WAITALL));
            EXPECT_EQ(kReplyMagic, reply[0]);
            EXPECT_EQ(*c.reply, static_cast<binder_status_t>(reply[1]));
            EXPECT_EQ(0u, reply[3]);
        }
        if (c.closesConnection) {
            // Reset rather than ended when the server left bytes unread.
            char byte;
            const ssize_t n = recv(fd.get(), &byte, 1, 0);
            EXPECT_TRUE(n == 0 || (n < 0 && errno == ECONNRESET)) << n;
        }
    }
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    std::string echoed;
    EXPECT_TRUE(toy->echoString("fine", &echoed).isOk());
    EXPECT_EQ(0, waitpid(server, nullptr, WNOHANG));
}

TEST_F(RemoteTest, StalledSenderDoesNotBlockOthers) {
    ASSERT_GT(startServer(), 0);
    unique_fd stalled = rawConnect(socketPath());
    ASSERT_TRUE(stalled.ok());
    std::vector<uint8_t> partial = frame(kRequestMagic, FIRST_CALL_TRANSACTION, 0, 100);
    partial.resize(partial.size() + 10);
    ASSERT_EQ(static_cast<ssize_t>(partial.size()),
              send(stalled.get(), partial.data(), partial.size(), MSG_NOSIGNAL));
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    std::string echoed;
    EXPECT_TRUE(toy->echoString("around", &echoed).isOk());
}

TEST_F(RemoteTest, SecondRegistrationOfANameFails) {
    ASSERT_GT(startServer(), 0);
    auto local = ndk::SharedRefBase::make<toy::ToyService>();
    EXPECT_NE(EX_NONE, AServiceManager_addService(local->asBinder().get(), kName.c_str()));

    pid_t second = spawnServer(kName, 1);
    int status = 0;
    ASSERT_EQ(second, waitpid(second, &status, 0));
    mServers.pop_back();
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(2, WEXITSTATUS(status));
}

TEST_F(RemoteTest, StaleSocketIsReplaced) {
    // Registrations made in this process last for its lifetime; keep names fresh per run.
    static int run = 0;
    const std::string suffix = std::to_string(++run);
    const std::string name = "stale.test/instance" + suffix;
    const std::string path = socketPath("stale.test%2Finstance" + suffix);
    {
        // Bound but never listening, as a crashed server leaves it.
        sockaddr_un addr = {};
        addr.sun_family = AF_UNIX;
        strncpy(addr.sun_path, path.c_str(), sizeof(addr.sun_path) - 1);
        unique_fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(0, bind(fd.get(), reinterpret_cast<sockaddr*>(&addr), sizeof(addr)));
    }
    ASSERT_FALSE(rawConnect(path).ok());

    auto local = ndk::SharedRefBase::make<toy::ToyService>();
    ASSERT_EQ(EX_NONE, AServiceManager_addService(local->asBinder().get(), name.c_str()));
    EXPECT_TRUE(rawConnect(path).ok());
    // Within the registering process the name resolves to the object itself.
    ndk::SpAIBinder found(AServiceManager_checkService(name.c_str()));
    EXPECT_EQ(local->asBinder(), found);
    EXPECT_FALSE(AIBinder_isRemote(found.get()));
}

TEST_F(RemoteTest, RegistrationRefusesUnusablePaths) {
    auto local = ndk::SharedRefBase::make<toy::ToyService>();

    std::ofstream(socketPath("plain.file")) << "not a socket";
    EXPECT_NE(EX_NONE, AServiceManager_addService(local->asBinder().get(), "plain.file"));

    // Short as text, but every '/' takes three bytes in the file name.
    const std::string longName = std::string(40, '/');
    EXPECT_NE(EX_NONE, AServiceManager_addService(local->asBinder().get(), longName.c_str()));
    EXPECT_EQ(nullptr, AServiceManager_checkService(longName.c_str()));
}

TEST_F(RemoteTest, DumpSendsArgumentsAndDescriptor) {
    ASSERT_GT(startServer(), 0);
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    unique_fd readEnd(fds[0]);
    unique_fd writeEnd(fds[1]);
    const char* args[] = {"--verbose", "\xc3\xa9"};
    EXPECT_EQ(STATUS_OK, toy->dump(writeEnd.get(), args, 2));
    writeEnd.reset();
    std::string text;
    char buffer[64];
    ssize_t n;
    while ((n = read(readEnd.get(), buffer, sizeof(buffer))) > 0) text.append(buffer, n);
    EXPECT_EQ("toy --verbose \xc3\xa9\n", text);
}

// Runs call on a thread of its own and says whether it finished before a generous deadline. A
// call that never finishes is left behind; the server's end in TearDown releases it.
template <typename Call>
bool finishes(Call call, int seconds = 30) {
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> finished = done->get_future();
    std::thread([call, done] {
        call();
        done->set_value();
    }).detach();
    return finished.wait_for(std::chrono::seconds(seconds)) == std::future_status::ready;
}

bool echoes(const char* text) {
    std::shared_ptr<IToy> toy = connectToyOnce();
    std::string echoed;
    return toy != nullptr && toy->echoString(text, &echoed).isOk() && echoed == text;
}

TEST_F(RemoteTest, DumpsIntoFullPipesGiveUpAndServingGoesOn) {
    pid_t server = startServer(kName, 4);
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    // As many dumps as the server runs transactions at once, into full pipes nobody reads.
    std::vector<unique_fd> pipeEnds;
    std::vector<std::future<binder_status_t>> dumps;
    for (int i = 0; i < 4; ++i) {
        int fds[2];
        ASSERT_EQ(0, pipe2(fds, O_NONBLOCK));
        pipeEnds.emplace_back(fds[0]);
        pipeEnds.emplace_back(fds[1]);
        while (write(fds[1], "full", 4) > 0) {
        }
        fcntl(fds[1], F_SETFL, 0);
        dumps.push_back(std::async(std::launch::async,
                                   [&toy, fd = fds[1]] { return toy->dump(fd, nullptr, 0); }));
    }
    EXPECT_TRUE(finishes([] { EXPECT_TRUE(echoes("meanwhile")); }));
    for (auto& dump : dumps) {
        if (dump.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
            ADD_FAILURE() << "a dump into a full pipe never gave up";
            return stopServer(server);  // releases the dump calls
        }
        EXPECT_EQ(STATUS_TIMED_OUT, dump.get());
    }
    EXPECT_TRUE(echoes("afterwards"));
}

TEST_F(RemoteTest, DumpIntoAClosedPipeFailsAndServingGoesOn) {
    pid_t server = startServer(kName, 4);
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    close(fds[0]);
    unique_fd closedPipe(fds[1]);
    // The reader is gone: the write fails instead of ending the server.
    EXPECT_EQ(STATUS_DEAD_OBJECT, toy->dump(closedPipe.get(), nullptr, 0));
    EXPECT_EQ(0, waitpid(server, nullptr, WNOHANG));
    EXPECT_TRUE(echoes("afterwards"));
}

TEST_F(RemoteTest, ConcurrentIdleSlowAndManyConnectionsLeaveRoomForOthers) {
    ASSERT_GT(startServer(kName, 4), 0);
    // {name, connections, trickle}: a trickling one announces 100 bytes and sends one at a time.
    // Or, unread, sends a whole call for an 800 KiB reply and never reads it.
    const std::tuple<const char*, int, bool, bool> crowds[] = {{"idle", 40, false, false},
                                                               {"many_idle", 300, false, false},
                                                               {"slow", 40, true, false},
                                                               {"unread_replies", 15, false, true}};
    const std::vector<uint8_t> echoBig = request(
        FIRST_CALL_TRANSACTION + 1, tokenPayload(IToy::descriptor, {}, std::string(400 << 10, 'x')));
    for (const auto& [name, connections, trickle, unread] : crowds) {
        SCOPED_TRACE(name);
        std::vector<unique_fd> crowd;
        const std::vector<uint8_t> header = frame(kRequestMagic, FIRST_CALL_TRANSACTION, 0, 100);
        const timeval sendLimit = {1, 0};
        for (int i = 0; i < connections; ++i) {
            crowd.push_back(rawConnect(socketPath()));
            setsockopt(crowd.back().get(), SOL_SOCKET, SO_SNDTIMEO, &sendLimit, sizeof(sendLimit));
            if (trickle) send(crowd.back().get(), header.data(), header.size(), MSG_NOSIGNAL);
        }
        std::atomic<bool> stop{false};
        std::atomic<int> sent{0};
        std::thread trickler([&, trickle = trickle, unread = unread] {
            for (size_t i = 0; unread && i < crowd.size(); ++i, ++sent) {
                send(crowd[i].get(), echoBig.data(), echoBig.size(), MSG_NOSIGNAL);
            }
            // Longer than the deadline below, unless the calls get through first.
            for (int round = 0; trickle && !stop && round < 300; ++round) {
                for (const unique_fd& fd : crowd) send(fd.get(), "x", 1, MSG_NOSIGNAL);
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
            }
        });
        ASSERT_TRUE(eventually([&] { return !unread || sent >= 5; }));
        // These waited behind the crowd for many seconds before; ten are still generous for
        // five calls that each take well under a millisecond when nothing is in the way.
        EXPECT_TRUE(finishes(
            [name = name] {
                for (int i = 0; i < 5; ++i) EXPECT_TRUE(echoes("through the crowd")) << name;
            },
            10));
        stop = true;
        trickler.join();
    }
}

TEST_F(RemoteTest, UntrustedServiceDirectoryIsRefused) {
    ASSERT_GT(startServer(), 0);
    auto local = ndk::SharedRefBase::make<toy::ToyService>();
    const std::string link = mDir.path() + "-link";
    ASSERT_EQ(0, symlink(mDir.path().c_str(), link.c_str()));
    // {name, mode, owner, reached through a symbolic link}
    const std::tuple<const char*, mode_t, uid_t, bool> changes[] = {
        {"group_writable", 0775, geteuid(), false},
        {"writable_by_others", 0757, geteuid(), false},
        {"foreign_owner", 0755, geteuid() == 0 ? 10123 : geteuid(), false},
        {"symlink", 0755, geteuid(), true}};
    for (const auto& [name, mode, owner, viaLink] : changes) {
        SCOPED_TRACE(name);
        if (owner == geteuid() && mode == 0755 && !viaLink) continue;  // giving away needs root
        chmod(mDir.path().c_str(), mode);
        ASSERT_EQ(0, chown(mDir.path().c_str(), owner, -1));
        setenv("HOST_BINDER_DIR", (viaLink ? link : mDir.path()).c_str(), 1);
        EXPECT_EQ(nullptr, AServiceManager_checkService(kName.c_str()));
        EXPECT_NE(EX_NONE, AServiceManager_addService(local->asBinder().get(), "other.name"));
        chmod(mDir.path().c_str(), 0755);
        ASSERT_EQ(0, chown(mDir.path().c_str(), geteuid(), -1));
        setenv("HOST_BINDER_DIR", mDir.path().c_str(), 1);
        EXPECT_NE(nullptr, ndk::SpAIBinder(AServiceManager_checkService(kName.c_str())).get());
    }
    unlink(link.c_str());
}

TEST_F(RemoteTest, RegistrationGivesUpOnAHeldLock) {
    unique_fd lock(open((mDir.path() + "/.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(0, flock(lock.get(), LOCK_EX));
    pid_t server = spawnServer(kName, 1);
    int status = -1;
    for (int i = 0; i < 300 && waitpid(server, &status, WNOHANG) == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    ASSERT_TRUE(WIFEXITED(status)) << "registration still waits for the lock";
    mServers.pop_back();
    EXPECT_EQ(2, WEXITSTATUS(status));
}

TEST_F(RemoteTest, DeadServerIsReportedAndARestartIsReached) {
    pid_t server = startServer();
    ASSERT_GT(server, 0);
    std::shared_ptr<IToy> toy = connectToy();
    ASSERT_NE(nullptr, toy);
    std::string echoed;
    ASSERT_TRUE(toy->echoString("before", &echoed).isOk());

    stopServer(server);
    ndk::ScopedAStatus status = toy->echoString("during", &echoed);
    EXPECT_EQ(EX_TRANSACTION_FAILED, status.getExceptionCode());
    EXPECT_EQ(STATUS_DEAD_OBJECT, status.getStatus());
    EXPECT_FALSE(AIBinder_isAlive(toy->asBinder().get()));

    ASSERT_GT(startServer(), 0);
    EXPECT_TRUE(toy->echoString("after", &echoed).isOk());
    EXPECT_EQ("after", echoed);
}

}  // namespace
