// nemgr/rates.h - octets a second, from counters that only grow.
//
// A rate needs an earlier reading to compare with. The two latest readings that lie at
// least kLeastSeconds apart are kept of each element: a reading that comes soon after
// another is compared with the older of them, so that commands which arrive together do
// not measure the microseconds between themselves.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

namespace nemgr {

struct Counters {
    double in = 0;
    double out = 0;
    bool wide = false;  ///< of 64 bits; else they begin again at 2^32
};

struct Rates {
    double in;  ///< octets a second; not a number while unknown
    double out;
};

/// What an element said at one moment of its own clock.
struct Reading {
    double uptime_s = 0;
    std::map<long, Counters> interfaces;  ///< by ifIndex
};

class RateHistory {
  public:
    static constexpr double kLeastSeconds = 1;
    static constexpr std::size_t kMostElements = 1000;

    /// The rates of every interface of `now`, which is kept for later readings of the
    /// element named `element`. A clock that went back means that the element restarted:
    /// what is known of it is dropped.
    std::map<long, Rates> Update(const std::string& element, Reading now);

  private:
    struct Kept {
        Reading older;
        Reading newer;
    };

    std::mutex mutex_;
    std::map<std::string, Kept> elements_;
};

}  // namespace nemgr
