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

void expectEveryShapeRoundTrips(IToy* proxy) {
    const std::string label = "it\xc3\xa9m", wide = "\xe4\xb8\xad \xf0\x9f\x99\x82";
    Record record, expected;
    ASSERT_TRUE(proxy->makeRecord(3, label, &record).isOk());
    // Every field, compared as the bytes the record marshals to.
    ndk::SharedRefBase::make<ToyService>()->makeRecord(3, label, &expected);
    EXPECT_EQ(bytesOf(expected), bytesOf(record));

    std::string text;
    std::vector<int32_t> ints, identity;
    int64_t sum = 0;
    bool negated = true;
    char16_t next = 0;
    int32_t version = 0;
    ASSERT_TRUE(proxy->echoString(wide, &text).isOk());
    EXPECT_EQ(wide, text);
    ASSERT_TRUE(proxy->reverseInts({1, 2, 3}, &ints).isOk());
    EXPECT_EQ((std::vector<int32_t>{3, 2, 1}), ints);
    ASSERT_TRUE(proxy->addLong(INT64_MAX - 1, 1, &sum).isOk());
    EXPECT_EQ(INT64_MAX, sum);
    ASSERT_TRUE(proxy->negate(true, &negated).isOk());
    EXPECT_FALSE(negated);
    ASSERT_TRUE(proxy->nextChar(u'a', &next).isOk());
    EXPECT_EQ(u'b', next);
    EXPECT_TRUE(proxy->doNothing().isOk());
    ASSERT_TRUE(proxy->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(2, version);
    ASSERT_TRUE(proxy->callerIdentity(&identity).isOk());
    EXPECT_EQ((std::vector<int32_t>{static_cast<int32_t>(getuid()), getpid()}), identity);
}

void expectErrorsReachTheCaller(IToy* proxy) {
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

const AIBinder_Class* defineClass(const char* descriptor) {
    // Reachable for the process's lifetime, as classes defined as statics are.
    static auto* classes = new std::vector<AIBinder_Class*>();
    classes->push_back(AIBinder_Class_define(descriptor, nullptr, nullptr,
                                             [](AIBinder*, transaction_code_t, const AParcel*,
                                                AParcel*) -> binder_status_t { return STATUS_OK; }));
    return classes->back();
}

}  // namespace toy
