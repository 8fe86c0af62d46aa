#include "nemgr/rates.h"

#include <cmath>
#include <limits>
#include <utility>

namespace nemgr {
namespace {

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

double Rate(double before, double after, bool wide, double seconds) {
    double grown = after - before;
    if (grown < 0) {
        if (wide) {
            return kUnknown;  // not in a lifetime: the counter was reset
        }
        grown += std::ldexp(1.0, 32);
    }
    return std::round(grown / seconds * 10) / 10;
}

Rates Compare(const Reading& before, const Reading& now, long index) {
    const auto earlier = before.interfaces.find(index);
    const Counters& after = now.interfaces.at(index);
    if (earlier == before.interfaces.end() || earlier->second.wide != after.wide) {
        return {kUnknown, kUnknown};
    }
    const double seconds = now.uptime_s - before.uptime_s;
    return {Rate(earlier->second.in, after.in, after.wide, seconds),
            Rate(earlier->second.out, after.out, after.wide, seconds)};
}

}  // namespace

std::map<long, Rates> RateHistory::Update(const std::string& element, Reading now) {
    const std::lock_guard lock(mutex_);
    if (elements_.size() >= kMostElements && elements_.count(element) == 0) {
        elements_.erase(elements_.begin());
    }
    Kept& kept = elements_[element];
    if (now.uptime_s < kept.newer.uptime_s) {
        kept = {};
    }
    const bool later = now.uptime_s - kept.newer.uptime_s >= kLeastSeconds;
    const Reading& before = later ? kept.newer : kept.older;
    std::map<long, Rates> rates;
    for (const auto& entry : now.interfaces) {
        rates[entry.first] = Compare(before, now, entry.first);
    }
    if (later || kept.newer.interfaces.empty()) {
        kept.older = std::exchange(kept.newer, std::move(now));
    }
    return rates;
}

}  // namespace nemgr
