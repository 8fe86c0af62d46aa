// Which blocks are handed out, kept by builds that check how they come back.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>

namespace FrameUtil {

/// Notes that `block` was handed out for `size` bytes.
void NoteLiveBlock(void* block, std::size_t size);

/// Forgets it. Logs what is wrong and aborts when `block` is not handed out or has another
/// size.
void ForgetLiveBlock(void* block, std::size_t size);

}  // namespace FrameUtil
