/*
 * Binder calls between processes over the socket transport. Services run in their own
 * process (the binder_toy_server helper); every test gets a private service directory.
 */
#include <aidl/vendor/test/toy/IToy.h>
#include <android-base/cmsg.h>
#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "toy_checks.h"
#include "toy_service.h"

extern char** environ;

namespace {

using aidl::vendor::test::toy::IToy;
using android::base::unique_fd;
using Bytes = std::vector<uint8_t>;

const std::string kName = std::string(IToy::descriptor) + "/default";
// The file name the service directory uses for kName.
const std::string kSocketName = "vendor.test.toy.IToy%2Fdefault";

constexpr uint32_t kRequestMagic = B_PACK_CHARS('H', 'B', 'T', 'X');
constexpr uint32_t kReplyMagic = B_PACK_CHARS('H', 'B', 'R', 'X');
constexpr uint32_t kDump = B_PACK_CHARS('_', 'D', 'M', 'P');
constexpr uint32_t kDoNothing = FIRST_CALL_TRANSACTION + 6;

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

int32_t sleepersNow(IToy* toy) {
    std::vector<int32_t> stats;
    return toy->sleepStats(&stats).isOk() && stats.size() == 2 ? stats[0] : -1;
}

// A proxy with a connection of its own, looked up once.
std::shared_ptr<IToy> connect() {
    ndk::SpAIBinder binder(AServiceManager_checkService(kName.c_str()));
    return binder.get() == nullptr ? nullptr : IToy::fromBinder(binder);
}

// Echoes text through toy, or through a proxy of its own.
bool echoes(const std::string& text, std::shared_ptr<IToy> toy = nullptr) {
    if (toy == nullptr) toy = connect();
    std::string echoed;
    return toy != nullptr && toy->echoString(text, &echoed).isOk() && echoed == text;
}

// Whether a call through toy arrives as uid from this process.
bool calledAs(const std::shared_ptr<IToy>& toy, int32_t uid) {
    std::vector<int32_t> identity;
    return toy != nullptr && toy->callerIdentity(&identity).isOk() &&
           identity == std::vector<int32_t>{uid, getpid()};
}

// Runs body in a child process that exits with what body returns.
template <typename Body>
pid_t runChild(Body body) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        _exit(body());
    }
    return child;
}

// A socket connected to path, or with ::bind bound to it.
unique_fd rawConnect(const std::string& path,
                     int (*attach)(int, const sockaddr*, socklen_t) = ::connect) {
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, path.c_str(), sizeof(addr.sun_path) - 1);
    unique_fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (attach(fd.get(), reinterpret_cast<const sockaddr*>(&addr), sizeof(addr)) != 0) return {};
    const timeval timeout = {20, 0};
    setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
    return fd;
}

// A request frame; a declared size other than the payload's makes a header that lies.
Bytes frame(uint32_t code, const Bytes& payload = {}, uint32_t flags = 0, int64_t size = -1) {
    const uint32_t header[] = {kRequestMagic, code, flags,
                               static_cast<uint32_t>(size < 0 ? payload.size() : size)};
    Bytes bytes(sizeof(header) + payload.size());
    memcpy(bytes.data(), header, sizeof(header));
    std::copy(payload.begin(), payload.end(), bytes.begin() + sizeof(header));
    return bytes;
}

// An interface token for descriptor followed by a string.
Bytes tokenPayload(const char* descriptor, const std::string& text = "",
                   int32_t header = B_PACK_CHARS('V', 'N', 'D', 'R')) {
    ndk::ScopedAParcel parcel(AParcel_create());
    for (int32_t word : {0, -1, header}) AParcel_writeInt32(parcel.get(), word);
    AParcel_writeString(parcel.get(), descriptor, static_cast<int32_t>(strlen(descriptor)));
    if (!text.empty()) AParcel_writeString(parcel.get(), text.data(), text.size());
    return toy::bytesOf(parcel.get());
}

class RemoteTest : public testing::Test {
  protected:
    // A private service directory for each test.
    void SetUp() override {
        chmod(mDir.c_str(), 0755);  // reachable by callers running under other uids
        setenv("HOST_BINDER_DIR", mDir.c_str(), 1);
        signal(SIGPIPE, SIG_IGN);
    }

