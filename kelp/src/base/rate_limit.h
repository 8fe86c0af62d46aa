// Log lines that a peer can provoke: ten a second at most, then one that says how many
// were left out. thread-safe.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "base/clock.h"
#include "base/mutex.h"
#include "kelp/log.h"

namespace kelp::base {

class LimitedLog {
  public:
    explicit LimitedLog(const char* unit) : where_(unit, "", 0) {}

    void Warn(std::string_view text) {
        long left_out = 0;
        {
            MutexLock lock(mutex_);
            const std::int64_t now = SystemMonotonicNs();
            if (now - window_start_ > kSecond) {
                window_start_ = now;
                written_ = 0;
                left_out = std::exchange(left_out_, 0);
            }
            if (written_ == kPerSecond) {
                ++left_out_;
                return;
            }
            ++written_;
        }
        if (left_out > 0) {
            LogProcess::Warn(std::to_string(left_out) + " warnings of this kind were left out",
                             where_);
        }
        LogProcess::Warn(text, where_);
    }

  private:
    static constexpr int kPerSecond = 10;

    Mutex mutex_;
    const LocationInfo where_;
    std::int64_t window_start_ KELP_GUARDED_BY(mutex_) = 0;
    int written_ KELP_GUARDED_BY(mutex_) = 0;
    long left_out_ KELP_GUARDED_BY(mutex_) = 0;
};

}  // namespace kelp::base
