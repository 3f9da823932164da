// Words to argument values, each type taking its exact spelling and nothing else; and results to
// text: scalars as text, parcelables as one line of JSON with the fields of the interface
// definition in their declared order.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Arguments.h"
#include "Format.h"
#include "perfctl_table.h"

namespace perfctl {
namespace {

using ::aidl::vendor::vyren::hardware::performance::ProcMemStat;
using ::aidl::vendor::vyren::hardware::performance::ProcMemStatRet;
using ::aidl::vendor::vyren::hardware::performance::ProcReqHal;

// words[i] parses to values[i]; every rejected word is turned down.
template <typename T>
void Check(ArgType type, const std::vector<const char*>& words, const std::vector<T>& values,
           const std::vector<const char*>& rejected) {
    ASSERT_EQ(words.size(), values.size());
    for (size_t i = 0; i < words.size(); ++i) {
        EXPECT_EQ(ParseArgument(type, words[i]), Value(values[i])) << '"' << words[i] << '"';
    }
    for (const char* word : rejected) {
        EXPECT_EQ(ParseArgument(type, word), std::nullopt) << '"' << word << '"';
    }
}

TEST(ArgumentsTest, EachTypeTakesItsSpellingOnly) {
    // Decimal only: "007" is seven, "0x10" no number.
    Check<int32_t>(ArgType::kInt, {"-42", "+42", "007", "2147483647", "-2147483648"},
                   {-42, 42, 7, INT32_MAX, INT32_MIN},
                   {"2147483648", "-2147483649", "", "+", "-", "+-1", "0x10", " 1"});
    // Signs and digits as for int; only the range differs.
    Check<int64_t>(ArgType::kLong, {"2147483648", "9223372036854775807", "-9223372036854775808"},
                   {2147483648, INT64_MAX, INT64_MIN},
                   {"9223372036854775808", "-9223372036854775809"});
    Check<bool>(ArgType::kBoolean, {"true", "1", "false", "0"}, {true, true, false, false},
                {"TRUE", "yes", "", "01"});
    Check<std::vector<int32_t>>(ArgType::kIntArray, {"", "7", "0,4,-7"}, {{}, {7}, {0, 4, -7}},
                                {",", "1,", ",1", "1, 2", "1,2147483648"});
    // A string takes any UTF-8 word as it is; bytes with no UTF-16 form are turned down:
    // a stray byte, an overlong NUL, a surrogate, a cut sequence, a code point past U+10FFFF.
    Check<std::string>(ArgType::kString, {"", " a,b ", "\xc3\xa9\xf0\x9f\x99\x82"},
                       {"", " a,b ", "\xc3\xa9\xf0\x9f\x99\x82"},
                       {"\xff", "\xc0\x80", "\xed\xa0\x80", "a\xe2\x82", "\xf4\x90\x80\x80"});
}

template <typename T>
std::string Formatted(const T& value) {
    std::string out;
    FormatResult(value, &out);
    return out;
}

TEST(FormatTest, JsonStringEscapes) {
    using namespace std::string_literals;
    // Quotes, backslashes and control characters escaped; DEL, '/' and UTF-8 copied as they are.
    std::string out;
    AppendJsonString(&out,
                     "say \"hi\" C:\\dir\n\t\r\b\f\x01\x1f\0\x7f/caf\xc3\xa9 \xf0\x9f\x98\x80"s);
    EXPECT_EQ(out, R"("say \"hi\" C:\\dir\n\t\r\b\f\u0001\u001f\u0000)"
                   "\x7f/caf\xc3\xa9 \xf0\x9f\x98\x80\"");
}

// int and String results are printed by perfctl's command-line cases.
TEST(FormatTest, Scalars) {
    EXPECT_EQ(Formatted(int64_t{INT64_MAX}), "9223372036854775807\n");
    EXPECT_EQ(Formatted(false), "false\n");
}

TEST(FormatTest, ParcelableFieldsInDeclarationOrder) {
    ProcMemStat stat;
    stat.name = "com.example\t\"svc\"";
    stat.flag = true;
    stat.value18 = u'\xffff';  // char prints as its number
    stat.value80 = INT32_MAX;
    ProcMemStatRet ret;
    ret.result = 1;
    ret.stats = {stat};
    EXPECT_EQ(Formatted(ret),
              R"({"result":1,"stats":[)"
              R"({"name":"com.example\t\"svc\"","flag":true,"value18":65535,"value20":0,)"
              R"("value24":0,"pid":0,"value32":0,"value36":0,"value40":0,"value44":0,)"
              R"("value48":0,"value52":0,"smapsTotal":0,"reserved":0,"smapsDalvikHeap":0,)"
              R"("smapsNativeMalloc":0,"value72":0,"value76":0,"value80":2147483647}]})"
              "\n");
}

TEST(FormatTest, RecordListsAreCommaSeparated) {
    EXPECT_EQ(Formatted(ProcReqHal()), "{\"path\":\"\",\"items\":[]}\n");
    const ProcReqHal two{"/p", {{"a", "=", -1}, {"b", "", INT32_MIN}}};
    EXPECT_EQ(Formatted(two), R"({"path":"/p","items":[{"key":"a","separator":"=","flag":-1},)"
                              R"({"key":"b","separator":"","flag":-2147483648}]})"
                              "\n");
}

}  // namespace
}  // namespace perfctl
