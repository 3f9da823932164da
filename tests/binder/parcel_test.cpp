/*
 * Parcel encoding: round trips, exact wire layout and hostile input.
 */
#include <aidl/vendor/test/toy/Record.h>
#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_status.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "toy_checks.h"
#include "toy_service.h"

// While a hostile read runs, the largest allocation it asks for.
thread_local bool tTrackAllocations = false;
thread_local size_t tLargestAllocation = 0;

// The whole replacement set, so that what it allocates is freed by its own counterpart.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    if (tTrackAllocations) tLargestAllocation = std::max(tLargestAllocation, size);
    return malloc(size == 0 ? 1 : size);
}
void* operator new(size_t size) {
    if (void* block = operator new(size, std::nothrow)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    free(block);
}
void operator delete(void* block, size_t) noexcept {
    free(block);
}
#pragma GCC diagnostic pop

namespace aidl::vendor::test::toy {

// The generated parcelables have no comparison of their own.
bool operator==(const Item& a, const Item& b) {
    return a.id == b.id && a.label == b.label && a.value == b.value;
}

}  // namespace aidl::vendor::test::toy

namespace {

using aidl::vendor::test::toy::Item;
using aidl::vendor::test::toy::Record;
using toy::bytesOf;

ndk::ScopedAParcel parcelFrom(const std::vector<uint8_t>& bytes) {
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(STATUS_OK, AParcel_unmarshal(parcel.get(), bytes.data(), bytes.size()));
    return parcel;
}

template <typename Case>
std::string nameOf(const testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

// Little-endian int32 words, the building blocks of hand-made parcels.
std::vector<uint8_t> words(std::initializer_list<int64_t> values) {
    std::vector<uint8_t> bytes;
    for (int64_t value : values) {
        for (int shift = 0; shift < 32; shift += 8) bytes.push_back((value >> shift) & 0xff);
    }
    return bytes;
}

struct RoundTripCase {
    const char* name;
    std::function<void()> check;
};

// Writes value, checks its size and, where given, its exact bytes, then reads it back from a
// marshalled copy as a remote peer would see it.
template <typename T, typename Write, typename Read>
RoundTripCase row(const char* name, T value, size_t size, Write write, Read read,
                  std::vector<uint8_t> layout = {}) {
    return {name, [=] {
                ndk::ScopedAParcel parcel(AParcel_create());
                ASSERT_EQ(STATUS_OK, write(parcel.get(), value));
                const std::vector<uint8_t> bytes = bytesOf(parcel.get());
                EXPECT_EQ(size, bytes.size());
                EXPECT_EQ(layout.empty() ? bytes : layout, bytes);
                ndk::ScopedAParcel copy = parcelFrom(bytes);
                T out{};
                ASSERT_EQ(STATUS_OK, read(copy.get(), &out));
                EXPECT_EQ(AParcel_getDataSize(copy.get()), AParcel_getDataPosition(copy.get()));
                if constexpr (std::is_arithmetic_v<T>) {
                    EXPECT_EQ(0, memcmp(&out, &value, sizeof(T)));  // so that NaN matches itself
                } else {
                    EXPECT_EQ(value, out);
                }
            }};
}

template <typename T>
RoundTripCase vec(const char* name, T value, size_t encodedSize, std::vector<uint8_t> layout = {}) {
    return row(
        name, value, encodedSize,
        [](AParcel* p, const T& v) { return ndk::AParcel_writeVector(p, v); },
        [](const AParcel* p, T* v) { return ndk::AParcel_readVector(p, v); }, std::move(layout));
}

template <typename T>
RoundTripCase str(const char* name, T value, size_t encodedSize, std::vector<uint8_t> layout = {}) {
    return row(
        name, value, encodedSize,
        [](AParcel* p, const T& v) { return ndk::AParcel_writeString(p, v); },
        [](const AParcel* p, T* v) { return ndk::AParcel_readString(p, v); }, std::move(layout));
}

std::vector<RoundTripCase> roundTripCases() {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    using OptString = std::optional<std::string>;
    using Strings = std::vector<std::string>;
    return {
        // Fixed-width values of 4 and 8 bytes; a NaN keeps its bits.
        row("int32", INT32_MIN, 4, AParcel_writeInt32, AParcel_readInt32),
        row<int64_t>("int64", INT64_MIN, 8, AParcel_writeInt64, AParcel_readInt64),
        row("float_nan", nan, 4, AParcel_writeFloat, AParcel_readFloat),
        // Chars widen without sign, bytes with it.
        row("char", u'\uffff', 4, AParcel_writeChar, AParcel_readChar, words({0xffff})),
        row<int8_t>("byte", -128, 4, AParcel_writeByte, AParcel_readByte, words({-128})),
        str<std::string>("string_empty", "", 8),
        // Two- and three-byte UTF-8 sequences, one UTF-16 unit each.
        str<std::string>("string_utf8", "\xc3\xa9\xe4\xb8\xad", 12),
        // UTF-16 units (a, high and low surrogate), a NUL, then padding to 4 bytes.
        str<std::string>("string_surrogate_pair", "a\xf0\x9f\x99\x82", 12,
                         words({3, 0xd83d0061, 0x0000de42})),
        str<std::string>("string_embedded_nul", std::string("a\0b", 3), 12),
        str<OptString>("string_null", std::nullopt, 4, words({-1})),
        str<OptString>("string_optional", "x", 8),
        vec<std::vector<int32_t>>("int32_array", {1, -2, 3}, 16),
        vec<std::vector<int32_t>>("int32_array_empty", {}, 4),
        vec<std::optional<std::vector<int32_t>>>("int32_array_null", std::nullopt, 4),
        vec<std::vector<int64_t>>("int64_array", {INT64_MAX, 0}, 20),
        vec<std::vector<bool>>("bool_array", {true, false, true}, 16),
        vec<std::vector<char16_t>>("char_array", {u'a', u'\u20ac'}, 12, words({2, 'a', 0x20ac})),
        vec<std::vector<int8_t>>("byte_array", {1, -1, 3}, 8, words({3, 0x0003ff01})),
        vec<std::vector<int8_t>>("byte_array_aligned", {1, 2, 3, 4}, 8),
        vec<std::vector<uint8_t>>("ubyte_array", {0xff, 0}, 8),
        vec<Strings>("string_array", {"", "ab"}, 4 + 8 + 12),
        vec<std::optional<Strings>>("string_array_null", std::nullopt, 4),
        vec<std::vector<OptString>>("nullable_string_array", {std::nullopt, "z"}, 4 + 4 + 8),
        // Each element: a non-null marker, then a size counted from the size word itself.
        vec<std::vector<Item>>("parcelable_array", {Item{1, "a", 2}}, 4 + 28,
                               words({1, 1, 24, 1, 1, 0x61, 2, 0})),
    };
}

class ParcelRoundTripTest : public testing::TestWithParam<RoundTripCase> {};

TEST_P(ParcelRoundTripTest, ReadsBackWhatWasWritten) {
    GetParam().check();
}

INSTANTIATE_TEST_SUITE_P(Types, ParcelRoundTripTest, testing::ValuesIn(roundTripCases()),
                         nameOf<RoundTripCase>);

TEST(ParcelTest, WritesAtThePositionAndReadsFromIt) {
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(STATUS_OK, AParcel_writeInt32(parcel.get(), 1));
    ASSERT_EQ(STATUS_OK, AParcel_writeInt32(parcel.get(), 2));
    ASSERT_EQ(STATUS_OK, AParcel_setDataPosition(parcel.get(), 0));
    ASSERT_EQ(STATUS_OK, AParcel_writeInt32(parcel.get(), 9));
    EXPECT_EQ(8, AParcel_getDataSize(parcel.get()));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_setDataPosition(parcel.get(), -4));
    ASSERT_EQ(STATUS_OK, AParcel_setDataPosition(parcel.get(), 4));
    int32_t value;
    ASSERT_EQ(STATUS_OK, AParcel_readInt32(parcel.get(), &value));
    EXPECT_EQ(2, value);
    // Past the end is allowed, but nothing can be read there.
    ASSERT_EQ(STATUS_OK, AParcel_setDataPosition(parcel.get(), 1000));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, AParcel_readInt32(parcel.get(), &value));
}

TEST(ParcelTest, RejectsInvalidUtf8OnWrite) {
    // A stray continuation byte, a lead without its continuation, an overlong NUL, an encoded
    // surrogate, beyond U+10FFFF and a truncated sequence.
    for (const char* text :
         {"a\x80", "\xc3\x41", "\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82"}) {
        ndk::ScopedAParcel parcel(AParcel_create());
        EXPECT_EQ(STATUS_BAD_VALUE, ndk::AParcel_writeString(parcel.get(), std::string(text)))
            << testing::PrintToString(text);
    }
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_writeString(parcel.get(), "abc", -2));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, AParcel_writeString(parcel.get(), nullptr, 3));
}

