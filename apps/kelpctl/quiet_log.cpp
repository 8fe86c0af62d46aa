#include "kelpctl/quiet_log.h"

#include <cstdlib>

#include "kelp/log.h"

namespace kelpctl {

void QuietLog() {
    auto log = kelp::log::Options::FromEnvironment();
    // No thread runs yet. NOLINTNEXTLINE(concurrency-mt-unsafe)
    if (std::getenv("KELP_LOG_LEVEL") == nullptr) {
        log.level = kelp::log::Level::kOff;
    }
    LogProcess::Init(log);
}

}  // namespace kelpctl
