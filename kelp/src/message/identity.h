// Who this process is.
#pragma once

#include <cstdint>

namespace kelp::message {

struct Identity {
    std::uint16_t proc_id = 0;
    std::uint16_t proc_handle = 0;
    std::uint16_t desk_id = 0;
};

/// What the environment says; 0 where a variable is absent or no number up to 65535.
Identity IdentityFromEnvironment() noexcept;

/// From now on KelpGetProcId() and the others answer this.
void SetIdentity(const Identity& identity) noexcept;

Identity GetIdentity() noexcept;

}  // namespace kelp::message
