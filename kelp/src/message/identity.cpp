// Design notes. The three numbers are one word, so that they are read and replaced
// together without a lock: 16 bits each, and a bit that says they were set.

#include "message/identity.h"

#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "kelp/message.h"

namespace kelp::message {
namespace {

constexpr std::uint64_t kSet = std::uint64_t{1} << 63;
constinit std::atomic<std::uint64_t> g_identity{0};

std::uint16_t Number(const char* variable) {
    const char* text = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): never set here
    std::uint16_t value = 0;
    if (text == nullptr) {
        return 0;
    }
    const char* end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, value);
    return error == std::errc() && stop == end ? value : 0;
}

std::uint64_t Pack(const Identity& identity) {
    return kSet | identity.proc_id | std::uint64_t{identity.proc_handle} << 16 |
           std::uint64_t{identity.desk_id} << 32;
}

}  // namespace

Identity IdentityFromEnvironment() noexcept {
    return {Number("KELP_PROC_ID"), Number("KELP_PROC_HANDLE"), Number("KELP_DESK_ID")};
}

void SetIdentity(const Identity& identity) noexcept {
    g_identity.store(Pack(identity), std::memory_order_release);
}

Identity GetIdentity() noexcept {
    std::uint64_t word = g_identity.load(std::memory_order_acquire);
    if (word == 0) {
        const std::uint64_t found = Pack(IdentityFromEnvironment());
        // Somebody may have set it meanwhile; then that holds.
        word = g_identity.compare_exchange_strong(word, found) ? found : word;
    }
    return {static_cast<std::uint16_t>(word), static_cast<std::uint16_t>(word >> 16),
            static_cast<std::uint16_t>(word >> 32)};
}

}  // namespace kelp::message

unsigned int KelpGetProcId() noexcept {
    return kelp::message::GetIdentity().proc_id;
}
unsigned short KelpGetProcHandle() noexcept {
    return kelp::message::GetIdentity().proc_handle;
}
unsigned short KelpGetDeskId() noexcept {
    return kelp::message::GetIdentity().desk_id;
}
