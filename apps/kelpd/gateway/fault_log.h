// kelpd/gateway/fault_log.h - warnings that a peer can provoke: ten a second at most, then a
// line that says how many were left out.
//
// thread-safe
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

namespace kelpd {

class FaultLog {
  public:
    void Warn(std::string_view text);

  private:
    std::atomic<std::int64_t> second_{0};
    std::atomic<int> written_{0};
    std::atomic<int> left_out_{0};
};

}  // namespace kelpd
