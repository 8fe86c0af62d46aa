#include "kelpctl/status.h"

#include <array>
#include <cstdio>

#include "kelp/message.h"

namespace kelpctl {
namespace {

// How each code reads: %T the target, %C the command, %S the seconds waited.
struct Reading {
    std::uint32_t code;
    int status;
    const char* text;
};

constexpr Reading kReadings[] = {
    {KELP_MSG_TIMEOUT, kTimedOut, "%T did not answer %C within %S s"},
    {KELP_MSG_NO_PEER, kUnreachable, "%T is not running"},
    {KELP_MSG_PEER_CLOSED, kUnreachable, "%T ended before it answered %C"},
    {KELP_MSG_SEND_FAILED, kUnreachable, "%C could not be sent to %T"},
    {KELP_MSG_PEER_BUSY, kUnreachable, "%T does not take requests: its send queue is full"},
    {KELP_MSG_STOPPED, kUnreachable, "%T is shutting down"},
    {KELP_MSG_REJECTED, kRefused, "%T rejected %C"},
    {KELP_MSG_QUEUE_FULL, kRefused, "%T has too many requests waiting"},
    {KELP_MSG_TOO_LONG, kRefused, "the answer to %C is longer than a message may be"},
    {KELP_MSG_NO_TASK, kRefused, "%T has no task to run %C in"},
    {KELP_MSG_NO_COMMAND, kRefused, "%T knows no command %C"},
    {KELP_MSG_BAD_BODY, kRefused, "%T could not decode the request %C"},
    {KELP_MSG_HANDLER_FAILED, kRefused, "%C failed inside %T"},
    {KELP_MSG_BAD_ANSWER, kRefused, "%T could not encode its answer to %C"},
    {KELP_MSG_NO_MEMORY, kRefused, "out of memory for %C at %T"},
    {0x4101f009, kUsage, "the arguments of %C take more than 100000 octets"},
    {0x4101f00a, kUnreadable, "the answer of %T to %C is no common response"},
    {0x4101f00e, kUnreachable, "out of memory for %C"},
};

std::string Fill(const char* text, const std::string& target, const std::string& command,
                 int timeout_seconds) {
    std::string filled;
    for (const char* c = text; *c != '\0'; ++c) {
        if (*c != '%') {
            filled += *c;
            continue;
        }
        ++c;
        filled += *c == 'T' ? target : *c == 'C' ? command : std::to_string(timeout_seconds);
    }
    return filled;
}

}  // namespace

int StatusOfResult(std::int64_t ret_code) {
    if (ret_code == 0) {
        return kOk;
    }
    return ret_code >= kFirstResultStatus && ret_code <= kLastResultStatus
               ? static_cast<int>(ret_code)
               : kOtherResult;
}

Failure FailureOfCall(std::uint32_t code, const std::string& target, const std::string& command,
                      int timeout_seconds) {
    for (const Reading& reading : kReadings) {
        if (reading.code == code) {
            return {reading.status, Fill(reading.text, target, command, timeout_seconds)};
        }
    }
    std::array<char, 16> hex{};
    std::snprintf(hex.data(), hex.size(), "0x%08x", static_cast<unsigned>(code));
    return {kRefused, Fill("%T answered %C with error ", target, command, 0) + hex.data()};
}

}  // namespace kelpctl