struct BadInputCase {
    const char* name;
    std::vector<uint8_t> bytes;
    std::function<binder_status_t(const AParcel*)> read;
    binder_status_t expected;
};

// The status of reading a T with read; the value is dropped.
template <typename T, binder_status_t (*read)(const AParcel*, T*)>
binder_status_t readOne(const AParcel* p) {
    T value{};
    return read(p, &value);
}

binder_status_t readStatus(const AParcel* p) {
    AStatus* status = nullptr;
    const binder_status_t result = AParcel_readStatusHeader(p, &status);
    AStatus_delete(status);
    return result;
}

std::vector<BadInputCase> badInputCases() {
    const auto readInt64 = readOne<int64_t, AParcel_readInt64>;
    const auto readString = readOne<std::string, ndk::AParcel_readString>;
    const auto readInts = readOne<std::vector<int32_t>, ndk::AParcel_readVector>;
    const auto readBools = readOne<std::vector<bool>, ndk::AParcel_readVector>;
    const auto readStrings = readOne<std::vector<std::string>, ndk::AParcel_readVector>;
    const auto readItems = readOne<std::vector<Item>, ndk::AParcel_readVector>;
    const auto readBinder = readOne<AIBinder*, AParcel_readStrongBinder>;
    return {
        {"int64_half", words({1}), readInt64, STATUS_NOT_ENOUGH_DATA},
        {"string_negative_length", words({0xfffffffe}), readString, STATUS_BAD_VALUE},
        {"string_huge_length", words({0x7fffffff, 0}), readString, STATUS_BAD_VALUE},
        {"string_unterminated", words({1, 0x00620061}), readString, STATUS_BAD_VALUE},
        {"string_lone_high_surrogate", words({1, 0x0000d83d}), readString, STATUS_BAD_VALUE},
        {"string_lone_low_surrogate", words({2, 0xde420061, 0}), readString, STATUS_BAD_VALUE},
        {"string_null_into_std_string", words({0xffffffff}), readString, STATUS_UNEXPECTED_NULL},
        {"int32_array_negative", words({0xfffffff0}), readInts, STATUS_BAD_VALUE},
        {"int32_array_huge", words({0x10000000, 1, 2}), readInts, STATUS_BAD_VALUE},
        {"int32_array_null_into_vector", words({0xffffffff}), readInts, STATUS_UNEXPECTED_NULL},
        {"bool_array_huge", words({0x40000000}), readBools, STATUS_BAD_VALUE},
        {"string_array_bad_element", words({2, 0xfffffff0}), readStrings, STATUS_BAD_VALUE},
        {"parcelable_array_null_element", words({1, 0, 4}), readItems, STATUS_UNEXPECTED_NULL},
        {"status_truncated_message", words({EX_ILLEGAL_STATE, 5}), readStatus, STATUS_BAD_VALUE},
        {"status_no_service_code", words({EX_SERVICE_SPECIFIC, -1, 0}), readStatus,
         STATUS_NOT_ENOUGH_DATA},
        {"status_negative_trace", words({EX_SECURITY, -1, -16}), readStatus, STATUS_BAD_VALUE},
        {"status_header_too_big", words({EX_HAS_REPLY_HEADER, 400}), readStatus, STATUS_BAD_VALUE},
        {"binder_unknown_kind", words({7}), readBinder, STATUS_BAD_VALUE},
        {"binder_index_without_object", words({1, 0}), readBinder, STATUS_BAD_VALUE},
    };
}

