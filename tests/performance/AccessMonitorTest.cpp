// The access-control monitor: each request as a driver sees it, and the results without one.

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstring>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using testing::call;
using testing::OperationRow;

constexpr NodePair kAcm = {"/dev/acm", "/dev/acm"};

// Without the driver, /dev/acm is a plain file: every request fails with -1 and a read-back
// answers the untouched 0. Without /dev/acm, each operation answers its own open-failure result.
OperationRow acmRow(std::string name, testing::Call op, std::string present, std::string absent) {
    return {std::move(name), std::move(op), kAcm,        testing::Kernels::kAll, "", std::nullopt,
            {present, {}},   {absent, {}},  std::nullopt};
}
const std::string kName = "/data/media";
const OperationRow kAcmRows[] = {
    acmRow("setAcmOpstat", call(&Performance::setAcmOpstat, 1), "-1", "0"),
    acmRow("getAcmOpstat", call(&Performance::getAcmOpstat), "0", "0"),
    acmRow("addAcmPkgName", call(&Performance::addAcmPkgName, kName, int64_t{0}), "-1", "1"),
    acmRow("addAcmPkgName_negativeFlag", call(&Performance::addAcmPkgName, kName, int64_t{-1}), "1",
           "1"),
    acmRow("delAcmPkgName", call(&Performance::delAcmPkgName, kName), "-1", "0"),
    acmRow("getAcmPkgFlag", call(&Performance::getAcmPkgFlag, kName), "0", "0"),
    acmRow("addAcmDirName", call(&Performance::addAcmDirName, kName, int64_t{2}), "-1", "1"),
    acmRow("addAcmDirName_negativeFlag", call(&Performance::addAcmDirName, kName, int64_t{-1}), "1",
           "1"),
    acmRow("delAcmDirName", call(&Performance::delAcmDirName, kName), "-1", "1"),
    acmRow("getAcmDirFlag", call(&Performance::getAcmDirFlag, kName), "0", "0"),
    acmRow("addAcmNomediaDirName", call(&Performance::addAcmNomediaDirName, kName), "-1", "1"),
    acmRow("delAcmNomediaDirName", call(&Performance::delAcmNomediaDirName, kName), "-1", "1"),
    acmRow("searchAcmNomediaDirName", call(&Performance::searchAcmNomediaDirName, kName), "-1", "1"),
};
INSTANTIATE_OPERATION_ROWS(AccessMonitor, kAcmRows);

// Records what each request carries and writes kWriteBack into the record's first field, as the
// driver answers a query; every request itself then fails.
constexpr int64_t kWriteBack = -3;
struct FakeAcmDriver : DeviceIo {
    int open(const char* path, int flags) override {
        opened.push_back(path + std::string(flags == O_RDWR ? "" : " with other flags"));
        return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    int ioctl(int, unsigned int request, void* arg) override {
        codes.push_back(request);
        const bool bareName = _IOC_NR(request) == 3 || _IOC_NR(request) == 6;
        records.push_back(bareName ? std::string(static_cast<char*>(arg))
                                   : std::string(static_cast<char*>(arg), _IOC_SIZE(request)));
        const unsigned int nr = _IOC_NR(request);
        if (nr == 1 || nr == 4 || nr == 7) memcpy(arg, &kWriteBack, nr == 1 ? 4 : 8);
        return -1;
    }
    std::vector<std::string> opened;
    std::vector<unsigned int> codes;
    std::vector<std::string> records;
};

std::string padded(std::string name, size_t size) {
    return name.append(size - name.size(), 0);
}
std::string flagged(int64_t flag, const std::string& name, size_t size) {
    return std::string(reinterpret_cast<const char*>(&flag), 8) + padded(name, size);
}

class AccessMonitorTest : public NodeRootTest {};

TEST_F(AccessMonitorTest, RequestsReachTheDriverAsItsRecords) {
    auto driver = std::make_shared<FakeAcmDriver>();
    auto service = ndk::SharedRefBase::make<Performance>(mRoot, driver);
    clearLogs();
    const std::string longName(150, 'n');
    const std::vector<std::string> results = {
        call(&Performance::setAcmOpstat, 7)(*service),
        call(&Performance::getAcmOpstat)(*service),
        call(&Performance::addAcmPkgName, longName, int64_t{5})(*service),
        call(&Performance::delAcmPkgName, std::string("com.a"))(*service),
        call(&Performance::getAcmPkgFlag, std::string("com.a"))(*service),
        call(&Performance::addAcmDirName, longName.substr(50), INT64_MAX)(*service),
        call(&Performance::delAcmDirName, std::string("/d"))(*service),
        call(&Performance::getAcmDirFlag, std::string())(*service),
        call(&Performance::addAcmNomediaDirName, longName.substr(50))(*service),
        call(&Performance::delAcmNomediaDirName, std::string("/n"))(*service),
        call(&Performance::searchAcmNomediaDirName, std::string("/n"))(*service),
    };
    EXPECT_EQ(results, (std::vector<std::string>{"-1", "-3", "-1", "-1", "-3", "-1", "-1", "-3",
                                                 "-1", "-1", "-1"}));
    EXPECT_EQ(driver->codes,
              (std::vector<unsigned int>{0x40046100, 0x40046101, 0x40706102, 0x40086103, 0x40706104,
                                         0x80486105, 0x80086106, 0x80486107, 0x80406108, 0x80406109,
                                         0x8040610a}));
    EXPECT_EQ(driver->records,
              (std::vector<std::string>{
                  std::string("\x07\0\0\0", 4), std::string(4, 0),
                  flagged(5, longName.substr(0, 99), 104), "com.a", flagged(0, "com.a", 104),
                  flagged(INT64_MAX, longName.substr(0, 63), 64), "/d", flagged(0, "", 64),
                  padded(longName.substr(0, 63), 64), padded("/n", 64), padded("/n", 64)}));
    EXPECT_EQ(driver->opened, std::vector<std::string>(11, mRoot + "/dev/acm"));
    EXPECT_TRUE(logs().empty());
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
