/*
 * Binder objects and generated interface code within one process.
 */
#include <aidl/vendor/test/toy/BpToy.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "toy_service.h"

namespace {

using aidl::vendor::test::toy::BpToy;
using aidl::vendor::test::toy::Item;
using aidl::vendor::test::toy::IToy;
using aidl::vendor::test::toy::Record;

class LocalProxyTest : public testing::Test {
  protected:
    void SetUp() override {
        service = ndk::SharedRefBase::make<toy::ToyService>();
        binder = service->asBinder();
        // The generated fromBinder would return the local object; a proxy forces marshalling.
        proxy = ndk::SharedRefBase::make<BpToy>(binder);
    }

    std::shared_ptr<toy::ToyService> service;
    ndk::SpAIBinder binder;
    std::shared_ptr<IToy> proxy;
};

TEST_F(LocalProxyTest, EveryShapeRoundTrips) {
    Record record;
    ASSERT_TRUE(proxy->makeRecord(3, "it\xc3\xa9m", &record).isOk());
    EXPECT_EQ(3, record.status);
    ASSERT_EQ(3u, record.items.size());
    EXPECT_EQ(
        "it\xc3\xa9m"
        "2",
        record.items[2].label);
    EXPECT_EQ(4, record.items[2].value);
    EXPECT_EQ(-7, record.small);
    EXPECT_EQ(0.25f, record.ratio);
    EXPECT_EQ(1e-300, record.precise);
    EXPECT_TRUE(record.flag);
    EXPECT_EQ(u'\u00e9', record.letter);
    EXPECT_EQ((std::vector<int64_t>{INT64_MIN, -1, 0, INT64_MAX}), record.longs);
    EXPECT_EQ((std::vector<std::string>{"", "it\xc3\xa9m", "\xf0\x9f\x99\x82"}), record.names);
    EXPECT_FALSE(record.note.has_value());

    std::string text;
    ASSERT_TRUE(proxy->echoString("\xe4\xb8\xad \xf0\x9f\x99\x82", &text).isOk());
    EXPECT_EQ("\xe4\xb8\xad \xf0\x9f\x99\x82", text);

    std::vector<int32_t> ints;
    ASSERT_TRUE(proxy->reverseInts({1, 2, 3}, &ints).isOk());
    EXPECT_EQ((std::vector<int32_t>{3, 2, 1}), ints);

    int64_t sum = 0;
    ASSERT_TRUE(proxy->addLong(INT64_MAX - 1, 1, &sum).isOk());
    EXPECT_EQ(INT64_MAX, sum);

    bool negated = true;
    ASSERT_TRUE(proxy->negate(true, &negated).isOk());
    EXPECT_FALSE(negated);

    char16_t next = 0;
    ASSERT_TRUE(proxy->nextChar(u'a', &next).isOk());
    EXPECT_EQ(u'b', next);

    EXPECT_TRUE(proxy->doNothing().isOk());

    int8_t byte = 0;
    ASSERT_TRUE(proxy->echoByte(-100, &byte).isOk());
    EXPECT_EQ(-100, byte);

    float half = 0;
    ASSERT_TRUE(proxy->halfFloat(3.0f, &half).isOk());
    EXPECT_EQ(1.5f, half);

    double halfD = 0;
    ASSERT_TRUE(proxy->halfDouble(-5.0, &halfD).isOk());
    EXPECT_EQ(-2.5, halfD);

    std::vector<std::string> strings;
    ASSERT_TRUE(proxy->echoStrings({"a", "", "\xc3\xa9"}, &strings).isOk());
    EXPECT_EQ((std::vector<std::string>{"a", "", "\xc3\xa9"}), strings);

    std::vector<int64_t> longs;
    ASSERT_TRUE(proxy->echoLongs({-1, 1LL << 40}, &longs).isOk());
    EXPECT_EQ((std::vector<int64_t>{-1, 1LL << 40}), longs);

    std::optional<std::string> nullable = "stale";
    ASSERT_TRUE(proxy->echoNullable(std::nullopt, &nullable).isOk());
    EXPECT_FALSE(nullable.has_value());
    ASSERT_TRUE(proxy->echoNullable("set", &nullable).isOk());
    EXPECT_EQ("set", nullable.value_or(""));

    std::vector<Item> items;
    ASSERT_TRUE(proxy->echoItems({Item{1, "a", 2}, Item{3, "b", 4}}, &items).isOk());
    ASSERT_EQ(2u, items.size());
    EXPECT_EQ(3, items[1].id);
    EXPECT_EQ("b", items[1].label);

    int32_t version = 0;
    ASSERT_TRUE(proxy->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(2, version);
}

TEST_F(LocalProxyTest, ErrorsReachTheCaller) {
    int32_t unused;
    ndk::ScopedAStatus specific = proxy->fail(EX_SERVICE_SPECIFIC, 42, "bad thing", &unused);
    EXPECT_EQ(EX_SERVICE_SPECIFIC, specific.getExceptionCode());
    EXPECT_EQ(42, specific.getServiceSpecificError());
    EXPECT_STREQ("bad thing", specific.getMessage());

    ndk::ScopedAStatus exception = proxy->fail(EX_ILLEGAL_ARGUMENT, 0, "arg", &unused);
    EXPECT_EQ(EX_ILLEGAL_ARGUMENT, exception.getExceptionCode());
    EXPECT_STREQ("arg", exception.getMessage());

    ndk::ScopedAStatus transport = proxy->fail(EX_TRANSACTION_FAILED, STATUS_NO_MEMORY, "", &unused);
    EXPECT_EQ(EX_TRANSACTION_FAILED, transport.getExceptionCode());
    EXPECT_EQ(STATUS_NO_MEMORY, transport.getStatus());
}

TEST_F(LocalProxyTest, InterfaceTokenIsChecked) {
    struct Token {
        int32_t header;
        const char* descriptor;
        binder_status_t expected;
    };
    const Token tokens[] = {
        {B_PACK_CHARS('V', 'N', 'D', 'R'), IToy::descriptor, STATUS_OK},
        {B_PACK_CHARS('V', 'N', 'D', 'R'), "vendor.test.toy.IOther", STATUS_BAD_TYPE},
        {B_PACK_CHARS('S', 'Y', 'S', 'T'), IToy::descriptor, STATUS_BAD_TYPE},
    };
    for (const Token& token : tokens) {
        AParcel* in = nullptr;
        ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(binder.get(), &in));
        AParcel_reset(in);
        AParcel_writeInt32(in, 0);
        AParcel_writeInt32(in, -1);
        AParcel_writeInt32(in, token.header);
        AParcel_writeString(in, token.descriptor, static_cast<int32_t>(strlen(token.descriptor)));
        AParcel* out = nullptr;
        // doNothing is the seventh method.
        EXPECT_EQ(token.expected,
                  AIBinder_transact(binder.get(), FIRST_CALL_TRANSACTION + 6, &in, &out, 0))
            << token.descriptor;
        EXPECT_EQ(nullptr, in);
        AParcel_delete(out);
    }
}

TEST_F(LocalProxyTest, TransactRejectsMisuse) {
    AParcel* in = nullptr;
    AParcel* out = nullptr;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(binder.get(), &in));
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION,
              AIBinder_transact(binder.get(), FIRST_CALL_TRANSACTION + 1000, &in, &out, 0));
    EXPECT_EQ(nullptr, out);

    // A parcel prepared for another binder.
    ndk::SpAIBinder other = ndk::SharedRefBase::make<toy::ToyService>()->asBinder();
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(other.get(), &in));
    EXPECT_EQ(STATUS_BAD_VALUE,
              AIBinder_transact(binder.get(), FIRST_CALL_TRANSACTION, &in, &out, 0));
    EXPECT_EQ(nullptr, in);

    // Truncated arguments: reverseInts with a count and no elements.
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(binder.get(), &in));
    AParcel_writeInt32(in, 1000);
    EXPECT_EQ(STATUS_BAD_VALUE,
              AIBinder_transact(binder.get(), FIRST_CALL_TRANSACTION + 2, &in, &out, 0));
}

