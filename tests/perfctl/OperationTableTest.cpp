// The generated operation table: its order, and that every entry reaches its own method through
// the generated proxy with its arguments in order.

#include <aidl/vendor/vyren/hardware/performance/BpPerformance.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "Operation.h"

namespace perfctl {
namespace {

using ::aidl::vendor::vyren::hardware::performance::BpPerformance;
using ::aidl::vendor::vyren::hardware::performance::IPerformance;

TEST(OperationTableTest, HoldsEveryMethodInSlotOrder) {
    const OperationTable ops = Operations();
    ASSERT_EQ(ops.size, 171u);
    std::set<std::string> names;
    for (size_t i = 0; i < ops.size; ++i) {
        const Operation& op = ops.first[i];
        EXPECT_EQ(op.slot, static_cast<int>(i));
        EXPECT_TRUE(names.insert(op.name).second) << op.name;
        EXPECT_EQ(FindOperation(op.name), &op);
        ASSERT_NE(op.call, nullptr);
    }
    EXPECT_EQ(FindOperation("getdevinfoUfsInfo"), nullptr);
    EXPECT_EQ(FindOperation("getInterfaceVersion"), nullptr);
    EXPECT_EQ(FindOperation(""), nullptr);
}

// Plays the service behind a proxy: decodes each transaction by the argument types of the
// operation under test, and answers with a service-specific error carrying the code it saw.
struct Transaction {
    const Operation* expected = nullptr;
    transaction_code_t code = 0;
    std::vector<Value> args;
    bool decoded = false;
};
Transaction gTransaction;

bool ReadArgument(const AParcel* in, ArgType type, std::vector<Value>* args) {
    switch (type) {
        case ArgType::kString: {
            std::string value;
            if (ndk::AParcel_readString(in, &value) != STATUS_OK) return false;
            args->emplace_back(value);
            return true;
        }
        case ArgType::kInt: {
            int32_t value;
            if (AParcel_readInt32(in, &value) != STATUS_OK) return false;
            args->emplace_back(value);
            return true;
        }
        case ArgType::kLong: {
            int64_t value;
            if (AParcel_readInt64(in, &value) != STATUS_OK) return false;
            args->emplace_back(value);
            return true;
        }
        case ArgType::kBoolean: {
            bool value;
            if (AParcel_readBool(in, &value) != STATUS_OK) return false;
            args->emplace_back(value);
            return true;
        }
        case ArgType::kIntArray: {
            std::vector<int32_t> value;
            if (ndk::AParcel_readVector(in, &value) != STATUS_OK) return false;
            args->emplace_back(value);
            return true;
        }
    }
    return false;
}

binder_status_t RecordTransaction(AIBinder*, transaction_code_t code, const AParcel* in,
                                  AParcel* out) {
    gTransaction.code = code;
    gTransaction.decoded = true;
    for (size_t i = 0; i < gTransaction.expected->argCount; ++i) {
        gTransaction.decoded = gTransaction.decoded &&
                               ReadArgument(in, gTransaction.expected->args[i], &gTransaction.args);
    }
    gTransaction.decoded =
        gTransaction.decoded && AParcel_getDataPosition(in) == AParcel_getDataSize(in);
    const ndk::ScopedAStatus reply =
        ndk::ScopedAStatus::fromServiceSpecificError(static_cast<int32_t>(code));
    return AParcel_writeStatusHeader(out, reply.get());
}

// Distinct values per position, so a swapped pair of arguments shows.
Value SampleArgument(ArgType type, size_t position) {
    const int32_t n = static_cast<int32_t>(position) + 1;
    switch (type) {
        case ArgType::kString:
            return std::string("arg") + std::to_string(n);
        case ArgType::kInt:
            return int32_t{-1000 * n};
        case ArgType::kLong:
            return (int64_t{1} << 40) + n;
        case ArgType::kBoolean:
            return position % 2 == 0;
        case ArgType::kIntArray:
            return std::vector<int32_t>{n, -n, INT32_MAX};
    }
    return {};
}

TEST(OperationTableTest, EveryEntryCallsItsOwnTransactionWithItsArguments) {
    // Classes live as long as the process, as they would as statics.
    static AIBinder_Class* clazz = AIBinder_Class_define(
        IPerformance::descriptor, [](void* args) { return args; }, [](void*) {}, RecordTransaction);
    ASSERT_NE(clazz, nullptr);
    ndk::SpAIBinder binder(AIBinder_new(clazz, nullptr));
    const std::shared_ptr<BpPerformance> proxy = ndk::SharedRefBase::make<BpPerformance>(binder);

    for (const Operation& op : Operations()) {
        SCOPED_TRACE(op.name);
        gTransaction = Transaction();
        gTransaction.expected = &op;
        std::vector<Value> args;
        for (size_t i = 0; i < op.argCount; ++i) args.push_back(SampleArgument(op.args[i], i));

        std::string out;
        const ndk::ScopedAStatus status = op.call(*proxy, args, &out);

        const transaction_code_t code = FIRST_CALL_TRANSACTION + op.slot;
        EXPECT_EQ(gTransaction.code, code);
        EXPECT_TRUE(gTransaction.decoded);
        EXPECT_EQ(gTransaction.args, args);
        EXPECT_EQ(status.getExceptionCode(), EX_SERVICE_SPECIFIC);
        EXPECT_EQ(status.getServiceSpecificError(), static_cast<int32_t>(code));
        EXPECT_EQ(out, "");
    }
}

}  // namespace
}  // namespace perfctl
