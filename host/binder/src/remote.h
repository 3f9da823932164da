/*
 * Client side of a binder served by another process.
 */
#pragma once

#include <android/binder_ibinder.h>

#include <string>

namespace host_binder {

// The far end of a proxy binder: a service listening on a Unix domain socket.
class RemoteEndpoint {
  public:
    explicit RemoteEndpoint(std::string socketPath);
    ~RemoteEndpoint();
    RemoteEndpoint(const RemoteEndpoint&) = delete;
    RemoteEndpoint& operator=(const RemoteEndpoint&) = delete;

    // Sends in to the service and fills reply (left empty for one-way calls). fd, when not -1,
    // travels with the request.
    binder_status_t transact(transaction_code_t code, const AParcel* in, AParcel* reply,
                             binder_flags_t flags, int fd = -1);
    bool isAlive();

    const std::string& socketPath() const { return mSocketPath; }

  private:
    struct Pool;
    std::string mSocketPath;
    Pool* mPool;
};

}  // namespace host_binder
