// DAMON reclaim tuning: the module's parameter nodes.

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

using P = Performance;
using testing::call, testing::Debug, testing::Error, testing::OperationRow, testing::Outcome,
    testing::row;

const std::string kDamon = "/sys/module/damon_reclaim/parameters/";
constexpr char kEnabled[] = "/sys/module/damon_reclaim/parameters/enabled";
const Outcome kColdRange = {
    "-1", {Error("[damon_reclaim] cold time must be in the interval [30, 3600].")}};
const Outcome kColdSet = {"0", {Debug("[damon_reclaim] set cold_time success.")}};
// clang-format off
const Outcome kAbsent = {"-1", {Error("[damon_reclaim] Failed to open {node} (2): No such file or "
                                      "directory, Linux version {version}")}};
// Every node is truncated on open, before the argument is checked.
OperationRow cold(int seconds, const char* content, const char* written, const Outcome& outcome) {
    return row("cold_time_" + std::to_string(seconds), call(&P::setDamonReclaimColdTime, seconds))
        .at("/sys/module/damon_reclaim/parameters/min_age").holding(content).leaves(written)
        .whenPresent(outcome).whenAbsent(kAbsent);
}
const OperationRow kDamonRows[] = {
    row(OP(enableDamonReclaim)).at(kEnabled).holding("N\n").leaves("1")
        .whenPresent({"0", {Debug("[damon_reclaim] enabled.")}}).whenAbsent(kAbsent),
    row(OP(disableDamonReclaim)).at(kEnabled).holding("Y\n").leaves("0")
        .whenPresent({"0", {Debug("[damon_reclaim] disable.")}}).whenAbsent(kAbsent),
    cold(29, "60000000", "", kColdRange), cold(30, "", "30000000", kColdSet),
    cold(3600, "", "3600000000", kColdSet), cold(3601, "", "", kColdRange)};
// clang-format on
INSTANTIATE_OPERATION_ROWS(DamonReclaim, kDamonRows);

TEST_F(NodeRootTest, DamonMultiNodeCallsCheckThenWriteInOrder) {
    // Each node is a link to one FIFO, so what the FIFO holds afterwards is the bytes each node
    // received, in the order the kernel saw them; a directory stands at the absent node's path.
    int count = 0;
    const auto expect = [&](testing::Call c, std::vector<const char*> nodes, const char* absent,
                            const char* received, const char* result,
                            const std::vector<LogLine>& lines) {
        SCOPED_TRACE("case " + std::to_string(++count));
        std::filesystem::remove_all(path("/sys"));
        const std::string fifo = path("/fifo");
        unlink(fifo.c_str());
        ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
        android::base::unique_fd reader(open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        for (const char* node : nodes) makeLink(kDamon + node, fifo);
        if (absent != nullptr) makeDirectoryAt(kDamon + absent);
        auto service = quietService("5.15.78");
        EXPECT_EQ(c(*service), result);
        char bytes[64] = {};
        EXPECT_GE(read(reader, bytes, sizeof(bytes) - 1), 0);
        EXPECT_STREQ(bytes, received);
        EXPECT_EQ(logs(), lines);
    };
    const std::vector<const char*> wmarks = {"wmarks_metric", "wmarks_high", "wmarks_mid",
                                             "wmarks_low"};
    const std::vector<const char*> quota = {"quota_ms", "quota_sz"};
    const std::vector<const char*> monitoring = {"sample_interval", "aggr_interval"};
    const LogLine set = Debug("[damon_reclaim] set wmarks_metric success.");
    expect(call(&P::setDamonReclaimWmarks, 1, 1000, 500, 0), wmarks, nullptr, "110005000", "0",
           {Debug("[damon_reclaim] set wmarks success."), set});
    expect(call(&P::setDamonReclaimWmarks, 1, 1001, 500, 0), wmarks, nullptr, "1", "0", {set});
    expect(call(&P::setDamonReclaimWmarks, 0, 9, 5, 1), wmarks, nullptr, "0", "0", {set});
    // Any metric but 0 to 3, -1 as well.
    expect(call(&P::setDamonReclaimWmarks, 4, 9, 5, 1), wmarks, nullptr, "", "-1",
           {Error("[damon_reclaim] wmarks out of range, must be in the interval [0,1000].")});
    expect(call(&P::setDamonReclaimWmarks, 1, 9, 5, 1),
           {"wmarks_metric", "wmarks_high", "wmarks_low"}, "wmarks_mid", "", "-1",
           {Error("[damon_reclaim] Failed to open wmarks_xxx, Linux version 5.15.78")});
    // A full module: the reset interval is there too.
    expect(call(&P::setDamonReclaimQuota, 10, 1, 10),
           {"quota_ms", "quota_sz", "quota_reset_interval_ms"}, nullptr, "", "-1",
           {Error("[damon_reclaim] Failed to open quota_xxx, Linux version 5.15.78")});
    expect(call(&P::setDamonReclaimQuota, 10, 1, 10), quota, "quota_reset_interval_ms", "101048576",
           "0", {Debug("[damon_reclaim] set quota success.")});
    expect(call(&P::setDamonReclaimQuota, 11, 1, 10), quota, "quota_reset_interval_ms", "", "-1",
           {Debug("[damon_reclaim] quota_ms must <= reset_interval.")});
    expect(call(&P::setDamonReclaimMonitoring, 5, 10), monitoring, nullptr, "", "-1",
           {Debug("[damon_reclaim] sample must < aggr/2.")});
    expect(call(&P::setDamonReclaimMonitoring, 5, 11), monitoring, nullptr, "500011000", "0",
           {Debug("[damon_reclaim] set damon reclaim monitoring interval success.")});
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
