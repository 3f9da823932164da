/*
 * The service side of the socket transport.
 *
 * All listening and connected sockets share one epoll set, registered one-shot: a thread that
 * receives an event owns that socket until it re-arms it, so a connection is handled by one
 * thread at a time and never needs a lock of its own. Each event on a connection handles one
 * request. Any number of threads may wait on the set; a counting gate lets at most the
 * configured number run transactions at the same time.
 */
#include "server.h"

#include <android-base/logging.h>
#include <errno.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "binder_internal.h"
#include "wire.h"

namespace host_binder {

namespace {

using android::base::unique_fd;

// How long a peer may take to deliver a whole request, or to take a whole reply.
constexpr auto kFrameTimeout = std::chrono::seconds(5);
// Connections beyond this are closed as soon as they are accepted.
constexpr size_t kMaxConnections = 256;

struct Source {
    bool listener = false;
    unique_fd fd;
    ndk::SpAIBinder binder;
    uid_t uid = 0;
    pid_t pid = 0;
};

class Server {
  public:
    Server() : mEpoll(epoll_create1(EPOLL_CLOEXEC)) {
        if (!mEpoll.ok()) PLOG(ERROR) << "binder: epoll_create1";
    }

    void addListener(unique_fd fd, AIBinder* binder) {
        auto source = std::make_unique<Source>();
        source->listener = true;
        source->fd = std::move(fd);
        AIBinder_incStrong(binder);
        source->binder.set(binder);
        add(std::move(source));
    }

    void setMaxRunning(uint32_t count) {
        std::lock_guard<std::mutex> lock(mGateMutex);
        mMaxRunning = count;
    }

    void serve();

  private:
    void add(std::unique_ptr<Source> source) {
        Source* raw = source.get();
        {
            std::lock_guard<std::mutex> lock(mSourcesMutex);
            mSources.emplace(raw, std::move(source));
        }
        epoll_event event = {};
        event.events = EPOLLIN | EPOLLONESHOT;
        event.data.ptr = raw;
        if (epoll_ctl(mEpoll.get(), EPOLL_CTL_ADD, raw->fd.get(), &event) != 0) {
            PLOG(ERROR) << "binder: epoll_ctl add";
            remove(raw);
        }
    }

    void rearm(Source* source) {
        epoll_event event = {};
        event.events = EPOLLIN | EPOLLONESHOT;
        event.data.ptr = source;
        if (epoll_ctl(mEpoll.get(), EPOLL_CTL_MOD, source->fd.get(), &event) != 0) {
            PLOG(ERROR) << "binder: epoll_ctl mod";
            remove(source);
        }
    }

    void remove(Source* source) {
        std::unique_ptr<Source> owned;
        {
            std::lock_guard<std::mutex> lock(mSourcesMutex);
            auto it = mSources.find(source);
            if (it == mSources.end()) return;
            owned = std::move(it->second);
            mSources.erase(it);
            if (!owned->listener) --mConnections;
        }
        // Closing the descriptor also takes it out of the epoll set.
    }

    void acceptConnections(Source* listener);
    // Handles one request; false when the connection should be closed.
    bool handleRequest(Source* connection);
    binder_status_t dispatch(Source* connection, const FrameHeader& header,
                             const std::vector<uint8_t>& payload, std::vector<unique_fd>* fds,
                             AParcel* reply);

    void enterGate() {
        std::unique_lock<std::mutex> lock(mGateMutex);
        mGateChanged.wait(lock, [this] { return mRunning < mMaxRunning; });
        ++mRunning;
    }
    void leaveGate() {
        std::lock_guard<std::mutex> lock(mGateMutex);
        --mRunning;
        mGateChanged.notify_one();
    }

    unique_fd mEpoll;
    std::mutex mSourcesMutex;
    std::map<Source*, std::unique_ptr<Source>> mSources;
    size_t mConnections = 0;

