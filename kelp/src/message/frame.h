// From octets to messages: a frame is a length of 32 bits and a message of that many
// octets. What arrives is checked before memory is taken and before anybody looks at it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "message/block.h"

namespace kelp::message {

inline constexpr std::size_t kFrameLength = 4;

/// Checks a message that lies in `block`, `octets` octets of it, and notes its trailer
/// there. Null when it is sound; otherwise what is wrong with it.
const char* CheckMessage(MsgBlock* block, std::size_t octets) noexcept;

/// Cuts a stream of octets into messages. One thread.
///
///     for (;;) {
///         std::span<unsigned char> rest = reader.Rest();  // receive there first, if any
///         ...
///         if (!reader.Received(count, give) || !reader.Feed(data, count, give)) close();
///     }
class FrameReader {
  public:
    explicit FrameReader(std::size_t max_octets) : max_octets_(max_octets) {}

    /// Takes `count` octets and hands each message that they complete to `give(MsgPtr)`.
    /// False when the stream is broken: why() says how, nothing more may be fed.
    template <class Give>
    bool Feed(const unsigned char* data, std::size_t count, Give&& give) {
        while (count > 0) {
            const std::size_t taken = Take(data, count);
            if (why_ != nullptr) {
                return false;
            }
            data += taken;
            count -= taken;
            if (Complete() && !Finish(give)) {
                return false;
            }
        }
        return true;
    }

    /// Where the octets still missing from a frame go; empty when no frame is begun whose
    /// length is known.
    std::span<unsigned char> Rest() {
        return block_ == nullptr ? std::span<unsigned char>()
                                 : std::span(block_->octets() + have_, octets_ - have_);
    }

    /// `count` octets were stored at Rest(); otherwise as Feed().
    template <class Give>
    bool Received(std::size_t count, Give&& give) {
        have_ += count;
        return !Complete() || Finish(give);
    }

    /// Whether a frame has begun that is not complete.
    bool Midway() const { return block_ != nullptr || have_ > 0; }
    const char* why() const { return why_; }

  private:
    struct FreeBlock {
        void operator()(MsgBlock* block) const { KelpMsgFree(block->message()); }
    };

    /// Takes octets of the length, or of the message; how many.
    std::size_t Take(const unsigned char* data, std::size_t count);
    bool Complete() const { return block_ != nullptr && have_ == octets_; }

    template <class Give>
    bool Finish(Give&& give) {
        why_ = CheckMessage(block_.get(), octets_);
        if (why_ != nullptr) {
            return false;
        }
        have_ = 0;
        give(MsgPtr(block_.release()->message()));
        return true;
    }

    const std::size_t max_octets_;
    const char* why_ = nullptr;
    unsigned char length_[kFrameLength] = {};
    std::unique_ptr<MsgBlock, FreeBlock> block_;  // null while the length is being read
    std::size_t octets_ = 0;                      // of the message
    std::size_t have_ = 0;                        // of the length, then of the message
};

}  // namespace kelp::message
