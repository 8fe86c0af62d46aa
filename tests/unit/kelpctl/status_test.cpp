#include "kelpctl/status.h"

#include <gtest/gtest.h>

#include "kelp/message.h"

namespace {

using kelpctl::StatusOfResult;

TEST(ResultCodes, BecomeExitStatusesWhereTheyFit) {
    const struct {
        std::int64_t code;
        int status;
    } cases[] = {{0, 0},   {1, 1},  {9, 1},   {10, 10},        {125, 125},
                 {126, 1}, {-1, 1}, {256, 1}, {0x42000030, 1}, {INT64_MIN, 1}};
    for (const auto& c : cases) {
        EXPECT_EQ(StatusOfResult(c.code), c.status) << c.code;
    }
}

TEST(CallFailures, ReadAsOneLine) {
    const struct {
        std::uint32_t code;
        int status;
        const char* text;
    } cases[] = {
        {KELP_MSG_TIMEOUT, 4, "T did not answer C within 7 s"},
        {KELP_MSG_NO_PEER, 3, "T is not running"},
        {KELP_MSG_PEER_CLOSED, 3, "T ended before it answered C"},
        {KELP_MSG_NO_COMMAND, 5, "T knows no command C"},
        {KELP_MSG_REJECTED, 5, "T rejected C"},
        {KELP_MSG_HANDLER_FAILED, 5, "C failed inside T"},
        {KELP_MSG_BAD_BODY, 5, "T could not decode the request C"},
        {0x4101f009, 2, "the arguments of C take more than 100000 octets"},
        {0x4101f00a, 6, "the answer of T to C is no common response"},
        {0x12345678, 5, "T answered C with error 0x12345678"},
    };
    for (const auto& c : cases) {
        const kelpctl::Failure failure = kelpctl::FailureOfCall(c.code, "T", "C", 7);
        EXPECT_EQ(failure.status, c.status) << c.text;
        EXPECT_EQ(failure.text, c.text);
    }
}

}  // namespace
