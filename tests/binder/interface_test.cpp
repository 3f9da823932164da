/*
 * Binder objects and generated interface code within one process.
 */
#include <aidl/vendor/test/toy/BpToy.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "toy_checks.h"
#include "toy_service.h"

namespace {

using aidl::vendor::test::toy::BpToy;
using aidl::vendor::test::toy::IToy;

TEST(LocalBinderTest, CallsThroughAProxyAreMarshalled) {
    auto service = ndk::SharedRefBase::make<toy::ToyService>();
    // The generated fromBinder would return the local object; a proxy forces marshalling.
    auto proxy = ndk::SharedRefBase::make<BpToy>(service->asBinder());
    toy::expectEveryShapeRoundTrips(proxy.get());
    toy::expectErrorsReachTheCaller(proxy.get());
    // Outside any call the caller is this process.
    EXPECT_EQ(getuid(), AIBinder_getCallingUid());
    EXPECT_EQ(getpid(), AIBinder_getCallingPid());
}

TEST(LocalBinderTest, TransactRefusesAParcelPreparedForAnotherBinder) {
    ndk::SpAIBinder binder = ndk::SharedRefBase::make<toy::ToyService>()->asBinder();
    ndk::SpAIBinder other = ndk::SharedRefBase::make<toy::ToyService>()->asBinder();
    AParcel* in = nullptr;
    AParcel* out = nullptr;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(other.get(), &in));
    EXPECT_EQ(STATUS_BAD_VALUE,
              AIBinder_transact(binder.get(), FIRST_CALL_TRANSACTION, &in, &out, 0));
    // The input is consumed and no reply is left behind.
    EXPECT_EQ(nullptr, in);
    EXPECT_EQ(nullptr, out);
}

TEST(LocalBinderTest, FromBinderReturnsTheLocalObjectOfTheSameDescriptorOnly) {
    auto service = ndk::SharedRefBase::make<toy::ToyService>();
    ndk::SpAIBinder binder = service->asBinder();
    std::shared_ptr<IToy> fromBinder = IToy::fromBinder(binder);
    EXPECT_EQ(service.get(), fromBinder.get());
    EXPECT_FALSE(AIBinder_isRemote(binder.get()));
    EXPECT_TRUE(AIBinder_isAlive(binder.get()));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(binder.get()));

    EXPECT_TRUE(AIBinder_associateClass(binder.get(), toy::defineClass(IToy::descriptor)));
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), toy::defineClass("vendor.test.toy.IOther")));
    EXPECT_EQ(nullptr, IToy::fromBinder(ndk::SpAIBinder(
                           AIBinder_new(toy::defineClass("vendor.test.toy.IOther"), nullptr))));
}

TEST(LocalBinderTest, BinderKeepsObjectAliveAndIsReusedWhileAlive) {
    std::weak_ptr<toy::ToyService> weakService;
    AIBinder_Weak* weakBinder = nullptr;
    {
        auto service = ndk::SharedRefBase::make<toy::ToyService>();
        weakService = service;
        ndk::SpAIBinder first = service->asBinder();
        EXPECT_EQ(first, service->asBinder());
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

    // After the old binder died the object gets a new one.
    auto service = ndk::SharedRefBase::make<toy::ToyService>();
    (void)service->asBinder();  // dies at the end of the statement
    EXPECT_EQ(service.get(), IToy::fromBinder(service->asBinder()).get());
}

}  // namespace
