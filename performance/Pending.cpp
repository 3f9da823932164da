// Operations whose subsystems are not built yet. Each answers EX_UNSUPPORTED_OPERATION, so a
// caller can tell them from a built operation that failed.

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {

::ndk::ScopedAStatus Performance::addAcmDirName(const std::string&, int64_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::addAcmNomediaDirName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::addAcmPkgName(const std::string&, int64_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::delAcmDirName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::delAcmNomediaDirName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::delAcmPkgName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getAcmDirFlag(const std::string&, int64_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getAcmOpstat(int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::getAcmPkgFlag(const std::string&, int64_t*) {
    return notYetBuilt();
}
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
::ndk::ScopedAStatus Performance::readStorageFeature(const std::string&, const std::string&,
                                                     const std::string&, std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::searchAcmNomediaDirName(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::setAcmOpstat(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeStorageFeature(const std::string&, const std::string&,
                                                      const std::string&, const std::string&,
                                                      int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryMemory(const std::string&, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemorySwitch(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryFlushBusy(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryFlushIdle(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryCapacity(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::writeTmemoryHighWaterRatio(int32_t, int32_t*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTmemorySysdirtypages(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTmemoryDirtypages(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTmemoryErrorStat(std::string*) {
    return notYetBuilt();
}
::ndk::ScopedAStatus Performance::readTmemoryIoLatency(std::string*) {
    return notYetBuilt();
}

}  // namespace aidl::vendor::vyren::hardware::performance