class ParcelBadInputTest : public testing::TestWithParam<BadInputCase> {};

// Inputs of a few words never justify more than this.
constexpr size_t kAllocationBound = 1024;

// The status of read on parcel, and the largest allocation it made.
std::pair<binder_status_t, size_t> trackedRead(
    const std::function<binder_status_t(const AParcel*)>& read, const AParcel* parcel) {
    tLargestAllocation = 0;
    tTrackAllocations = true;
    const binder_status_t status = read(parcel);
    tTrackAllocations = false;
    return {status, tLargestAllocation};
}

TEST_P(ParcelBadInputTest, FailsWithoutOverAllocating) {
    const BadInputCase& c = GetParam();
    ndk::ScopedAParcel parcel = parcelFrom(c.bytes);
    const auto [status, largest] = trackedRead(c.read, parcel.get());
    EXPECT_EQ(c.expected, status);
    EXPECT_LE(largest, kAllocationBound);
}

INSTANTIATE_TEST_SUITE_P(Reads, ParcelBadInputTest, testing::ValuesIn(badInputCases()),
                         nameOf<BadInputCase>);

binder_status_t readRecord(const AParcel* parcel) {
    Record read;
    return read.readFromParcel(parcel);
}

// Word 0 of the record is the non-null marker, word 1 its size; any other word may be data, so
// its corruption need only be refused cleanly or read as other data.
TEST(RecordDamageTest, TruncatedOrCorruptedRecordsFailCleanly) {
    Record record;
    ASSERT_TRUE(
        ndk::SharedRefBase::make<toy::ToyService>()->makeRecord(2, "\xe2\x82\xac", &record).isOk());
    record.note = "note";
    const std::vector<uint8_t> full = bytesOf(record);
    for (size_t size = 0; size < full.size(); ++size) {
        SCOPED_TRACE("prefix of " + std::to_string(size));
        ndk::ScopedAParcel truncated = parcelFrom({full.begin(), full.begin() + size});
        const binder_status_t status = readRecord(truncated.get());
        // Without its size word the record reports missing data, never a size it did not read.
        EXPECT_TRUE(status == STATUS_NOT_ENOUGH_DATA || (size >= 8 && status == STATUS_BAD_VALUE))
            << status;
    }
    for (size_t offset = 0; offset + 4 <= full.size(); offset += 4) {
        for (uint32_t value : {0u, 1u, 0x7fffffffu, 0x80000000u, 0xffffffffu, 0xfffffffeu}) {
            SCOPED_TRACE("word " + std::to_string(offset / 4) + " = " + std::to_string(value));
            std::vector<uint8_t> corrupted = full;
            memcpy(&corrupted[offset], &value, sizeof(value));
            ndk::ScopedAParcel input = parcelFrom(corrupted);
            const auto [status, largest] = trackedRead(readRecord, input.get());
            EXPECT_LE(largest, kAllocationBound);
            if (offset == 0) {
                EXPECT_EQ(value == 0 ? STATUS_UNEXPECTED_NULL : STATUS_OK, status);
            } else if (offset == 4) {
                // A size reaching past INT32_MAX from its position is refused like a negative one.
                EXPECT_EQ(value <= 1 ? STATUS_OK : STATUS_BAD_VALUE, status);
            } else {
                EXPECT_TRUE(status == STATUS_OK || status == STATUS_BAD_VALUE ||
                            status == STATUS_NOT_ENOUGH_DATA || status == STATUS_UNEXPECTED_NULL)
                    << status;
            }
        }
    }
}

