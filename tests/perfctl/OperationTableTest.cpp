// The generated operation table: every entry is found by its name and reaches its own method
// through the generated proxy with its arguments in order.

#include <aidl/vendor/vyren/hardware/performance/BpPerformance.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Operation.h"

namespace perfctl {
namespace {

using ::aidl::vendor::vyren::hardware::performance::BpPerformance;
using ::aidl::vendor::vyren::hardware::performance::IPerformance;

// Decodes one argument of the type the value holds, into it.
struct Reader {
    const AParcel* in;

    bool operator()(std::string& v) const { return ndk::AParcel_readString(in, &v) == STATUS_OK; }
    bool operator()(int32_t& v) const { return AParcel_readInt32(in, &v) == STATUS_OK; }
    bool operator()(int64_t& v) const { return AParcel_readInt64(in, &v) == STATUS_OK; }
    bool operator()(bool& v) const { return AParcel_readBool(in, &v) == STATUS_OK; }
    bool operator()(std::vector<int32_t>& v) const {
        return ndk::AParcel_readVector(in, &v) == STATUS_OK;
    }
};

// What the service behind the proxy saw: args holds the types to decode when the call is made.
struct Transaction {
    std::vector<Value> args;
    transaction_code_t code = 0;
};
Transaction gSeen;

// Decodes the transaction, in the caller's thread, and answers with a service-specific error
// carrying its code.
binder_status_t RecordTransaction(AIBinder*, transaction_code_t code, const AParcel* in,
                                  AParcel* out) {
    gSeen.code = code;
    for (Value& arg : gSeen.args) EXPECT_TRUE(std::visit(Reader{in}, arg));
    EXPECT_EQ(AParcel_getDataPosition(in), AParcel_getDataSize(in));  // nothing more
    const auto reply = ndk::ScopedAStatus::fromServiceSpecificError(static_cast<int32_t>(code));
    return AParcel_writeStatusHeader(out, reply.get());
}

// Distinct values per position, so a swapped pair of arguments shows.
Value SampleArgument(ArgType type, int32_t n) {
    const Value samples[] = {"arg" + std::to_string(n), -1000 * n, (int64_t{1} << 40) + n,
                             n % 2 == 1, std::vector<int32_t>{n, -n, INT32_MAX}};
    return samples[static_cast<size_t>(type)];
}

TEST(OperationTableTest, EveryEntryIsFoundByNameAndCallsItsOwnTransaction) {
    ASSERT_EQ(Operations().size, 171u);
    // Classes live as long as the process, as they would as statics.
    static AIBinder_Class* clazz = AIBinder_Class_define(
        IPerformance::descriptor, [](void* args) { return args; }, [](void*) {}, RecordTransaction);
    const auto proxy =
        ndk::SharedRefBase::make<BpPerformance>(ndk::SpAIBinder(AIBinder_new(clazz, nullptr)));

    for (const Operation& op : Operations()) {
        SCOPED_TRACE(op.name);
        EXPECT_EQ(FindOperation(op.name), &op);
        std::vector<Value> args;
        for (size_t i = 0; i < op.argCount; ++i) args.push_back(SampleArgument(op.args[i], i + 1));
        gSeen = Transaction{args};

        std::string out;
        const ndk::ScopedAStatus status = op.call(*proxy, args, &out);

        const transaction_code_t code = FIRST_CALL_TRANSACTION + op.slot;
        EXPECT_EQ(gSeen.code, code);
        EXPECT_EQ(gSeen.args, args);
        EXPECT_EQ(status.getServiceSpecificError(), static_cast<int32_t>(code));
    }
}

}  // namespace
}  // namespace perfctl