    void TearDown() override {
        for (pid_t child : mChildren) kill(child, SIGKILL);
        for (pid_t child : mChildren) waitpid(child, nullptr, 0);
        while (!mServers.empty()) stopServer(mServers.back());
        unsetenv("HOST_BINDER_DIR");
    }

    // Starts a server, logging into logPath when given, waits until it answers and returns a
    // proxy for it.
    std::shared_ptr<IToy> serve(int threads = 4, std::string allowedUids = "",
                                const char* logPath = nullptr) {
        std::string threadArg = std::to_string(threads), name = kName;
        char* argv[] = {const_cast<char*>(TOY_SERVER_PATH), name.data(), threadArg.data(),
                        allowedUids.empty() ? nullptr : allowedUids.data(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        if (logPath != nullptr) {
            posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, logPath, O_WRONLY | O_APPEND,
                                             0);
        }
        pid_t pid = -1;
        const int spawned = posix_spawn(&pid, TOY_SERVER_PATH, &actions, nullptr, argv, environ);
        posix_spawn_file_actions_destroy(&actions);
        if (spawned != 0) return {};
        mServers.push_back(pid);
        return ndk::SpAIBinder(AServiceManager_waitForService(kName.c_str())).get() ? connect()
                                                                                    : nullptr;
    }

    void stopServer(pid_t pid) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        mServers.erase(std::find(mServers.begin(), mServers.end(), pid));
    }

    std::string socketPath(const std::string& fileName = kSocketName) const {
        return mDir + "/" + fileName;
    }

    // Sends bytes on a connection of its own, fdCount descriptors with the part from fdOffset on,
    // and expects reply (unless STATUS_OK) and then the connection closed, if closes.
    void refuse(const char* name, const Bytes& bytes, binder_status_t reply, bool closes,
                bool halfClose = false, int fdCount = 0, size_t fdOffset = 0) {
        SCOPED_TRACE(name);
        unique_fd fd = rawConnect(socketPath());
        ASSERT_TRUE(fd.ok());
        const size_t plain = fdCount == 0 ? bytes.size() : fdOffset;
        ASSERT_TRUE(plain == 0 || send(fd.get(), bytes.data(), plain, MSG_NOSIGNAL) > 0);
        const std::vector<int> fds(fdCount, STDIN_FILENO);
        ASSERT_TRUE(fdCount == 0 || android::base::SendFileDescriptorVector(
                                        fd, bytes.data() + plain, bytes.size() - plain, fds) > 0);
        if (halfClose) shutdown(fd.get(), SHUT_WR);
        if (reply != STATUS_OK) {
            uint32_t header[4] = {};
            ASSERT_EQ(ssize_t{sizeof(header)}, recv(fd.get(), header, sizeof(header), MSG_WAITALL));
            EXPECT_EQ(kReplyMagic, header[0]);
            EXPECT_EQ(reply, static_cast<binder_status_t>(header[1]));
            EXPECT_EQ(0u, header[3]);
        }
        // Reset rather than ended when the server left bytes unread.
        char byte;
        const ssize_t n = closes ? recv(fd.get(), &byte, 1, 0) : 0;
        EXPECT_TRUE(n == 0 || (n < 0 && errno == ECONNRESET)) << n;
    }

    // Runs body in a child process of uid, killed at the end of the test.
    template <typename Body>
    pid_t runChildAs(uid_t uid, Body body) {
        mChildren.push_back(runChild([uid, body] {
            if (setgroups(0, nullptr) != 0 || setresgid(uid, uid, uid) != 0 ||
                setresuid(uid, uid, uid) != 0) {
                return 10;
            }
            return body();
        }));
        return mChildren.back();
    }

    TemporaryDir mTemporary;
    const std::string mDir = mTemporary.path;
    std::vector<pid_t> mServers;
    std::vector<pid_t> mChildren;
};

