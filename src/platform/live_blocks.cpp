#include "platform/live_blocks.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_map>

#include "kelp/log.h"

namespace FrameUtil {

namespace {

struct LiveBlocks {
    std::mutex mutex;
    std::unordered_map<void*, std::size_t> sizes;
};

// Never destroyed: static objects return their blocks as late as they like.
LiveBlocks& Live() noexcept {
    alignas(LiveBlocks) static std::byte room[sizeof(LiveBlocks)];
    static LiveBlocks& live = *::new (room) LiveBlocks;
    return live;
}

[[noreturn]] void Fail(const char* text) {
    LogProcess::Error(0, text, LocationInfo("platform", "Free", __LINE__));
    std::abort();
}

}  // namespace

bool NoteLiveBlock(void* block, std::size_t size) noexcept {
    LiveBlocks& live = Live();
    const std::lock_guard<std::mutex> lock(live.mutex);
    try {
        live.sizes[block] = size;
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void LockLiveBlocks() noexcept {
    Live().mutex.lock();
}

void UnlockLiveBlocks() noexcept {
    Live().mutex.unlock();
}

void ForgetLiveBlock(void* block, std::size_t size) noexcept {
    LiveBlocks& live = Live();
    char fault[160] = "";
    {
        const std::lock_guard<std::mutex> lock(live.mutex);
        const auto found = live.sizes.find(block);
        if (found == live.sizes.end()) {
            std::snprintf(fault, sizeof fault,
                          "[Free] block %p of %zu bytes is not handed out: returned twice, or "
                          "not of Malloc",
                          block, size);
        } else if (found->second != size) {
            std::snprintf(fault, sizeof fault,
                          "[Free] block %p of %zu bytes is returned as one of %zu bytes", block,
                          found->second, size);
        } else {
            live.sizes.erase(found);
        }
    }
    if (fault[0] != '\0') {
        Fail(fault);
    }
}

}  // namespace FrameUtil