TEST_F(LocalProxyTest, FromBinderReturnsTheLocalObject) {
    std::shared_ptr<IToy> fromBinder = IToy::fromBinder(binder);
    EXPECT_EQ(service.get(), fromBinder.get());
    EXPECT_FALSE(fromBinder->isRemote());
    EXPECT_FALSE(AIBinder_isRemote(binder.get()));
    EXPECT_TRUE(AIBinder_isAlive(binder.get()));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(binder.get()));
    EXPECT_STREQ(IToy::descriptor, AIBinder_Class_getDescriptor(AIBinder_getClass(binder.get())));
}

TEST_F(LocalProxyTest, CallingIdentityIsOwnProcess) {
    std::vector<int32_t> identity;
    ASSERT_TRUE(proxy->callerIdentity(&identity).isOk());
    EXPECT_EQ((std::vector<int32_t>{static_cast<int32_t>(getuid()), static_cast<int32_t>(getpid())}),
              identity);
    EXPECT_EQ(getuid(), AIBinder_getCallingUid());
    EXPECT_EQ(getpid(), AIBinder_getCallingPid());
}

TEST_F(LocalProxyTest, DumpReachesTheObject) {
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    const char* args[] = {"--verbose", "x"};
    EXPECT_EQ(STATUS_OK, proxy->dump(fds[1], args, 2));
    close(fds[1]);
    char buffer[64] = {};
    ssize_t n = read(fds[0], buffer, sizeof(buffer) - 1);
    close(fds[0]);
    ASSERT_GT(n, 0);
    EXPECT_STREQ("toy --verbose x\n", buffer);
}

