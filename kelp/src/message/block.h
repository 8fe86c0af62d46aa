// The memory of a message: what the bus remembers about it, the frame's length, and the
// message itself, in one block, so that a frame is sent from where it lies.
//
// Design notes. A block belongs to one holder at a time and takes no lock. The reference
// to the connection that carried a request keeps that connection's object (not its
// session) alive until the message is freed, whatever happens to the peer meanwhile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/ref.h"
#include "kelp/message.h"

namespace kelp::message {

/// Octets in front of the one that `bodyLength` starts to count at.
inline constexpr std::size_t kLengthOrigin = 48;
inline constexpr std::size_t kMaxBody = std::size_t{1} << 30;

enum class Route : std::uint8_t {
    kNone,        // made here
    kLocal,       // came from this process
    kConnection,  // came over `origin`
};

struct MsgBlock {
    base::Counted* origin;         // a reference of its own, or null
    std::uint32_t capacity;        // octets of header, body and trailer there is room for
    std::uint32_t body_capacity;   // what bodyLength may be at most, less 2
    std::uint32_t trailer_at;      // octets in front of the trailer
    std::uint32_t trailer_octets;  // 0: none
    std::uint32_t token_at;        // octets in front of the token
    std::uint32_t token_octets;    // 0: none
    Route route;
    bool permanent;  // carries an error code; never freed
    bool received;   // the bus or this process's short cut delivered it
    std::uint8_t unused;
    std::uint32_t wire_length;  // little-endian, as sent in front of the message
    // The CmdMSG follows.

    CmdMSG* message() { return reinterpret_cast<CmdMSG*>(this + 1); }
    unsigned char* octets() { return reinterpret_cast<unsigned char*>(this + 1); }
    /// What is sent: the length and the message.
    const unsigned char* wire() const {
        return reinterpret_cast<const unsigned char*>(&wire_length);
    }
};
static_assert(sizeof(MsgBlock) % alignof(CmdMSG) == 0);
static_assert(offsetof(MsgBlock, wire_length) + 4 == sizeof(MsgBlock));

inline MsgBlock* BlockOf(CmdMSG* msg) {
    return reinterpret_cast<MsgBlock*>(msg) - 1;
}
inline const MsgBlock* BlockOf(const CmdMSG* msg) {
    return reinterpret_cast<const MsgBlock*>(msg) - 1;
}

struct FreeMsg {
    void operator()(CmdMSG* msg) const { KelpMsgFree(msg); }
};
using MsgPtr = std::unique_ptr<CmdMSG, FreeMsg>;

/// Room for a message of `octets` octets altogether (50 or more); nothing of the message
/// is initialised. Null when there is no memory.
MsgBlock* AllocBlock(std::size_t octets) noexcept;

/// Header, body and trailer, in octets.
std::size_t MessageOctets(const CmdMSG* msg) noexcept;

/// Makes the block ready to be sent: its trailer directly behind the body, its frame's
/// length set. False when the header claims a body that the block does not hold.
bool Seal(CmdMSG* msg) noexcept;

/// The message that stands for error `code` in a slot; lives as long as the process.
CmdMSG* ErrorSlot(std::uint32_t code) noexcept;

}  // namespace kelp::message
