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

#include "temp_binder_dir.h"
#include "toy_checks.h"
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
    toy::expectEveryShapeRoundTrips(proxy.get());
}

TEST_F(LocalProxyTest, ErrorsReachTheCaller) {
    toy::expectErrorsReachTheCaller(proxy.get());
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
    TempBinderDir dir;
    ASSERT_TRUE(dir.ok());
    // Registrations last for the process's lifetime; keep names fresh per run.
    static int run = 0;
    const std::string name = std::string(IToy::descriptor) + "/local" + std::to_string(++run);
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
