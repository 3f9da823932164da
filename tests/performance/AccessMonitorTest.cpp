// The access-control monitor: each request as a driver sees it, and the results without one.

#include <fcntl.h>
#include <sys/ioctl.h>

#include <cstring>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

const std::string kName(150, 'n'), kDir100 = kName.substr(50), kFlag0(8, 0);
// A record's flag field holding a small flag.
const auto flag = [](char value) { return value + kFlag0.substr(1); };
const std::string kPackage = kName.substr(0, 99) + std::string(5, 0),
                  kDir = kName.substr(0, 63) + '\0';

// A row at /dev/acm answering plainFile with the device a plain file (every request fails, a query
// answers its record's untouched 0) and absent without it; and the request code and argument bytes
// a driver receives (code 0: the device is not touched).
struct AcmCase : testing::OperationRow {
    AcmCase(std::string name, testing::Call op, const char* plainFile, const char* absent)
        : OperationRow(testing::row(std::move(name), std::move(op)).at("/dev/acm")) {
        whenPresent({plainFile, {}}).whenAbsent({absent, {}});
    }
    AcmCase& sends(unsigned int c, std::string bytes) {
        return code = c, record = std::move(bytes), *this;
    }
    unsigned int code = 0;
    std::string record;
};

// clang-format off
const AcmCase kCases[] = {
    AcmCase(OP(setAcmOpstat, 7), "-1", "0").sends(0x40046100, {"\7\0\0\0", 4}),
    AcmCase(OP(getAcmOpstat), "0", "0").sends(0x40046101, std::string(4, 0)),
    AcmCase(OP(addAcmPkgName, kName, int64_t{5}), "-1", "1").sends(0x40706102, flag(5) + kPackage),
    AcmCase("addAcmPkgName_negativeFlag", testing::call(&Performance::addAcmPkgName, kName,
                                                        int64_t{-1}), "1", "1"),
    AcmCase(OP(delAcmPkgName, kName), "-1", "0").sends(0x40086103, kName),
    AcmCase(OP(getAcmPkgFlag, kName), "0", "0").sends(0x40706104, kFlag0 + kPackage),
    AcmCase(OP(addAcmDirName, kDir100, int64_t{9}), "-1", "1").sends(0x80486105, flag(9) + kDir),
    AcmCase(OP(delAcmDirName, kName), "-1", "1").sends(0x80086106, kName),
    AcmCase(OP(getAcmDirFlag, kName), "0", "0").sends(0x80486107, kFlag0 + kDir),
    AcmCase(OP(addAcmNomediaDirName, kDir100), "-1", "1").sends(0x80406108, kDir),
    AcmCase(OP(delAcmNomediaDirName, kName), "-1", "1").sends(0x80406109, kDir),
    AcmCase(OP(searchAcmNomediaDirName, kName), "-1", "1").sends(0x8040610a, kDir),
};
// clang-format on

INSTANTIATE_OPERATION_ROWS(AccessMonitor, std::vector<testing::OperationRow>(std::begin(kCases),
                                                                             std::end(kCases)));

// Keeps the last request's code and argument bytes (a bare name's characters) and writes -3 back
// into the first field of a query's record; the request itself always fails.
struct FakeAcmDriver : DeviceIo {
    int open(const char* path, int flags) override {
        opened = path + std::string(flags == O_RDWR ? "" : " with other flags");
        return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    int ioctl(int, unsigned long request, void* arg) override {
        const unsigned int nr = _IOC_NR(request);
        const size_t size =
            nr == 3 || nr == 6 ? strlen(static_cast<char*>(arg)) : _IOC_SIZE(request);
        last = {static_cast<unsigned int>(request), std::string(static_cast<char*>(arg), size)};
        const int64_t writeBack = -3;
        if (nr == 1 || nr == 4 || nr == 7) memcpy(arg, &writeBack, nr == 1 ? 4 : 8);
        return -1;
    }
    std::string opened;
    std::pair<unsigned int, std::string> last;
};

TEST_F(NodeRootTest, AcmRequestsReachTheDriverAsItsRecords) {
    auto driver = std::make_shared<FakeAcmDriver>();
    DeviceContext device = context();
    device.deviceIo = driver;
    auto service = ndk::SharedRefBase::make<Performance>(device);
    clearLogs();
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.name);
        *driver = {};
        // The driver writes -3 back into a query's record, where a plain file leaves its 0.
        EXPECT_EQ(c.call(*service), c.present.result == "0" ? "-3" : c.present.result);
        EXPECT_EQ(driver->last, std::make_pair(c.code, c.record));
        EXPECT_EQ(driver->opened, c.code == 0 ? "" : mRoot + "/dev/acm");
    }
    EXPECT_TRUE(logs().empty());
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
