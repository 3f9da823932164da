// A binder call to another process over the host transport against its floor, a round trip of
// the same bytes over a Unix domain socket to another process, measured in the same run. Both
// peers live in one forked server process: an echo binder registered like a service, and a raw
// socket that answers each request with as many bytes as its header asks for.
//
// What to read: the ratio of CallAgainstRawRoundTrip (the transport's overhead, both measured
// interleaved), or CrossProcessCall/threads:1 against RawUnixSocketRoundTrip; and the
// items_per_second of CrossProcessCall/threads:4 against threads:1 (how calls from several
// clients overlap).

#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_process.h>
#include <benchmark/benchmark.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

using android::base::unique_fd;

constexpr char kInstance[] = "bench.transport.IEcho/default";
constexpr transaction_code_t kEcho = FIRST_CALL_TRANSACTION;
// Bytes of argument and of result, about what a small call carries.
constexpr size_t kPayload = 128;

std::string gDir;
std::string gRawSocket;
size_t gRequestBytes = 0;
size_t gReplyBytes = 0;

AIBinder_Class* echoClass() {
    static AIBinder_Class* clazz = AIBinder_Class_define(
        "bench.transport.IEcho", [](void* args) { return args; }, [](void*) {},
        [](AIBinder*, transaction_code_t, const AParcel* in, AParcel* out) -> binder_status_t {
            std::vector<uint8_t> bytes;
            binder_status_t status = ndk::AParcel_readVector(in, &bytes);
            return status == STATUS_OK ? ndk::AParcel_writeVector(out, bytes) : status;
        });
    return clazz;
}

bool readAll(int fd, void* data, size_t size) {
    return TEMP_FAILURE_RETRY(recv(fd, data, size, MSG_WAITALL)) == static_cast<ssize_t>(size);
}

bool writeAll(int fd, const void* data, size_t size) {
    return TEMP_FAILURE_RETRY(send(fd, data, size, MSG_NOSIGNAL)) == static_cast<ssize_t>(size);
}

// The raw peer: a 16-byte header whose third word is the reply size and whose fourth is the
// size of what follows, answered by a 16-byte header and that many bytes.
void serveRaw(unique_fd connection) {
    std::vector<uint8_t> buffer;
    for (;;) {
        uint32_t header[4];
        if (!readAll(connection.get(), header, sizeof(header))) return;
        buffer.resize(std::max(header[2], header[3]));
        if (!readAll(connection.get(), buffer.data(), header[3])) return;
        if (!writeAll(connection.get(), header, sizeof(header)) ||
            !writeAll(connection.get(), buffer.data(), header[2])) {
            return;
        }
    }
}

[[noreturn]] void runServer() {
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, gRawSocket.c_str(), sizeof(addr.sun_path) - 1);
    unique_fd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (bind(listener.get(), reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
        listen(listener.get(), 16) != 0) {
        _exit(1);
    }
    std::thread([fd = listener.get()] {
        for (;;) {
            unique_fd connection(accept4(fd, nullptr, nullptr, SOCK_CLOEXEC));
            if (connection.ok()) std::thread(serveRaw, std::move(connection)).detach();
        }
    }).detach();

    // As the daemon sets itself up.
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();
    ndk::SpAIBinder echo(AIBinder_new(echoClass(), nullptr));
    if (AServiceManager_addService(echo.get(), kInstance) != EX_NONE) _exit(1);
    ABinderProcess_joinThreadPool();
    _exit(1);
}

ndk::SpAIBinder lookUpEcho() {
    ndk::SpAIBinder binder(AServiceManager_waitForService(kInstance));
    if (binder.get() != nullptr && !AIBinder_associateClass(binder.get(), echoClass())) {
        return ndk::SpAIBinder();
    }
    return binder;
}

// One echo call; false when it failed. Sets the sizes the raw round trip copies.
bool callEcho(AIBinder* binder, const std::vector<uint8_t>& payload) {
    AParcel* in = nullptr;
    if (AIBinder_prepareTransaction(binder, &in) != STATUS_OK) return false;
    if (ndk::AParcel_writeVector(in, payload) != STATUS_OK) {
        AParcel_delete(in);
        return false;
    }
    gRequestBytes = static_cast<size_t>(AParcel_getDataSize(in));
    AParcel* out = nullptr;
    if (AIBinder_transact(binder, kEcho, &in, &out, 0) != STATUS_OK) return false;
    gReplyBytes = static_cast<size_t>(AParcel_getDataSize(out));
    AParcel_delete(out);
    return true;
}

