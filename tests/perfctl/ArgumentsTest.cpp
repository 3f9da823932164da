// Command-line words to argument values: each type takes its exact spelling and nothing else.

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Arguments.h"

namespace perfctl {
namespace {

template <typename T>
using Cases = std::vector<std::pair<std::string, std::optional<T>>>;  // nullopt: rejected

// A rejected word must leave the output alone, so it starts as `initial`.
template <typename T, typename Parser>
void Check(Parser parse, const Cases<T>& cases, T initial) {
    for (const auto& [word, expected] : cases) {
        T value = initial;
        EXPECT_EQ(parse(word, &value), expected.has_value()) << '"' << word << '"';
        EXPECT_EQ(value, expected.value_or(initial)) << '"' << word << '"';
    }
}

TEST(ArgumentsTest, Int32) {
    Check<int32_t>(ParseInt32,
                   {{"0", 0},
                    {"-42", -42},
                    {"+42", 42},
                    {"007", 7},  // decimal, not octal
                    {"2147483647", INT32_MAX},
                    {"-2147483648", INT32_MIN},
                    {"2147483648", std::nullopt},
                    {"-2147483649", std::nullopt},
                    {"", std::nullopt},
                    {"+", std::nullopt},
                    {"-", std::nullopt},
                    {"+-1", std::nullopt},
                    {"12x", std::nullopt},
                    {"0x10", std::nullopt},
                    {" 1", std::nullopt},
                    {"1.0", std::nullopt}},
                   12345);
}

TEST(ArgumentsTest, Int64) {
    Check<int64_t>(ParseInt64,
                   {{"2147483648", int64_t{2147483648}},
                    {"9223372036854775807", INT64_MAX},
                    {"-9223372036854775808", INT64_MIN},
                    {"9223372036854775808", std::nullopt},
                    {"-9223372036854775809", std::nullopt},
                    {"+", std::nullopt},
                    {"0x7f", std::nullopt}},
                   12345);
}

TEST(ArgumentsTest, Boolean) {
    Check<bool>(ParseBoolean,
                {{"true", true},
                 {"1", true},
                 {"false", false},
                 {"0", false},
                 {"TRUE", std::nullopt},
                 {"yes", std::nullopt},
                 {"", std::nullopt},
                 {"01", std::nullopt}},
                true);
}

TEST(ArgumentsTest, IntArray) {
    Check<std::vector<int32_t>>(ParseIntArray,
                                {{"", std::vector<int32_t>{}},
                                 {"7", std::vector<int32_t>{7}},
                                 {"0,4,-7", std::vector<int32_t>{0, 4, -7}},
                                 {",", std::nullopt},
                                 {"1,", std::nullopt},
                                 {",1", std::nullopt},
                                 {"1,,2", std::nullopt},
                                 {"1, 2", std::nullopt},
                                 {"1,2147483648", std::nullopt}},
                                {99});
}

}  // namespace
}  // namespace perfctl