TEST(StatusTest, AccessorsAndHeaderLayout) {
    // Ok, then service-specific with its message and code.
    const ndk::ScopedAStatus specific =
        ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(5, "m");
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(STATUS_OK, AParcel_writeStatusHeader(parcel.get(), ndk::ScopedAStatus::ok().get()));
    ASSERT_EQ(STATUS_OK, AParcel_writeStatusHeader(parcel.get(), specific.get()));
    EXPECT_EQ(words({0, EX_SERVICE_SPECIFIC, 1, 0x6d, 0, 5}), bytesOf(parcel.get()));
    EXPECT_STREQ("m", specific.getMessage());

    ndk::ScopedAStatus bare = ndk::ScopedAStatus::fromServiceSpecificError(3);
    EXPECT_EQ(EX_SERVICE_SPECIFIC, bare.getExceptionCode());
    EXPECT_EQ(3, bare.getServiceSpecificError());
    EXPECT_EQ(STATUS_OK, bare.getStatus());
    ndk::ScopedAStatus exception = ndk::ScopedAStatus::fromExceptionCode(EX_NULL_POINTER);
    EXPECT_EQ(0, exception.getServiceSpecificError());
    EXPECT_STREQ("", exception.getMessage());
    EXPECT_TRUE(ndk::ScopedAStatus::fromStatus(STATUS_OK).isOk());
    EXPECT_TRUE(ndk::ScopedAStatus::fromExceptionCode(EX_NONE).isOk());
    EXPECT_FALSE(ndk::ScopedAStatus().isOk());
}

}  // namespace
