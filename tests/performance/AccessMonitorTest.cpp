// The access-control monitor: each request as a driver sees it, and the results without one.

#include <fcntl.h>
#include <sys/ioctl.h>

#include <cstring>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using P = Performance;
using testing::call;

const std::string kName(150, 'n'), kDir100 = kName.substr(50), kFlag0(8, 0);
// A record's flag field holding a small flag.
const auto flag = [](char value) { return value + kFlag0.substr(1); };
const std::string kPackage = kName.substr(0, 99) + std::string(5, 0);
const std::string kDir = kName.substr(0, 63) + '\0';

struct AcmCase {
    const char* name;
    testing::Call op;
    // The request and argument bytes a driver receives; 0 when the device is not touched.
    unsigned int code;
    std::string record;
    // The result with a driver, with /dev/acm a plain file (every request fails, queries answer
    // the untouched 0) and with no /dev/acm.
    const char *withDriver, *plainFile, *absent;
};
const AcmCase kCases[] = {
    {OP(setAcmOpstat, 7), 0x40046100, {"\7\0\0\0", 4}, "-1", "-1", "0"},
    {OP(getAcmOpstat), 0x40046101, std::string(4, 0), "-3", "0", "0"},
    {OP(addAcmPkgName, kName, int64_t{5}), 0x40706102, flag(5) + kPackage, "-1", "-1", "1"},
    {"addAcmPkgName_negativeFlag", call(&P::addAcmPkgName, kName, int64_t{-1}), 0, "", "1", "1",
     "1"},
    {OP(delAcmPkgName, kName), 0x40086103, kName, "-1", "-1", "0"},
    {OP(getAcmPkgFlag, kName), 0x40706104, kFlag0 + kPackage, "-3", "0", "0"},
    {OP(addAcmDirName, kDir100, int64_t{9}), 0x80486105, flag(9) + kDir, "-1", "-1", "1"},
    {OP(delAcmDirName, kName), 0x80086106, kName, "-1", "-1", "1"},
    {OP(getAcmDirFlag, kName), 0x80486107, kFlag0 + kDir, "-3", "0", "0"},
    {OP(addAcmNomediaDirName, kDir100), 0x80406108, kDir, "-1", "-1", "1"},
    {OP(delAcmNomediaDirName, kName), 0x80406109, kDir, "-1", "-1", "1"},
    {OP(searchAcmNomediaDirName, kName), 0x8040610a, kDir, "-1", "-1", "1"},
};

std::vector<testing::OperationRow> acmRows() {
    std::vector<testing::OperationRow> rows;
    for (const auto& c : kCases) {
        rows.push_back(testing::Row(c.name, c.op, "/dev/acm", "", testing::kUnchanged,
                                    {c.plainFile, {}}, {c.absent, {}}));
    }
    return rows;
}
INSTANTIATE_OPERATION_ROWS(AccessMonitor, acmRows());

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

class AccessMonitorTest : public NodeRootTest {};

TEST_F(AccessMonitorTest, RequestsReachTheDriverAsItsRecords) {
    auto driver = std::make_shared<FakeAcmDriver>();
    auto service = ndk::SharedRefBase::make<Performance>(mRoot, driver);
    clearLogs();
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.name);
        *driver = {};
        EXPECT_EQ(c.op(*service), c.withDriver);
        EXPECT_EQ(driver->last, std::make_pair(c.code, c.record));
        EXPECT_EQ(driver->opened, c.code == 0 ? "" : mRoot + "/dev/acm");
    }
    EXPECT_TRUE(logs().empty());
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
