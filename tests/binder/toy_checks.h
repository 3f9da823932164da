/*
 * Checks shared by the in-process and cross-process tests of the toy interface.
 */
#pragma once

#include <aidl/vendor/test/toy/IToy.h>

namespace toy {

// Calls every method shape and checks what comes back.
void expectEveryShapeRoundTrips(aidl::vendor::test::toy::IToy* proxy);
// Service-specific errors, exceptions and transport errors arrive as raised.
void expectErrorsReachTheCaller(aidl::vendor::test::toy::IToy* proxy);

}  // namespace toy
