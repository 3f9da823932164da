/*
 * Host-only additions to the NDK binder subset. On a device the SELinux policy decides who may
 * call a service; on a host the transport admits the service's own uid and root, and whoever
 * this adds.
 */
#pragma once

#include <sys/types.h>

namespace host_binder {

// Lets processes of uids first..last (inclusive) call the services of this process. Call it
// before AServiceManager_addService: sockets registered while only the own uid is admitted are
// private to it, and others are open to every uid, which the transport then checks per call.
void allowCallerUids(uid_t first, uid_t last);

}  // namespace host_binder