TEST(BinderLifetimeTest, BinderKeepsObjectAliveAndIsReusedWhileAlive) {
    std::weak_ptr<toy::ToyService> weakService;
    AIBinder_Weak* weakBinder = nullptr;
    {
        auto service = ndk::SharedRefBase::make<toy::ToyService>();
        weakService = service;
        ndk::SpAIBinder first = service->asBinder();
        EXPECT_EQ(first, service->asBinder());
        EXPECT_EQ(1, AIBinder_debugGetRefCount(first.get()));
        weakBinder = AIBinder_Weak_new(first.get());
        service.reset();
        // The binder's user data holds the object.
        EXPECT_FALSE(weakService.expired());
        ndk::SpAIBinder promoted(AIBinder_Weak_promote(weakBinder));
        EXPECT_EQ(first, promoted);
        EXPECT_EQ(2, AIBinder_debugGetRefCount(first.get()));
    }
    EXPECT_TRUE(weakService.expired());
    EXPECT_EQ(nullptr, AIBinder_Weak_promote(weakBinder));
    AIBinder_Weak_delete(weakBinder);
}

TEST(BinderLifetimeTest, NewBinderAfterTheOldOneDied) {
    auto service = ndk::SharedRefBase::make<toy::ToyService>();
    AIBinder* raw = service->asBinder().get();  // dies at the end of the statement
    (void)raw;
    ndk::SpAIBinder second = service->asBinder();
    EXPECT_NE(nullptr, second.get());
    EXPECT_EQ(1, AIBinder_debugGetRefCount(second.get()));
    EXPECT_EQ(service.get(), IToy::fromBinder(second).get());
}

TEST(BinderClassTest, AssociateClassComparesDescriptors) {
    auto onTransact = [](AIBinder*, transaction_code_t, const AParcel*,
                         AParcel*) -> binder_status_t { return STATUS_OK; };
    // Classes live for the whole process, as they would as statics.
    static AIBinder_Class* same =
        AIBinder_Class_define(IToy::descriptor, nullptr, nullptr, onTransact);
    static AIBinder_Class* other =
        AIBinder_Class_define("vendor.test.toy.IOther", nullptr, nullptr, onTransact);
    ndk::SpAIBinder binder = ndk::SharedRefBase::make<toy::ToyService>()->asBinder();
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), same));
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), other));
    EXPECT_EQ(nullptr, IToy::fromBinder(ndk::SpAIBinder(AIBinder_new(other, nullptr))));
}

TEST(LocalServiceManagerTest, RegistersAndLooksUp) {
    const std::string name = std::string(IToy::descriptor) + "/local-" + std::to_string(getpid());
    auto service = ndk::SharedRefBase::make<toy::ToyService>();
    EXPECT_EQ(nullptr, AServiceManager_checkService(name.c_str()));
    ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), name.c_str()));
    EXPECT_NE(EX_NONE, AServiceManager_addService(service->asBinder().get(), name.c_str()));
    EXPECT_NE(EX_NONE, AServiceManager_addService(nullptr, "x"));

    for (auto lookup : {AServiceManager_checkService, AServiceManager_getService,
                        AServiceManager_waitForService}) {
        ndk::SpAIBinder found(lookup(name.c_str()));
        EXPECT_EQ(service->asBinder(), found);
        std::shared_ptr<IToy> toy = IToy::fromBinder(found);
        EXPECT_EQ(service.get(), toy.get());
    }
}

}  // namespace
