#include <map>

#include "base/mutex.h"
#include "task/core.h"

namespace {

struct Probes {
    kelp::Mutex mutex;
    std::map<std::string, std::string (*)()> by_name KELP_GUARDED_BY(mutex);
};

Probes& TheProbes() {
    static auto* const probes = new Probes;
    return *probes;
}

}  // namespace

void KelpDebugMgr::AddProbe(const std::string& name, std::string (*probe)()) {
    Probes& probes = TheProbes();
    kelp::MutexLock lock(probes.mutex);
    probes.by_name[name] = probe;
}

std::string KelpDebugMgr::Report() {
    const auto core = kelp::task::CurrentCore();
    std::string text = core == nullptr ? "not initialised\n" : core->Report();
    std::map<std::string, std::string (*)()> by_name;
    {
        Probes& probes = TheProbes();
        kelp::MutexLock lock(probes.mutex);
        by_name = probes.by_name;  // a probe may take its time, and may add another
    }
    for (const auto& [name, probe] : by_name) {
        text += name + ": " + (probe == nullptr ? std::string() : probe()) + "\n";
    }
    return text;
}

void KelpDebugMgr::Destroy() noexcept {
    Probes& probes = TheProbes();
    kelp::MutexLock lock(probes.mutex);
    probes.by_name.clear();
}