TEST_F(RemoteTest, CallsDumpsAndLargeFramesRoundTripThroughAProxyThatOutlivesTheServer) {
    std::shared_ptr<IToy> toy = serve();
    ASSERT_NE(nullptr, toy);
    AIBinder* binder = toy->asBinder().get();
    EXPECT_TRUE(AIBinder_isRemote(binder));
    EXPECT_TRUE(AIBinder_isAlive(binder));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(binder));
    toy::expectEveryShapeRoundTrips(toy.get());
    toy::expectErrorsReachTheCaller(toy.get());

    // About 800 KiB as UTF-16 each way: several partial socket writes, within one frame.
    EXPECT_TRUE(echoes(std::string(400 * 1024, 'x'), toy));
    std::string echoed;
    EXPECT_EQ(STATUS_FAILED_TRANSACTION,
              toy->echoString(std::string(600 * 1024, 'y'), &echoed).getStatus());

    TemporaryFile out;
    const char* args[] = {"--verbose", "\xc3\xa9"};
    EXPECT_EQ(STATUS_OK, toy->dump(out.fd, args, 2));
    std::string text;
    ASSERT_TRUE(android::base::ReadFileToString(out.path, &text));
    EXPECT_EQ("toy --verbose \xc3\xa9\n", text);

    unique_fd readEnd, writeEnd;
    ASSERT_TRUE(android::base::Pipe(&readEnd, &writeEnd));
    readEnd.reset();
    // The reader is gone: the write fails instead of ending the server.
    EXPECT_EQ(STATUS_DEAD_OBJECT, toy->dump(writeEnd.get(), nullptr, 0));
    EXPECT_TRUE(echoes("afterwards"));

    // A dead server is reported, and the same proxy reaches its successor.
    stopServer(mServers.back());
    ndk::ScopedAStatus status = toy->echoString("during", &echoed);
    EXPECT_EQ(EX_TRANSACTION_FAILED, status.getExceptionCode());
    EXPECT_EQ(STATUS_DEAD_OBJECT, status.getStatus());
    EXPECT_FALSE(AIBinder_isAlive(binder));
    ASSERT_NE(nullptr, serve());
    EXPECT_TRUE(echoes("after", toy));
}

TEST_F(RemoteTest, ConcurrentThreadsShareOneProxyWithinThePoolLimit) {
    std::shared_ptr<IToy> toy = serve(2);
    ASSERT_NE(nullptr, toy);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 6; ++t) {
        threads.emplace_back([&, t] {
            int32_t woken;
            toy->sleepMillis(200, &woken);
            for (int i = 0; i < 100; ++i) failures += !echoes(std::to_string(t * 1000 + i), toy);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, failures.load());
    std::vector<int32_t> stats;
    ASSERT_TRUE(toy->sleepStats(&stats).isOk());
    // None asleep now, and never more at once than the server has threads.
    EXPECT_TRUE(stats == std::vector<int32_t>({0, 1}) || stats == std::vector<int32_t>({0, 2}));
}

TEST_F(RemoteTest, CallerCredentialsComeFromEachTransaction) {
    if (geteuid() != 0) GTEST_SKIP() << "switching the client to uid 10123 needs root";
    // A client process calls as root, then drops to uid 10123 on the same connection.
    // {name, uid allowed by the server, uid 10123 may call}
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"changes_uid_on_one_connection", "10123", true},
        {"drops_to_a_refused_uid", "10124", false},
        {"private_by_default", "", false}};
    for (const auto& [name, allowedUid, appAllowed] : cases) {
        SCOPED_TRACE(name);
        ASSERT_NE(nullptr, serve(4, allowedUid));
        const pid_t child = runChild([appAllowed = appAllowed] {
            std::shared_ptr<IToy> toy = connect();
            if (!calledAs(toy, 0)) return 11;
            if (setgroups(0, nullptr) != 0 || setresgid(10123, 10123, 10123) != 0 ||
                setresuid(10123, 10123, 10123) != 0) {
                return 10;
            }
            return calledAs(toy, 10123) == appAllowed ? 0 : 12;
        });
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "10: setuid, 11: as root";
        stopServer(mServers.back());
    }
}

