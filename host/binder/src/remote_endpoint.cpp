#include <errno.h>
#include <poll.h>

#include <utility>

#include "binder_internal.h"
#include "remote.h"
#include "wire.h"

namespace host_binder {

namespace {

// Idle connections kept per endpoint; more are closed when their call ends.
constexpr size_t kMaxIdleConnections = 4;

// An idle connection that has become readable or hung up was closed by the service (nothing is
// ever sent unasked), so it cannot carry another call.
bool idleConnectionUsable(int fd) {
    pollfd p = {fd, POLLIN, 0};
    return TEMP_FAILURE_RETRY(poll(&p, 1, 0)) == 0;
}

}  // namespace

RemoteEndpoint::RemoteEndpoint(std::string socketPath) : mSocketPath(std::move(socketPath)) {}

void RemoteEndpoint::addIdleConnection(android::base::unique_fd connection) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mIdle.size() < kMaxIdleConnections) mIdle.push_back(std::move(connection));
}

android::base::unique_fd RemoteEndpoint::takeConnection(bool* reused) {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        while (!mIdle.empty()) {
            android::base::unique_fd fd = std::move(mIdle.back());
            mIdle.pop_back();
            if (idleConnectionUsable(fd.get())) {
                *reused = true;
                return fd;
            }
        }
    }
    *reused = false;
    return connectToSocket(mSocketPath);
}

bool RemoteEndpoint::isAlive() {
    return connectToSocket(mSocketPath).ok();
}

binder_status_t RemoteEndpoint::transact(transaction_code_t code, const AParcel* in, AParcel* reply,
                                         binder_flags_t flags, int fd) {
    // Binder objects only have meaning inside this process.
    if (!in->objects.empty()) return STATUS_INVALID_OPERATION;
    if (in->data.size() > kMaxPayloadSize) return STATUS_FAILED_TRANSACTION;
    const FrameHeader request = {kRequestMagic, code, flags, static_cast<uint32_t>(in->data.size())};

    // A reused connection may have been closed by a service that restarted; a request that
    // could not be sent was never run, so it is safe to try once more on a fresh connection.
    for (int attempt = 0; attempt < 2; ++attempt) {
        bool reused = false;
        android::base::unique_fd connection = takeConnection(&reused);
        if (!connection.ok()) return STATUS_DEAD_OBJECT;
        if (!sendFrame(connection.get(), request, in->data.data(), in->data.size(), fd)) {
            if (reused) continue;
            return STATUS_DEAD_OBJECT;
        }
        if (flags & FLAG_ONEWAY) {
            addIdleConnection(std::move(connection));
            return STATUS_OK;
        }

        FrameHeader header;
        std::vector<uint8_t> payload;
        if (readReply(connection.get(), &header, &payload) != ReadResult::kOk) {
            if (errno == EPROTO) return STATUS_FAILED_TRANSACTION;
            // The service closes idle connections, and one it closed with this request still
            // unread is reset: the request never ran, so it may go out again.
            if (reused && errno == ECONNRESET) continue;
            return STATUS_DEAD_OBJECT;
        }
        addIdleConnection(std::move(connection));
        const auto result = static_cast<binder_status_t>(header.word);
        if (result != STATUS_OK) return result;
        return AParcel_unmarshal(reply, payload.data(), payload.size());
    }
    return STATUS_DEAD_OBJECT;
}

}  // namespace host_binder
