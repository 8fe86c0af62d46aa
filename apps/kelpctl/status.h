// kelpctl/status.h - what kelpctl exits with, and how failures read.
//
// Thread rule: thread-safe.
#pragma once

#include <cstdint>
#include <string>

namespace kelpctl {

enum ExitStatus : int {
    kOk = 0,
    kOtherResult = 1,  ///< answered with a "##retCode" that is no exit status of its own
    kUsage = 2,        ///< wrong command line, file, name or argument; nothing was sent
    kUnreachable = 3,  ///< the process is not running, ended meanwhile, or cannot be reached
    kTimedOut = 4,     ///< no answer within the time-out
    kRefused = 5,      ///< the platform of the process answered instead of the command
    kUnreadable = 6,   ///< octets are not what was asked for, such as a common response
    kNotWritten = 7,   ///< the output could not be written
};

/// "##retCode" values that are exit statuses as they stand. Below them are kelpctl's own,
/// above them what shells report of commands that could not run or were killed.
inline constexpr std::int64_t kFirstResultStatus = 10;
inline constexpr std::int64_t kLastResultStatus = 125;

/// The exit status of an answer with result code `ret_code`.
int StatusOfResult(std::int64_t ret_code);

/// What is said and what is exited with when the request had no readable answer.
struct Failure {
    int status;
    std::string text;
};

/// The failure that `code`, a non-zero result of SynSendMsg, stands for; `target` and
/// `command` are how the line calls them.
Failure FailureOfCall(std::uint32_t code, const std::string& target, const std::string& command,
                      int timeout_seconds);

}  // namespace kelpctl
