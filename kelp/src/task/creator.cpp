// Design notes. The table is made by whoever asks first, before main as a rule, and never
// destroyed: registrations are objects of static storage in several libraries. A
// registration is never removed, so a pointer to it stays valid; the lock covers the
// table's own structure.

#include <unordered_map>

#include "base/mutex.h"
#include "kelp/log.h"
#include "kelp/task.h"

namespace {

struct Registry {
    kelp::Mutex mutex;
    std::unordered_map<unsigned long, KelpTaskRegister> by_command KELP_GUARDED_BY(mutex);
};

Registry& TheRegistry() {
    static auto* const registry = new Registry;
    return *registry;
}

bool Refuse(unsigned long command, const char* why) {
    LogProcess::Error(0, "[task] command " + std::to_string(command) + " " + why,
                      LocationInfo("task", "RegisterTask", 0));
    return false;
}

}  // namespace

KelpTaskCreator* KelpTaskCreator::Instance() noexcept {
    static KelpTaskCreator instance;  // without state: outlives static objects that use it
    return &instance;
}

bool KelpTaskCreator::RegisterTask(const KelpTaskRegister& registration) {
    if (registration.handler == nullptr) {
        return Refuse(registration.cmdCode, "was registered without a handler");
    }
    if (registration.cmdCode > 0xFFFFFFFFUL) {
        return Refuse(registration.cmdCode, "does not fit a message's 32 bits");
    }
    Registry& registry = TheRegistry();
    bool added = false;
    {
        kelp::MutexLock lock(registry.mutex);
        added = registry.by_command.emplace(registration.cmdCode, registration).second;
    }
    return added ||
           Refuse(registration.cmdCode, "is registered already; the first registration stays");
}

const KelpTaskRegister* KelpTaskCreator::Find(unsigned long cmdCode) const {
    Registry& registry = TheRegistry();
    kelp::MutexLock lock(registry.mutex);
    const auto found = registry.by_command.find(cmdCode);
    return found == registry.by_command.end() ? nullptr : &found->second;
}
