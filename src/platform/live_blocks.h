// Which blocks are handed out, kept by builds that check how they come back.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>

namespace FrameUtil {

/// Notes that `block` was handed out for `size` bytes. False: there is no memory for that.
bool NoteLiveBlock(void* block, std::size_t size) noexcept;

/// Forgets it. Logs what is wrong and aborts when `block` is not handed out or has another
/// size.
void ForgetLiveBlock(void* block, std::size_t size) noexcept;

/// Around a fork, so that the child finds them whole.
void LockLiveBlocks() noexcept;
void UnlockLiveBlocks() noexcept;

}  // namespace FrameUtil
