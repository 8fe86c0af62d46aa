// kelpd/status.h - what kelpd's exit statuses mean. docs/kelpd.md tells them to users.
#pragma once

#include <stdexcept>
#include <string>

namespace kelpd {

enum ExitStatus : int {
    kOk = 0,
    kFailed = 1,         ///< the system refused something that nothing here is to blame for
    kUsage = 2,          ///< the command line
    kConfiguration = 3,  ///< no installation root, or a file of it is missing or malformed
    kAddress = 4,        ///< the address cannot be listened on
    kKeys = 5,           ///< a key or certificate is missing, unreadable, unfit or open to others
    kForeignRoot = 6,    ///< the root belongs to another user, or others may write to it
    kRunning = 7,        ///< another kelpd serves this root
    kOccupied = 8,       ///< init: the directory is not empty
};

/// Why kelpd does not go on: one line for standard error, and the exit status.
class Refusal : public std::runtime_error {
  public:
    Refusal(ExitStatus status, const std::string& line)
        : std::runtime_error(line), status_(status) {}
    ExitStatus status() const { return status_; }

  private:
    ExitStatus status_;
};

}  // namespace kelpd
