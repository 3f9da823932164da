#pragma once

#include "DeviceContext.h"

// Host only: applies the daemon's host options and returns the device to serve: the node root,
// with memory cgroup paths answered from its own mounts.
//   --root DIR            serve the device tree at DIR; "/" serves this machine's own nodes.
//                         Required: a host daemon never touches real nodes by accident.
//   --property KEY=VALUE  set a system property before the service object is built
//   --allow-uid LIST      let these uids call too (comma-separated uids or FIRST-LAST ranges);
//                         the daemon's own uid and root always may. The host's stand-in for the
//                         device's SELinux policy.
// Logs every priority unless ANDROID_LOG_TAGS (e.g. "*:i") narrows it, to stderr, each line of a
// message under a header of its own.
// Exits with status 2 and a usage message on anything else.
aidl::vendor::vyren::hardware::performance::DeviceContext ApplyHostServiceOptions(int argc,
                                                                                  char** argv);
