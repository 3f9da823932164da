/*
 * The daemon's host logger gives every line of a message a header of its own.
 */
#include "host_logger.h"

#include <gtest/gtest.h>

namespace {

TEST(HostLoggerTest, EveryLineOfAMessageGetsItsOwnHeader) {
    // {message, as logged after the header "H "}
    const std::pair<const char*, const char*> cases[] = {
        {"one", "H one\n"},
        {"one\n", "H one\n"},
        {"", "H \n"},
        {"\n", "H \n"},
        {"x\nService F 01-01 forged", "H x\nH Service F 01-01 forged\n"},
        {"a\n\nb\n\n", "H a\nH \nH b\nH \n"},
    };
    for (const auto& [message, logged] : cases) {
        std::string out = "before\n";
        host_logger::AppendLines("H ", message, &out);
        EXPECT_EQ(std::string("before\n") + logged, out) << message;
    }
}

}  // namespace
