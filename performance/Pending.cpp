// Operations whose subsystems are not built yet. Each answers EX_UNSUPPORTED_OPERATION, so a
// caller can tell them from a built operation that failed.

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

::ndk::ScopedAStatus Performance::readMemoryByPids(
    const std::vector<int32_t>&, int32_t,
    ::aidl::vendor::vyren::hardware::performance::ProcMemStatRet*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readMemoryByUids(
    const std::vector<int32_t>&, int32_t,
    ::aidl::vendor::vyren::hardware::performance::ProcMemStatRet*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readQuilbexVersion(
    ::aidl::vendor::vyren::hardware::performance::QuilbexVersionRet*) {
    return notYetBuilt();
}

}  // namespace aidl::vendor::vyren::hardware::performance
