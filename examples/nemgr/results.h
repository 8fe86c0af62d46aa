// nemgr/results.h - how commands end.
#pragma once

#include <stdexcept>
#include <string>

namespace nemgr {

/// What an answer's "##retCode" holds.
enum class Result : int {
    kSuccess = 0,
    kBadArgument = 10,
    kNoAnswer = 11,
    kElementRefuses = 12,
    kElementNonsense = 13,
    kUnknownVendor = 14,
    kNoRegistry = 15,
    kInternalFault = 16,
    kNoDatabase = 17,
    kUnknownElement = 18,
    kNoGateway = 19,
};

/// The text for people: "the element does not answer".
const char* ResultText(Result result);

/// Its identifier in the error resources: "nemgr.noAnswer".
const char* ResultId(Result result);

/// Thrown by a command that cannot do its work; becomes its answer.
class CommandFailure : public std::runtime_error {
  public:
    /// `item` names the thing at fault: "127.0.0.1:161".
    CommandFailure(Result result, const std::string& item)
        : std::runtime_error(item), result_(result) {}

    Result result() const noexcept { return result_; }
    const char* item() const noexcept { return what(); }

  private:
    Result result_;
};

}  // namespace nemgr