TEST_F(RemoteTest, ConcurrentClientsPassSlowCallsAndOutliveAClientKilledMidCall) {
    std::shared_ptr<IToy> slow = serve(4);
    std::shared_ptr<IToy> observer = connect();
    ASSERT_NE(nullptr, slow);
    ASSERT_NE(nullptr, observer);
    // Forked before this process starts threads of its own.
    const pid_t child = runChild([] {
        int32_t woken;
        return connect()->sleepMillis(60000, &woken).isOk() ? 0 : 1;
    });
    ASSERT_NE(-1, child);
    auto slowCall = std::async(std::launch::async, [&] {
        int32_t woken = 0;
        slow->sleepMillis(60000, &woken);
        return woken;
    });
    ASSERT_TRUE(eventually([&] { return sleepersNow(observer.get()) == 2; }));
    EXPECT_TRUE(echoes("quick"));
    // Another client finished while the slow call was still asleep.
    EXPECT_EQ(std::future_status::timeout, slowCall.wait_for(std::chrono::seconds(0)));

    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    // The child's woken call now replies into a closed socket.
    ASSERT_TRUE(observer->wakeSleepers().isOk());
    EXPECT_EQ(1, slowCall.get());
    ASSERT_TRUE(eventually([&] { return sleepersNow(observer.get()) == 0; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // let the reply go out
    EXPECT_TRUE(echoes("still here", observer));
}

TEST_F(RemoteTest, MalformedFramesGetAnErrorOrAClosedConnection) {
    ASSERT_NE(nullptr, serve());
    const Bytes token = tokenPayload(IToy::descriptor);
    Bytes truncatedPayload = frame(kDoNothing, {}, 0, 100);
    truncatedPayload.resize(truncatedPayload.size() + 10, 0xab);
    const char garbage[] = "not a binderfram";
    refuse("garbage", Bytes(garbage, garbage + 16), STATUS_OK, true);
    refuse("oversized", frame(kDoNothing, {}, 0, 2 << 20), STATUS_BAD_VALUE, true);
    refuse("truncated_payload", truncatedPayload, STATUS_OK, true, true);
    refuse("unknown_code", frame(FIRST_CALL_TRANSACTION + 1000, token), STATUS_UNKNOWN_TRANSACTION,
           false);
    refuse("unknown_special_code", frame(B_PACK_CHARS('_', 'X', 'Y', 'Z')),
           STATUS_UNKNOWN_TRANSACTION, false);
    refuse("wrong_descriptor", frame(kDoNothing, tokenPayload("vendor.test.toy.IOther")),
           STATUS_BAD_TYPE, false);
    const int32_t systemHeader = B_PACK_CHARS('S', 'Y', 'S', 'T');
    refuse("system_header", frame(kDoNothing, tokenPayload(IToy::descriptor, "", systemHeader)),
           STATUS_BAD_TYPE, false);
    refuse("unknown_flags", frame(kDoNothing, token, 0x100), STATUS_BAD_VALUE, false);
    refuse("dump_without_fd", frame(kDump, {0, 0, 0, 0}), STATUS_BAD_VALUE, false);
    // Only a dump's header may bring a descriptor, and only one.
    refuse("fd_with_a_call", frame(kDoNothing, token), STATUS_FDS_NOT_ALLOWED, false, false, 1, 0);
    refuse("fd_with_payload_bytes", frame(kDoNothing, token), STATUS_OK, true, false, 1, 20);
    refuse("two_fds_with_a_dump", frame(kDump, {0, 0, 0, 0}), STATUS_OK, true, false, 2, 0);
    EXPECT_TRUE(echoes("fine"));
}

TEST_F(RemoteTest, ConcurrentIdleSlowAndManyConnectionsLeaveRoomForOthers) {
    ASSERT_NE(nullptr, serve(4));
    // {name, connections, each sends the header of a 100-byte call and trickles the rest one byte
    // at a time, each sends a whole call for an 800 KiB reply and never reads it}. Idle ones
    // exceed both connection caps.
    const std::tuple<const char*, int, bool, bool> crowds[] = {
        {"idle", 300, false, false}, {"slow", 40, true, false}, {"unread_replies", 15, false, true}};
    const Bytes echoBig = frame(FIRST_CALL_TRANSACTION + 1,
                                tokenPayload(IToy::descriptor, std::string(400 << 10, 'x')));
    const Bytes header = frame(FIRST_CALL_TRANSACTION, {}, 0, 100);
    for (const auto& [name, connections, trickle, unread] : crowds) {
        SCOPED_TRACE(name);
        std::vector<unique_fd> crowd;
        const timeval sendLimit = {1, 0};
        for (int i = 0; i < connections; ++i) {
            crowd.push_back(rawConnect(socketPath()));
            setsockopt(crowd.back().get(), SOL_SOCKET, SO_SNDTIMEO, &sendLimit, sizeof(sendLimit));
            const Bytes& sent = unread ? echoBig : header;
            if (trickle || unread) send(crowd.back().get(), sent.data(), sent.size(), MSG_NOSIGNAL);
        }
        std::atomic<bool> stop{false};
        std::thread trickler([&, trickle = trickle] {
            // Longer than the deadline below, unless the calls get through first.
            for (int round = 0; trickle && !stop && round < 300; ++round) {
                for (const unique_fd& fd : crowd) send(fd.get(), "x", 1, MSG_NOSIGNAL);
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
            }
        });
        // This waited behind the crowd for many seconds before; ten are still generous for a
        // call that takes well under a millisecond when nothing is in the way.
        EXPECT_TRUE(finishes([name = name] { EXPECT_TRUE(echoes(name)) << name; }, 10));
        stop = true;
        trickler.join();
    }
}

TEST_F(RemoteTest, OutOfDescriptorsTheOldestIdleConnectionMakesRoom) {
#ifdef __SANITIZE_ADDRESS__
    // The sanitizer runtime opens a pipe to probe memory when it checks a type, which a process
    // out of descriptors cannot, so it reports the server's log stream as a bad object.
    GTEST_SKIP() << "the sanitizer runtime needs descriptors of its own";
#endif
    // The server inherits a descriptor limit well below its connection caps, so accepting runs
    // into EMFILE long before a cap would close anything.
    rlimit limit = {};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &limit));
    const rlimit low = {32, limit.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &low));
    std::shared_ptr<IToy> toy = serve();
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &limit));
    ASSERT_NE(nullptr, toy);
    std::vector<unique_fd> idle;
    for (int i = 0; i < 48; ++i) idle.push_back(rawConnect(socketPath()));
    EXPECT_TRUE(finishes([] { EXPECT_TRUE(echoes("past the descriptor limit")); }));
}

