#include "kelp/service_agent.h"

#include "task/core.h"

void KELPsac::KELPInstance::cleanup() noexcept {
    if (const auto core = kelp::task::CurrentCore()) {
        core->Withdraw();
    }
}
