#include "kelpd/gateway/fault_log.h"

#include <chrono>
#include <string>

#include "kelp/log.h"

namespace kelpd {
namespace {

constexpr int kPerSecond = 10;

}  // namespace

void FaultLog::Warn(std::string_view text) {
    const LocationInfo where("kelpd", "gateway", 0);
    const std::int64_t now = std::chrono::duration_cast<std::chrono::seconds>(
                                 std::chrono::steady_clock::now().time_since_epoch())
                                 .count();
    std::int64_t before = second_.load();
    if (now != before && second_.compare_exchange_strong(before, now)) {
        written_ = 0;
        const int left_out = left_out_.exchange(0);
        if (left_out > 0) {
            LogProcess::Warn(std::to_string(left_out) + " warnings of this kind were left out",
                             where);
        }
    }
    if (++written_ > kPerSecond) {
        ++left_out_;
        return;
    }
    LogProcess::Warn(text, where);
}

}  // namespace kelpd
