// Serial numbers: one rising count for the whole process, so that a number comes round
// only after all others.
#pragma once

#include <atomic>
#include <cstdint>

namespace kelp::message {

class Serials {
  public:
    explicit Serials(std::uint32_t first = 1) : next_(first) {}

    /// A number that is not 0 and for which `in_use` does not hold. While the count has
    /// not come round no number can be in use, and `in_use` is not asked.
    template <class InUse>
    std::uint32_t Next(InUse&& in_use) {
        for (;;) {
            const std::uint64_t count = next_.fetch_add(1, std::memory_order_relaxed);
            const auto serial = static_cast<std::uint32_t>(count);
            if (serial != 0 && (count == serial || !in_use(serial))) {
                return serial;
            }
        }
    }

  private:
    std::atomic<std::uint64_t> next_;
};

}  // namespace kelp::message
