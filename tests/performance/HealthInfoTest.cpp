// Health information: the key templates of the health nodes, and the nodes read as text.

#include "HealthInfo.h"
#include "OperationNodes.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

testing::Paths hi(const std::string& node) {
    const std::string path = "/proc/vyren_healthinfo/" + node;
    return {path, path};
}

const testing::OperationRow kRows[] = {
    testing::reportRow(OP(getHICpuLoading), hi("cpu_loading"), 4096),
    testing::reportRow(OP(getHICpuInfo), hi("cpu_info"), 4096),
    testing::reportRow(OP(getschedlatency), hi("sched_latency"), 4096),
    testing::reportRow(OP(getiowait), hi("iowait"), 4096),
    testing::reportRow(OP(getfsyncwait), hi("fsync_wait"), 4096),
    testing::reportRow(OP(getionwait), hi("ion_wait"), 4096),
    testing::reportRow(OP(getallocwait), hi("alloc_wait"), 4096),
    testing::reportRow(OP(getdstate), hi("dstate"), 4096)};
INSTANTIATE_OPERATION_ROWS(HealthInfo, kRows);

// The contract is the item count and key order of each template, whether or not the node exists.
TEST_F(NodeRootTest, HealthDescriptorsAnswerTheirNodesTemplateWithoutOpeningIt) {
    const std::tuple<decltype(&HealthInfo::getHIIowait), const char*, size_t, const char*> ops[] = {
        {&HealthInfo::getHIEmcdrvIowait, "emcdrv_iowait", 40, "emcdrv_iowait_low_thresh_ms"},
        {&HealthInfo::getHIIowaitHung, "iowait_hung", 2, "iowait_hung_cnt"},
        {&HealthInfo::getHISchedLatency, "sched_latency", 11, "sched_low_thresh_ms"},
        {&HealthInfo::getHIFsyncWait, "fsync_wait", 11, "fsync_low_thresh_ms"},
        {&HealthInfo::getHIIowait, "iowait", 11, "iowait_low_thresh_ms"},
        {&HealthInfo::getHIUfsFeature, "ufs_feature", 25, "hpb_hit_cnt"},
        {&HealthInfo::getHIIonWait, "ion_wait", 5, "total_ion_wait_h_cnt"},
        {&HealthInfo::getHIAllocWait, "alloc_wait", 8, "total_alloc_wait_h_cnt"},
        {&HealthInfo::getHIDState, "dstate", 11, "dstate_low_thresh_ms"},
        {&HealthInfo::getHIKswapdLoading, "kswapd_loading", 2, "critical"},
        {&HealthInfo::getHIScmCall, "scm_call", 11, "scmcall_low_thresh_ms"}};
    for (const auto& [op, node, count, firstKey] : ops) {
        const ProcReqHal request = (HealthInfo(nodes()).*op)();
        EXPECT_EQ(request.path, std::string("/proc/vyren_healthinfo/") + node);
        ASSERT_EQ(request.items.size(), count) << node;
        EXPECT_EQ(request.items[0].key, firstKey);
    }
    EXPECT_TRUE(logs().empty());
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
