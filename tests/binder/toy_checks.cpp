#include "toy_checks.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "toy_service.h"

namespace toy {

using aidl::vendor::test::toy::IToy;
using aidl::vendor::test::toy::Record;

std::vector<uint8_t> bytesOf(const AParcel* parcel) {
    std::vector<uint8_t> bytes(static_cast<size_t>(AParcel_getDataSize(parcel)));
    EXPECT_EQ(STATUS_OK, AParcel_marshal(parcel, bytes.data(), 0, bytes.size()));
    return bytes;
}

std::vector<uint8_t> bytesOf(const Record& record) {
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(STATUS_OK, record.writeToParcel(parcel.get()));
    return bytesOf(parcel.get());
}

// What method returns through proxy; a failed call is a test failure.
template <typename T, typename Method, typename... Args>
T returned(IToy* proxy, Method method, Args... args) {
    T out{};
    EXPECT_TRUE((proxy->*method)(args..., &out).isOk());
    return out;
}

void expectEveryShapeRoundTrips(IToy* proxy) {
    using Ints = std::vector<int32_t>;
    const std::string label = "it\xc3\xa9m", wide = "\xe4\xb8\xad \xf0\x9f\x99\x82";
    Record expected;
    ndk::SharedRefBase::make<ToyService>()->makeRecord(3, label, &expected);
    // Every field, compared as the bytes the record marshals to.
    EXPECT_EQ(bytesOf(expected), bytesOf(returned<Record>(proxy, &IToy::makeRecord, 3, label)));
    EXPECT_EQ(wide, returned<std::string>(proxy, &IToy::echoString, wide));
    EXPECT_EQ((Ints{3, 2, 1}), returned<Ints>(proxy, &IToy::reverseInts, Ints{1, 2, 3}));
    EXPECT_EQ(INT64_MAX, returned<int64_t>(proxy, &IToy::addLong, INT64_MAX - 1, int64_t{1}));
    EXPECT_FALSE(returned<bool>(proxy, &IToy::negate, true));
    EXPECT_EQ(u'b', returned<char16_t>(proxy, &IToy::nextChar, u'a'));
    EXPECT_TRUE(proxy->doNothing().isOk());
    EXPECT_EQ(2, returned<int32_t>(proxy, &IToy::getInterfaceVersion));
    EXPECT_EQ((Ints{static_cast<int32_t>(getuid()), getpid()}),
              returned<Ints>(proxy, &IToy::callerIdentity));
}

void expectErrorsReachTheCaller(IToy* proxy) {
    int32_t unused;
    EXPECT_EQ("Exception EX_SERVICE_SPECIFIC (-8), service-specific error 42: 'bad thing'",
              proxy->fail(EX_SERVICE_SPECIFIC, 42, "bad thing", &unused).getDescription());
    EXPECT_EQ("Exception EX_ILLEGAL_ARGUMENT (-3): 'arg'",
              proxy->fail(EX_ILLEGAL_ARGUMENT, 0, "arg", &unused).getDescription());
    EXPECT_EQ("Transaction failed: STATUS_NO_MEMORY (-12)",
              proxy->fail(EX_TRANSACTION_FAILED, STATUS_NO_MEMORY, "", &unused).getDescription());
}

const AIBinder_Class* defineClass(const char* descriptor) {
    // Reachable for the process's lifetime, as classes defined as statics are.
    static auto* classes = new std::vector<AIBinder_Class*>();
    classes->push_back(AIBinder_Class_define(descriptor, nullptr, nullptr,
                                             [](AIBinder*, transaction_code_t, const AParcel*,
                                                AParcel*) -> binder_status_t { return STATUS_OK; }));
    return classes->back();
}

}  // namespace toy