TEST_F(RemoteTest, RequestLeftUnfinishedIsClosedByTheServer) {
    ASSERT_NE(nullptr, serve());
    // A header announcing 100 bytes, and only 10 of them; the server gives up on it after its
    // frame timeout, well within this socket's 20 s receive limit.
    const Bytes partial = frame(FIRST_CALL_TRANSACTION, Bytes(10), 0, 100);
    unique_fd stalled = rawConnect(socketPath());
    ASSERT_EQ(static_cast<ssize_t>(partial.size()),
              send(stalled.get(), partial.data(), partial.size(), MSG_NOSIGNAL));
    char byte;
    EXPECT_EQ(0, read(stalled.get(), &byte, 1)) << strerror(errno);
}

TEST_F(RemoteTest, ConcurrentDumpsIntoFullPipesHoldNoThreadAndGiveUpOnReadersThatNeverRead) {
    std::shared_ptr<IToy> toy = serve(4);
    ASSERT_NE(nullptr, toy);
    // More dumps than the server has threads (four and the joined one), each more than a pipe
    // holds: each fills its pipe and waits for its reader.
    const std::string arg(100 << 10, 'd'), whole = "toy " + arg + "\n";
    const char* args[] = {arg.c_str()};
    std::vector<unique_fd> readEnds(5), writeEnds(5);
    std::vector<std::future<binder_status_t>> dumps;
    for (size_t i = 0; i < readEnds.size(); ++i) {
        ASSERT_TRUE(android::base::Pipe(&readEnds[i], &writeEnds[i]));
        fcntl(readEnds[i].get(), F_SETFL, O_NONBLOCK);
        dumps.push_back(std::async(std::launch::async, [&toy, &args, fd = writeEnds[i].get()] {
            return toy->dump(fd, args, 1);
        }));
    }
    int queued = 0;
    for (const unique_fd& fd : readEnds) {
        ASSERT_TRUE(eventually([&] { return ioctl(fd.get(), FIONREAD, &queued) == 0 && queued; }));
    }
    EXPECT_TRUE(echoes("meanwhile"));
    for (auto& dump : dumps)
        EXPECT_NE(std::future_status::ready, dump.wait_for(std::chrono::seconds(0)));
    // All readers but the last read their dumps whole; the last never reads.
    for (size_t i = 0; i + 1 < dumps.size(); ++i) {
        std::string text(whole.size(), '\0');
        size_t got = 0;
        eventually([&] {
            for (ssize_t n; (n = read(readEnds[i].get(), &text[got], text.size() - got)) > 0;) {
                got += n;
            }
            return got == text.size();
        });
        EXPECT_TRUE(text == whole) << i;
        EXPECT_EQ(STATUS_OK, dumps[i].get()) << i;
    }
    EXPECT_EQ(STATUS_TIMED_OUT, dumps.back().get());
}