    std::mutex mGateMutex;
    std::condition_variable mGateChanged;
    uint32_t mRunning = 0;
    uint32_t mMaxRunning = 1;
};

Server& server() {
    // Never destroyed: pool threads may still be running when the process exits.
    static Server* instance = new Server;
    return *instance;
}

void Server::serve() {
    for (;;) {
        epoll_event event;
        int count = epoll_wait(mEpoll.get(), &event, 1, -1);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            PLOG(ERROR) << "binder: epoll_wait";
            return;
        }
        if (count == 0) continue;
        auto* source = static_cast<Source*>(event.data.ptr);
        if (source->listener) {
            acceptConnections(source);
            rearm(source);
        } else if (handleRequest(source)) {
            rearm(source);
        } else {
            remove(source);
        }
    }
}

void Server::acceptConnections(Source* listener) {
    for (;;) {
        unique_fd fd(accept4(listener->fd.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!fd.ok()) {
            if (errno == EINTR || errno == ECONNABORTED) continue;
            return;  // EAGAIN: the backlog is empty
        }
        {
            std::lock_guard<std::mutex> lock(mSourcesMutex);
            if (mConnections >= kMaxConnections) {
                LOG(WARNING) << "binder: too many connections, refusing one";
                continue;
            }
            ++mConnections;
        }
        ucred cred = {};
        socklen_t length = sizeof(cred);
        if (getsockopt(fd.get(), SOL_SOCKET, SO_PEERCRED, &cred, &length) != 0) {
            PLOG(WARNING) << "binder: SO_PEERCRED";
            std::lock_guard<std::mutex> lock(mSourcesMutex);
            --mConnections;
            continue;
        }
        auto source = std::make_unique<Source>();
        source->fd = std::move(fd);
        source->binder = listener->binder;
        source->uid = cred.uid;
        source->pid = cred.pid;
        add(std::move(source));
    }
}

bool Server::handleRequest(Source* connection) {
    std::vector<unique_fd> fds;
    FrameHeader header;
    const Deadline requestDeadline = std::chrono::steady_clock::now() + kFrameTimeout;
    if (readExact(connection->fd.get(), &header, sizeof(header), &fds, requestDeadline) !=
        ReadResult::kOk) {
        return false;
    }
    if (header.magic != kRequestMagic) return false;
    if (header.size > kMaxPayloadSize) {
        // The payload cannot be skipped safely; say why and drop the connection.
        const FrameHeader error = {kReplyMagic, static_cast<uint32_t>(STATUS_BAD_VALUE), 0, 0};
        sendFrame(connection->fd.get(), error, nullptr, 0, -1,
                  std::chrono::steady_clock::now() + kFrameTimeout);
        return false;
    }
    std::vector<uint8_t> payload(header.size);
    if (readExact(connection->fd.get(), payload.data(), payload.size(), &fds, requestDeadline) !=
        ReadResult::kOk) {
        return false;
    }

    ndk::ScopedAParcel reply(AParcel_create());
    enterGate();
    binder_status_t status = dispatch(connection, header, payload, &fds, reply.get());
    leaveGate();
    if (header.flags & FLAG_ONEWAY) return true;

    std::vector<uint8_t> data;
    if (status == STATUS_OK) {
        if (!reply.get()->objects.empty() || reply.get()->data.size() > kMaxPayloadSize) {
            status = STATUS_FAILED_TRANSACTION;
        } else {
            data = std::move(reply.get()->data);
        }
    }
    const FrameHeader response = {kReplyMagic, static_cast<uint32_t>(status), 0,
                                  static_cast<uint32_t>(data.size())};
    return sendFrame(connection->fd.get(), response, data.data(), data.size(), -1,
                     std::chrono::steady_clock::now() + kFrameTimeout);
}

binder_status_t readDumpArgs(const AParcel* in, std::vector<std::string>* args) {
    int32_t count;
    binder_status_t status = AParcel_readInt32(in, &count);
    if (status != STATUS_OK) return status;
    // Each argument takes at least one word.
    if (count < 0 || static_cast<size_t>(count) > in->data.size() / sizeof(int32_t)) {
        return STATUS_BAD_VALUE;
    }
    args->resize(static_cast<size_t>(count));
    for (std::string& arg : *args) {
        status = AParcel_readString(in, &arg, [](void* data, int32_t length, char** buffer) {
            if (length <= 0) return false;
            auto* str = static_cast<std::string*>(data);
            str->resize(static_cast<size_t>(length) - 1);
            *buffer = &(*str)[0];
            return true;
        });
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

binder_status_t Server::dispatch(Source* connection, const FrameHeader& header,
                                 const std::vector<uint8_t>& payload, std::vector<unique_fd>* fds,
                                 AParcel* reply) {
    const transaction_code_t code = header.word;
    if ((header.flags & ~static_cast<uint32_t>(FLAG_ONEWAY)) != 0) return STATUS_BAD_VALUE;
    // Only a dump request may carry a descriptor.
    if (code != kDumpTransaction && !fds->empty()) return STATUS_FDS_NOT_ALLOWED;

    ndk::ScopedAParcel in(AParcel_create());
    binder_status_t status = AParcel_unmarshal(in.get(), payload.data(), payload.size());
    if (status != STATUS_OK) return status;
    AIBinder* binder = connection->binder.get();
    ScopedCallingIdentity identity(connection->uid, connection->pid);

    if (code == kDumpTransaction) {
        if (fds->size() != 1) return STATUS_BAD_VALUE;
        std::vector<std::string> args;
        status = readDumpArgs(in.get(), &args);
        if (status != STATUS_OK) return status;
        std::vector<const char*> argv;
        for (const std::string& arg : args) argv.push_back(arg.c_str());
        return AIBinder_dump(binder, (*fds)[0].get(), argv.data(),
                             static_cast<uint32_t>(argv.size()));
    }
    return transactLocal(binder, code, in.get(), reply, header.flags);
}

}  // namespace

void serveOnSocket(unique_fd listener, AIBinder* binder) {
    server().addListener(std::move(listener), binder);
}

void setMaxConcurrentTransactions(uint32_t count) {
    server().setMaxRunning(count);
}

void serveForever() {
    server().serve();
}

}  // namespace host_binder
