/*
 * Proxy transport.
 */
#include <utility>

#include "remote.h"

namespace host_binder {

struct RemoteEndpoint::Pool {};

RemoteEndpoint::RemoteEndpoint(std::string socketPath)
    : mSocketPath(std::move(socketPath)), mPool(new Pool) {}

RemoteEndpoint::~RemoteEndpoint() {
    delete mPool;
}

binder_status_t RemoteEndpoint::transact(transaction_code_t, const AParcel*, AParcel*,
                                         binder_flags_t, int) {
    return STATUS_DEAD_OBJECT;
}

bool RemoteEndpoint::isAlive() {
    return false;
}

}  // namespace host_binder