// Calls of uids other than root and the server's own cannot fill its connection caps.
TEST_F(RemoteTest, ConcurrentHalfSentCallsOfFourUidsLeaveRootItsCalls) {
    if (geteuid() != 0) GTEST_SKIP() << "calling as four other uids needs root";
    ASSERT_NE(nullptr, serve(4, "10001-10004"));
    // Each uid holds as many half-sent calls as a uid may, and replaces each one closed.
    const Bytes half = frame(FIRST_CALL_TRANSACTION, Bytes(10), 0, 100);
    unique_fd readyIn, readyOut;
    ASSERT_TRUE(android::base::Pipe(&readyIn, &readyOut, O_NONBLOCK));
    for (uid_t uid = 10001; uid <= 10004; ++uid) {
        runChildAs(uid, [&] {
            std::vector<unique_fd> calls(64);
            for (bool told = false;; told = true) {
                std::vector<pollfd> open;
                for (unique_fd& fd : calls) {
                    if (!fd.ok() && (fd = rawConnect(socketPath())).ok()) {
                        send(fd.get(), half.data(), half.size(), MSG_NOSIGNAL);
                    }
                    open.push_back({fd.get(), POLLIN, 0});
                }
                if (!told) (void)!write(readyOut.get(), "x", 1);
                poll(open.data(), open.size(), 100);
                for (size_t i = 0; i < calls.size(); ++i) {
                    if (open[i].revents != 0) calls[i].reset();
                }
            }
            return 0;
        });
    }
    int ready = 0;
    ASSERT_TRUE(eventually([&] {
        char told[4];
        return (ready += std::max<ssize_t>(0, read(readyIn.get(), told, 4))) == 4;
    }));
    auto through = std::make_shared<std::atomic<int>>(0);
    EXPECT_TRUE(finishes([through] {
        for (int i = 0; i < 50; ++i) *through += echoes("root " + std::to_string(i));
    }));
    EXPECT_EQ(50, through->load());
}

TEST_F(RemoteTest, RefusedUidConnectingInALoopIsLoggedAsACount) {
    if (geteuid() != 0) GTEST_SKIP() << "connecting as another uid needs root";
    TemporaryFile log;
    ASSERT_NE(nullptr, serve(4, "10123", log.path));
    constexpr int kConnections = 1000;
    const pid_t child = runChildAs(10124, [this] {
        for (int i = 0; i < kConnections; ++i) {
            unique_fd fd = rawConnect(socketPath());
            char byte;
            if (!fd.ok() || read(fd.get(), &byte, 1) != 0) return 11;  // closed unread
        }
        return 0;
    });
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "10: setuid, 11: connect";
    const std::regex refusal("refused (a|\\d+) connections? from uid 10124");
    int lines = 0, counted = 0;
    EXPECT_TRUE(eventually([&] {
        std::string text;
        android::base::ReadFileToString(log.path, &text);
        lines = counted = 0;
        for (std::smatch m; std::regex_search(text, m, refusal); text = m.suffix()) {
            ++lines;
            counted += m[1] == "a" ? 1 : std::stoi(m[1]);
        }
        return counted == kConnections;
    })) << counted;
    EXPECT_LE(lines, 4);
}

