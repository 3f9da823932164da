// Access-control monitor: each operation is one request on /dev/acm, whose driver keeps the
// package, directory and nomedia lists and the global operating state. Flags and states are the
// driver's; they pass through unchanged. Nothing here is logged.

#include "AccessMonitor.h"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/ioctl.h>

#include <cstddef>
#include <cstring>

namespace aidl::vendor::vyren::hardware::performance {

namespace {

constexpr char kAcmDevice[] = "/dev/acm";

// The driver's argument records: packed, zero-filled, names NUL-padded.
struct __attribute__((packed)) AcmPackage {
    int64_t flag;
    char name[104];
};
struct __attribute__((packed)) AcmDirectory {
    int64_t flag;
    char name[64];
};
struct AcmNomedia {
    char name[64];
};
static_assert(sizeof(AcmPackage) == 112 && offsetof(AcmPackage, name) == 8);
static_assert(sizeof(AcmDirectory) == 72 && offsetof(AcmDirectory, name) == 8);
static_assert(sizeof(AcmNomedia) == 64);

// The longest names stored, so that a stored name always ends in NUL; longer ones are cut.
constexpr size_t kPackageNameMax = 99;
constexpr size_t kDirectoryNameMax = 63;

// The driver's request codes, its wire contract, used as they are. Their direction bits are not
// what the driver does: it writes back through the state and package-flag queries, which say
// "write", and only takes data in through most of the requests that say "read". The bare-name
// requests carry the size of a pointer of this 64-bit service.
constexpr AcmRequest kSetOpstat = {0x40046100, 0};
constexpr AcmRequest kGetOpstat = {0x40046101, 0};
constexpr AcmRequest kAddPackage = {0x40706102, 1};
constexpr AcmRequest kDelPackage = {0x40086103, 0};
constexpr AcmRequest kGetPackageFlag = {0x40706104, 0};
constexpr AcmRequest kAddDirectory = {0x80486105, 1};
constexpr AcmRequest kDelDirectory = {0x80086106, 1};
constexpr AcmRequest kGetDirectoryFlag = {0x80486107, 0};
constexpr AcmRequest kAddNomedia = {0x80406108, 1};
constexpr AcmRequest kDelNomedia = {0x80406109, 1};
constexpr AcmRequest kSearchNomedia = {0x8040610a, 1};

static_assert(kSetOpstat.code == _IOW('a', 0, int32_t) && kGetOpstat.code == _IOW('a', 1, int32_t));
static_assert(kAddPackage.code == _IOW('a', 2, AcmPackage) &&
              kGetPackageFlag.code == _IOW('a', 4, AcmPackage));
static_assert(kDelPackage.code == _IOW('a', 3, char*) && kDelDirectory.code == _IOR('a', 6, char*));
static_assert(kAddDirectory.code == _IOR('a', 5, AcmDirectory) &&
              kGetDirectoryFlag.code == _IOR('a', 7, AcmDirectory));
static_assert(kAddNomedia.code == _IOR('a', 8, AcmNomedia) &&
              kDelNomedia.code == _IOR('a', 9, AcmNomedia) &&
              kSearchNomedia.code == _IOR('a', 10, AcmNomedia));

template <size_t kMax, size_t N>
void copyName(char (&field)[N], const std::string& name) {
    static_assert(kMax < N, "a stored name keeps its terminating NUL");
    // Stops at the name's end; the rest of the zero-filled field stays zero.
    strncpy(field, name.c_str(), kMax);
}

AcmPackage packageRecord(const std::string& name, int64_t flag) {
    AcmPackage record = {};
    record.flag = flag;
    copyName<kPackageNameMax>(record.name, name);
    return record;
}

AcmDirectory directoryRecord(const std::string& name, int64_t flag) {
    AcmDirectory record = {};
    record.flag = flag;
    copyName<kDirectoryNameMax>(record.name, name);
    return record;
}

AcmNomedia nomediaRecord(const std::string& name) {
    AcmNomedia record = {};
    copyName<kDirectoryNameMax>(record.name, name);
    return record;
}

// A bare-name request passes the caller's characters; the driver only reads them.
void* bareName(const std::string& name) {
    return const_cast<char*>(name.c_str());
}

}  // namespace

int AccessMonitor::acmRequest(const AcmRequest& request, void* arg) const {
    android::base::unique_fd fd(mDeviceIo->open(mNodes.path(kAcmDevice).c_str(), O_RDWR));
    if (fd < 0) return request.openFailure;
    return mDeviceIo->ioctl(fd, request.code, arg);
}

int32_t AccessMonitor::setAcmOpstat(int32_t state) const {
    return acmRequest(kSetOpstat, &state);
}

int32_t AccessMonitor::getAcmOpstat() const {
    // The answer is the word the driver wrote back, whatever the request returned.
    int32_t state = 0;
    (void)acmRequest(kGetOpstat, &state);
    return state;
}

int32_t AccessMonitor::addAcmPkgName(const std::string& pkgName, int64_t flag) const {
    AcmPackage record = packageRecord(pkgName, flag);
    return flag < 0 ? 1 : acmRequest(kAddPackage, &record);
}

int32_t AccessMonitor::delAcmPkgName(const std::string& pkgName) const {
    return acmRequest(kDelPackage, bareName(pkgName));
}

int64_t AccessMonitor::getAcmPkgFlag(const std::string& pkgName) const {
    AcmPackage record = packageRecord(pkgName, 0);
    (void)acmRequest(kGetPackageFlag, &record);
    return record.flag;
}

int32_t AccessMonitor::addAcmDirName(const std::string& dirName, int64_t flag) const {
    AcmDirectory record = directoryRecord(dirName, flag);
    return flag < 0 ? 1 : acmRequest(kAddDirectory, &record);
}

int32_t AccessMonitor::delAcmDirName(const std::string& dirName) const {
    return acmRequest(kDelDirectory, bareName(dirName));
}

int64_t AccessMonitor::getAcmDirFlag(const std::string& dirName) const {
    AcmDirectory record = directoryRecord(dirName, 0);
    (void)acmRequest(kGetDirectoryFlag, &record);
    return record.flag;
}

int32_t AccessMonitor::addAcmNomediaDirName(const std::string& dirName) const {
    AcmNomedia record = nomediaRecord(dirName);
    return acmRequest(kAddNomedia, &record);
}

int32_t AccessMonitor::delAcmNomediaDirName(const std::string& dirName) const {
    AcmNomedia record = nomediaRecord(dirName);
    return acmRequest(kDelNomedia, &record);
}

int32_t AccessMonitor::searchAcmNomediaDirName(const std::string& dirName) const {
    AcmNomedia record = nomediaRecord(dirName);
    return acmRequest(kSearchNomedia, &record);
}

}  // namespace aidl::vendor::vyren::hardware::performance
