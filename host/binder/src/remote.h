/*
 * Client side of a binder served by another process.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <android/binder_ibinder.h>

#include <mutex>
#include <string>
#include <vector>

namespace host_binder {

// The far end of a proxy binder: a service listening on a Unix domain socket.
//
// Each call borrows a connection for its whole request and reply, so concurrent calls from
// several threads run on separate connections in parallel. Finished connections are kept for
// reuse; one the service has closed is dropped and the call goes out on a fresh one.
class RemoteEndpoint {
  public:
    explicit RemoteEndpoint(std::string socketPath);
    RemoteEndpoint(const RemoteEndpoint&) = delete;
    RemoteEndpoint& operator=(const RemoteEndpoint&) = delete;

    // Sends in to the service and fills reply (left empty for one-way calls). fd, when not -1,
    // travels with the request.
    binder_status_t transact(transaction_code_t code, const AParcel* in, AParcel* reply,
                             binder_flags_t flags, int fd = -1);
    // True when the service accepts connections.
    bool isAlive();
    // Keeps an already connected socket for the next call.
    void addIdleConnection(android::base::unique_fd connection);

    const std::string& socketPath() const { return mSocketPath; }

  private:
    android::base::unique_fd takeConnection(bool* reused);

    const std::string mSocketPath;
    std::mutex mMutex;
    std::vector<android::base::unique_fd> mIdle;
};

}  // namespace host_binder