TEST_F(RemoteTest, RegistrationTakesAFreeNameOrAStaleSocketOnlyAndWaitsForTheLock) {
    // Registrations made in this process last for its lifetime; keep names fresh per run.
    static int run = 0;
    const std::string suffix = std::to_string(++run);
    const std::string name = "stale.test/instance" + suffix;
    const std::string path = socketPath("stale.test%2Finstance" + suffix);
    auto local = ndk::SharedRefBase::make<toy::ToyService>();
    const ndk::SpAIBinder binder = local->asBinder();
    ASSERT_NE(nullptr, serve());
    EXPECT_NE(EX_NONE, AServiceManager_addService(binder.get(), kName.c_str()));
    // Bound but never listening, as a crashed server leaves it.
    ASSERT_TRUE(rawConnect(path, ::bind).ok());
    ASSERT_FALSE(rawConnect(path).ok());
    EXPECT_EQ(nullptr, AServiceManager_checkService(name.c_str()));
    {
        // As another registration in the directory would hold it.
        unique_fd lock(open((mDir + "/.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_EQ(0, flock(lock.get(), LOCK_EX));
        EXPECT_NE(EX_NONE, AServiceManager_addService(binder.get(), name.c_str()));
    }
    ASSERT_EQ(EX_NONE, AServiceManager_addService(binder.get(), name.c_str()));
    EXPECT_TRUE(rawConnect(path).ok());
    EXPECT_NE(EX_NONE, AServiceManager_addService(binder.get(), name.c_str()));
    EXPECT_NE(EX_NONE, AServiceManager_addService(nullptr, "x"));
    // Within the registering process the name resolves to the object itself.
    EXPECT_EQ(binder, ndk::SpAIBinder(AServiceManager_getService(name.c_str())));

    ASSERT_TRUE(android::base::WriteStringToFile("not a socket", socketPath("plain.file")));
    EXPECT_NE(EX_NONE, AServiceManager_addService(binder.get(), "plain.file"));
    // Short as text, but every '/' takes three bytes in the file name.
    const std::string longName = std::string(40, '/');
    EXPECT_NE(EX_NONE, AServiceManager_addService(binder.get(), longName.c_str()));
}

TEST_F(RemoteTest, UntrustedServiceDirectoryIsRefused) {
    ASSERT_NE(nullptr, serve());
    const std::string link = mDir + "-link";
    ASSERT_EQ(0, symlink(mDir.c_str(), link.c_str()));
    // {name, mode, owner, reached through a symbolic link}
    const std::tuple<const char*, mode_t, uid_t, bool> changes[] = {
        {"group_writable", 0775, geteuid(), false},
        {"foreign_owner", 0755, geteuid() == 0 ? 10123 : geteuid(), false},
        {"symlink", 0755, geteuid(), true}};
    for (const auto& [name, mode, owner, viaLink] : changes) {
        SCOPED_TRACE(name);
        if (owner == geteuid() && mode == 0755 && !viaLink) continue;  // giving away needs root
        chmod(mDir.c_str(), mode);
        ASSERT_EQ(0, chown(mDir.c_str(), owner, -1));
        setenv("HOST_BINDER_DIR", (viaLink ? link : mDir).c_str(), 1);
        EXPECT_EQ(nullptr, AServiceManager_checkService(kName.c_str()));
        chmod(mDir.c_str(), 0755);
        ASSERT_EQ(0, chown(mDir.c_str(), geteuid(), -1));
        setenv("HOST_BINDER_DIR", mDir.c_str(), 1);
        EXPECT_NE(nullptr, ndk::SpAIBinder(AServiceManager_checkService(kName.c_str())).get());
    }
    unlink(link.c_str());
}

}  // namespace
