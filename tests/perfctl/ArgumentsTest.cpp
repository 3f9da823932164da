// Command-line words to argument values: each type takes its exact spelling and nothing else.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Arguments.h"

namespace perfctl {
namespace {

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
    // A string takes any word as it is.
    Check<std::string>(ArgType::kString, {"", " a,b "}, {"", " a,b "}, {});
}

}  // namespace
}  // namespace perfctl
