// The service as a binder object: every operation at its transaction code, the version and hash
// of the interface, and each argument and result type marshalled through the generated proxy.

#include <aidl/vendor/vyren/hardware/performance/BpPerformance.h>
#include <android-base/file.h>
#include <android-base/strings.h>
#include <android-base/unique_fd.h>
#include <android/binder_manager.h>
#include <sys/mman.h>

#include "NodeRootFixture.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

constexpr int kOperations = 171;

// Echoes what it receives, so a round trip shows each type survives both directions.
class EchoPerformance : public Performance {
  public:
    using Performance::Performance;

    ::ndk::ScopedAStatus readIomonitorInfo(const std::string& text,
                                           std::string* _aidl_return) override {
        *_aidl_return = "echo:" + text;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus addAcmDirName(const std::string& dir, int64_t flag,
                                       int32_t* _aidl_return) override {
        lastText = dir;
        lastLong = flag;
        *_aidl_return = -7;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus getAcmDirFlag(const std::string&, int64_t* _aidl_return) override {
        *_aidl_return = INT64_MIN + 3;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus addTaskTrackPid(int32_t group, int32_t pid, bool clear,
                                         int32_t* _aidl_return) override {
        *_aidl_return = clear ? group * 1000 + pid : -(group * 1000 + pid);
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus isJankTaskTrackEnable(bool* _aidl_return) override {
        *_aidl_return = true;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus clearTaskTrackGroup(int32_t group) override {
        lastLong = group;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus readMemoryByPids(const std::vector<int32_t>& pids, int32_t flags,
                                          ProcMemStatRet* _aidl_return) override {
        _aidl_return->result = flags;
        for (const int32_t pid : pids) {
            ProcMemStat stat;
            stat.name = "进程-" + std::to_string(pid);
            stat.flag = pid % 2 == 1;
            stat.value18 = u'é';
            stat.pid = pid;
            stat.value80 = -pid;
            _aidl_return->stats.push_back(stat);
        }
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus getWakeThreadsAffinityOrdered(const std::string& handle, int32_t count,
                                                       TaskWakeInfo* _aidl_return) override {
        _aidl_return->status = static_cast<int32_t>(handle.size());
        for (int32_t i = 0; i < count; ++i) {
            ThreadInfo info;
            info.field1 = i;
            info.field7 = -i;
            _aidl_return->threads.push_back(info);
        }
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus getHIIowaitHung(ProcReqHal* _aidl_return) override {
        _aidl_return->path = "/proc/vyren_healthinfo/iowait_hung";
        _aidl_return->items = {{"iowait_hung_cnt", ":", 0}, {"iowait_panic_cnt", ":", 1}};
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus readQuilbexVersion(QuilbexVersionRet* _aidl_return) override {
        _aidl_return->result = 0;
        _aidl_return->major = 65535;
        _aidl_return->minor = 1;
        return ::ndk::ScopedAStatus::ok();
    }

    std::string lastText;
    int64_t lastLong = 0;
};

class InterfaceTest : public NodeRootTest {
  protected:
    void SetUp() override {
        NodeRootTest::SetUp();
        setKernel("5.15.78");
        service = ndk::SharedRefBase::make<EchoPerformance>(mRoot);
        const std::string instance = std::string(IPerformance::descriptor) + "/default";
        ASSERT_EQ(AServiceManager_addService(service->asBinder().get(), instance.c_str()),
                  STATUS_OK);
        binder = ndk::SpAIBinder(AServiceManager_getService(instance.c_str()));
        ASSERT_NE(binder.get(), nullptr);
        // A proxy, not the local object, so that every call is marshalled.
        proxy = ndk::SharedRefBase::make<BpPerformance>(binder);
    }

    std::shared_ptr<EchoPerformance> service;
    ndk::SpAIBinder binder;
    std::shared_ptr<BpPerformance> proxy;
};

TEST_F(InterfaceTest, ReportsFrozenVersionAndHash) {
    int32_t version = 0;
    ASSERT_TRUE(proxy->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 2);

    std::string frozen;
    ASSERT_TRUE(android::base::ReadFileToString(PERFORMANCE_V2_HASH_FILE, &frozen));
    std::string hash;
    ASSERT_TRUE(proxy->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(hash, android::base::Trim(frozen));
    EXPECT_EQ(hash.size(), 40u);
}

// Zero words decode as default arguments of any signature: 0, false, "" and an empty array.
::ndk::ScopedAParcel zeroArguments(AIBinder* binder) {
    ::ndk::ScopedAParcel in;
    EXPECT_EQ(AIBinder_prepareTransaction(binder, in.getR()), STATUS_OK);
    for (int i = 0; i < 32; ++i) AParcel_writeInt32(in.get(), 0);
    return in;
}

TEST_F(InterfaceTest, EveryOperationAnswersAtItsTransactionCode) {
    for (int slot = 0; slot < kOperations; ++slot) {
        SCOPED_TRACE("slot " + std::to_string(slot));
        ::ndk::ScopedAParcel in = zeroArguments(binder.get());
        ::ndk::ScopedAParcel out;
        ASSERT_EQ(AIBinder_transact(binder.get(), FIRST_CALL_TRANSACTION + slot, in.getR(),
                                    out.getR(), 0),
                  STATUS_OK);
        ::ndk::ScopedAStatus status;
        ASSERT_EQ(AParcel_readStatusHeader(out.get(), status.getR()), STATUS_OK);
        EXPECT_TRUE(status.isOk()) << status.getDescription();
    }

    ::ndk::ScopedAParcel in = zeroArguments(binder.get());
    ::ndk::ScopedAParcel out;
    EXPECT_EQ(AIBinder_transact(binder.get(), FIRST_CALL_TRANSACTION + kOperations, in.getR(),
                                out.getR(), 0),
              STATUS_UNKNOWN_TRANSACTION);
}

TEST_F(InterfaceTest, SlotsReachTheirOperations) {
    const std::string older = "/proc/vyren_mem/memleak_detect/";
    writeNode(older + "kmalloc_debug_enable", "x");
    writeNode(older + "vmalloc_used", "VmallocUsed: 1234 kB\n");
    int32_t result = 0;
    ASSERT_TRUE(proxy->enableKmallocDebug(&result).isOk());  // slot 16
    EXPECT_EQ(readNode(older + "kmalloc_debug_enable"), "1");
    ASSERT_TRUE(proxy->disableKmallocDebug(&result).isOk());  // slot 9
    EXPECT_EQ(readNode(older + "kmalloc_debug_enable"), "0");
    std::string text;
    ASSERT_TRUE(proxy->getVmallocUsed(&text).isOk());  // slot 57
    EXPECT_EQ(text, "VmallocUsed: 1234 kB\n");
    // The last operation of each version.
    EXPECT_EQ(proxy->writeVaFeature(1, &result).getExceptionCode(), EX_NONE);
    TaskWakeInfo info;
    ASSERT_TRUE(proxy->getWakeThreadsAffinityOrdered("ab", 1, &info).isOk());
    EXPECT_EQ(info.status, 2);
}

TEST_F(InterfaceTest, ScalarsAndStringsSurviveTheRoundTrip) {
    std::string text;
    const std::string nonAscii = "héllo wörld — 日本語 😀 \xF0\x9F\x8E\x89";
    ASSERT_TRUE(proxy->readIomonitorInfo(nonAscii, &text).isOk());
    EXPECT_EQ(text, "echo:" + nonAscii);
    ASSERT_TRUE(proxy->readIomonitorInfo("", &text).isOk());
    EXPECT_EQ(text, "echo:");

    int32_t result = 0;
    ASSERT_TRUE(proxy->addAcmDirName("/sdcard/DCIM", INT64_MAX - 1, &result).isOk());
    EXPECT_EQ(result, -7);
    EXPECT_EQ(service->lastText, "/sdcard/DCIM");
    EXPECT_EQ(service->lastLong, INT64_MAX - 1);

    int64_t flag = 0;
    ASSERT_TRUE(proxy->getAcmDirFlag("x", &flag).isOk());
    EXPECT_EQ(flag, INT64_MIN + 3);

    ASSERT_TRUE(proxy->addTaskTrackPid(3, 1234, true, &result).isOk());
    EXPECT_EQ(result, 4234);
    ASSERT_TRUE(proxy->addTaskTrackPid(3, 1234, false, &result).isOk());
    EXPECT_EQ(result, -4234);

    bool enabled = false;
    ASSERT_TRUE(proxy->isJankTaskTrackEnable(&enabled).isOk());
    EXPECT_TRUE(enabled);

    ASSERT_TRUE(proxy->clearTaskTrackGroup(5).isOk());
    EXPECT_EQ(service->lastLong, 5);
}

TEST_F(InterfaceTest, ParcelablesSurviveTheRoundTrip) {
    ProcMemStatRet stats;
    ASSERT_TRUE(proxy->readMemoryByPids({1, 1000, INT32_MAX}, 0x20, &stats).isOk());
    EXPECT_EQ(stats.result, 0x20);
    ASSERT_EQ(stats.stats.size(), 3u);
    EXPECT_EQ(stats.stats[1].name, "进程-1000");
    EXPECT_FALSE(stats.stats[1].flag);
    EXPECT_TRUE(stats.stats[0].flag);
    EXPECT_EQ(stats.stats[2].value18, u'é');
    EXPECT_EQ(stats.stats[2].pid, INT32_MAX);
    EXPECT_EQ(stats.stats[2].value80, -INT32_MAX);
    EXPECT_EQ(stats.stats[2].smapsTotal, 0);

    ASSERT_TRUE(proxy->readMemoryByPids({}, 0, &stats).isOk());
    EXPECT_TRUE(stats.stats.empty());

    TaskWakeInfo info;
    ASSERT_TRUE(proxy->getWakeThreadsAffinityOrdered("handle", 3, &info).isOk());
    EXPECT_EQ(info.status, 6);
    ASSERT_EQ(info.threads.size(), 3u);
    EXPECT_EQ(info.threads[2].field1, 2);
    EXPECT_EQ(info.threads[2].field7, -2);

    ProcReqHal req;
    ASSERT_TRUE(proxy->getHIIowaitHung(&req).isOk());
    EXPECT_EQ(req.path, "/proc/vyren_healthinfo/iowait_hung");
    ASSERT_EQ(req.items.size(), 2u);
    EXPECT_EQ(req.items[1].key, "iowait_panic_cnt");
    EXPECT_EQ(req.items[1].separator, ":");
    EXPECT_EQ(req.items[1].flag, 1);

    QuilbexVersionRet version;
    ASSERT_TRUE(proxy->readQuilbexVersion(&version).isOk());
    EXPECT_EQ(version.result, 0);
    EXPECT_EQ(version.major, 65535);
    EXPECT_EQ(version.minor, 1);
}

TEST_F(InterfaceTest, DumpPrintsTheServiceState) {
    android::base::unique_fd file(memfd_create("dump", MFD_CLOEXEC));
    ASSERT_GE(file, 0);
    const char* args[] = {"-a"};
    ASSERT_EQ(AIBinder_dump(binder.get(), file, args, 1), STATUS_OK);
    std::string text;
    ASSERT_EQ(lseek(file, 0, SEEK_SET), 0);
    ASSERT_TRUE(android::base::ReadFdToString(file, &text));
    EXPECT_EQ(text, "node root: " + mRoot +
                        "\n"
                        "kernel version: 5.15.78 (newer node tree)\n"
                        "debug: 0\n"
                        "memcg root: /dev/memcg/\n"
                        "jank version: (not read yet)\n"
                        "task tracking: disabled\n"
                        "task-track table: (empty)\n"
                        "storage nodes:\n"
                        "  hpb_params: 1\n"
                        "  hpb_stats: 0\n"
                        "memory statistics device: fd -1, buffers none, capacity 400\n");
}

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance
