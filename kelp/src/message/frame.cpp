#include "message/frame.h"

#include <algorithm>
#include <cstring>

#include "message/trailer.h"

namespace kelp::message {

const char* CheckMessage(MsgBlock* block, std::size_t octets) noexcept {
    CmdMSG* msg = block->message();
    if (msg->version != KELP_MSG_VERSION) {
        return "the header is of another version";
    }
    if (msg->bodyLength < 2 || msg->bodyLength > octets - kLengthOrigin) {
        return "the body's length is not within the frame";
    }
    const std::size_t body_end = kLengthOrigin + msg->bodyLength;
    TrailerView trailer;
    if (const char* why = ParseTrailer({block->octets() + body_end, octets - body_end}, trailer)) {
        return why;
    }
    block->body_capacity = msg->bodyLength - 2;
    block->trailer_at = static_cast<std::uint32_t>(body_end);
    block->trailer_octets = static_cast<std::uint32_t>(octets - body_end);
    block->token_octets = static_cast<std::uint32_t>(trailer.token_octets);
    block->token_at =
        trailer.token_octets == 0 ? 0 : static_cast<std::uint32_t>(body_end + trailer.token_at);
    block->received = true;
    msg->clientAddress = 0;  // whatever was sent: the peer is a process of this machine
    return nullptr;
}

std::size_t FrameReader::Take(const unsigned char* data, std::size_t count) {
    if (block_ != nullptr) {
        const std::size_t taken = std::min(count, octets_ - have_);
        std::memcpy(block_->octets() + have_, data, taken);
        have_ += taken;
        return taken;
    }
    const std::size_t taken = std::min(count, kFrameLength - have_);
    std::memcpy(length_ + have_, data, taken);
    have_ += taken;
    if (have_ < kFrameLength) {
        return taken;
    }
    std::uint32_t octets = 0;
    std::memcpy(&octets, length_, sizeof octets);
    if (octets < KELP_MSG_HEADER) {
        why_ = "a frame is shorter than a message's header";
    } else if (octets > max_octets_) {
        why_ = "a frame is above the limit";
    } else {
        block_.reset(AllocBlock(octets));
        if (block_ == nullptr) {
            why_ = "no memory for a frame";
        }
    }
    octets_ = octets;
    have_ = 0;
    return taken;
}

}  // namespace kelp::message
