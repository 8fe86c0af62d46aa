// The crash path: the lines that wait, kept where a signal handler can reach them.
#pragma once

#include <cstdint>
#include <string_view>

namespace kelp::log::crash {

// Installs the handlers; false when the system refuses one.
bool Install() noexcept;

// Keeps a copy of the line with this number (1, 2, ... in the order of writing). Calls
// are serialised by the caller's lock. Does nothing while no handler is installed.
void Remember(std::uint64_t number, std::string_view line) noexcept;

// The lines up to this number are with the kernel: a crash leaves them out.
void MarkWritten(std::uint64_t number) noexcept;

}  // namespace kelp::log::crash