void CrossProcessCall(benchmark::State& state) {
    static ndk::SpAIBinder echo = lookUpEcho();
    if (echo.get() == nullptr) {
        state.SkipWithError("echo service not found");
        return;
    }
    const std::vector<uint8_t> payload(kPayload, 0x5a);
    for (auto _ : state) {
        if (!callEcho(echo.get(), payload)) {
            state.SkipWithError("call failed");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CrossProcessCall)->UseRealTime()->Threads(1)->Threads(4);

// A connection to the raw peer and the request that copies a call's bytes: its request frame
// out, its reply frame back.
struct RawPeer {
    unique_fd fd;
    std::vector<uint8_t> request;
    std::vector<uint8_t> reply;

    bool connect() {
        fd.reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un addr = {};
        addr.sun_family = AF_UNIX;
        strncpy(addr.sun_path, gRawSocket.c_str(), sizeof(addr.sun_path) - 1);
        request.assign(16 + gRequestBytes, 0x5a);
        const uint32_t header[4] = {0, 0, static_cast<uint32_t>(gReplyBytes),
                                    static_cast<uint32_t>(gRequestBytes)};
        memcpy(request.data(), header, sizeof(header));
        reply.resize(16 + gReplyBytes);
        return gRequestBytes > 0 &&
               ::connect(fd.get(), reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) == 0;
    }
    bool roundTrip() {
        return writeAll(fd.get(), request.data(), request.size()) &&
               readAll(fd.get(), reply.data(), reply.size());
    }
};

void RawUnixSocketRoundTrip(benchmark::State& state) {
    RawPeer peer;
    if (!peer.connect()) {
        state.SkipWithError("raw peer not reachable");
        return;
    }
    for (auto _ : state) {
        if (!peer.roundTrip()) {
            state.SkipWithError("round trip failed");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(RawUnixSocketRoundTrip)->UseRealTime()->Threads(1);

// The pair interleaved, call then raw round trip, so that both see the same machine: on a
// shared host the cost of waking a process swings from run to run. ratio = call / raw.
void CallAgainstRawRoundTrip(benchmark::State& state) {
    static ndk::SpAIBinder echo = lookUpEcho();
    RawPeer peer;
    if (echo.get() == nullptr || !peer.connect()) {
        state.SkipWithError("peers not reachable");
        return;
    }
    const std::vector<uint8_t> payload(kPayload, 0x5a);
    std::chrono::steady_clock::duration call{};
    std::chrono::steady_clock::duration raw{};
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const bool called = callEcho(echo.get(), payload);
        const auto middle = std::chrono::steady_clock::now();
        const bool echoed = peer.roundTrip();
        call += middle - start;
        raw += std::chrono::steady_clock::now() - middle;
        if (!called || !echoed) {
            state.SkipWithError("call or round trip failed");
            break;
        }
    }
    using Micros = std::chrono::duration<double, std::micro>;
    const double iterations = static_cast<double>(std::max<int64_t>(state.iterations(), 1));
    state.counters["call_us"] = Micros(call).count() / iterations;
    state.counters["raw_us"] = Micros(raw).count() / iterations;
    state.counters["ratio"] = Micros(call).count() / std::max(Micros(raw).count(), 1e-9);
}
BENCHMARK(CallAgainstRawRoundTrip)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    char dir[] = "/tmp/transport-bench-XXXXXX";
    if (mkdtemp(dir) == nullptr) return 1;
    gDir = dir;
    gRawSocket = gDir + "/raw";
    setenv("HOST_BINDER_DIR", (gDir + "/binder").c_str(), 1);
    const pid_t server = fork();
    if (server < 0) return 1;
    if (server == 0) runServer();

    // The raw round trip copies the sizes of a real call, so make one first.
    ndk::SpAIBinder echo = lookUpEcho();
    const bool ready = echo.get() != nullptr && callEcho(echo.get(), std::vector<uint8_t>(kPayload));
    int result = 1;
    if (ready) {
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
        result = 0;
    }
    kill(server, SIGKILL);
    waitpid(server, nullptr, 0);
    std::error_code ignored;
    std::filesystem::remove_all(gDir, ignored);
    return result;
}
