/*
 * Checks shared by the in-process and cross-process tests of the toy interface.
 */
#pragma once

#include <aidl/vendor/test/toy/IToy.h>

#include <vector>

namespace toy {

// The bytes a parcel marshals to.
std::vector<uint8_t> bytesOf(const AParcel* parcel);
std::vector<uint8_t> bytesOf(const aidl::vendor::test::toy::Record& record);

// Calls every method shape and checks what comes back, the caller's identity included.
void expectEveryShapeRoundTrips(aidl::vendor::test::toy::IToy* proxy);
// Service-specific errors, exceptions and transport errors arrive as raised.
void expectErrorsReachTheCaller(aidl::vendor::test::toy::IToy* proxy);
// A class for descriptor whose binders answer nothing. Classes live as long as the process.
const AIBinder_Class* defineClass(const char* descriptor);

}  // namespace toy
