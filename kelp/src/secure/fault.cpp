#include "secure/fault.h"

namespace kelp::secure {

namespace {
std::atomic<Routine> g_routine{Routine::kAny};
std::atomic<int> g_error{0};
std::atomic<long> g_left{0};
}  // namespace

FailNth::FailNth(Routine routine, long nth, int error) {
    fault::armed.store(false);
    g_routine.store(routine);
    g_error.store(error);
    g_left.store(nth);
    fault::armed.store(true);
}

FailNth::~FailNth() {
    fault::armed.store(false);
}

bool FailNth::Fired() const {
    return g_left.load() <= 0;
}

int fault::Count(Routine routine) {
    const Routine wanted = g_routine.load();
    if (wanted != Routine::kAny && wanted != routine) {
        return 0;
    }
    return g_left.fetch_sub(1) == 1 ? g_error.load() : 0;
}

}  // namespace kelp::secure
