#include "platform/live_blocks.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unordered_map>

#include "kelp/log.h"

namespace FrameUtil {

namespace {

struct LiveBlocks {
    std::mutex mutex;
    std::unordered_map<void*, std::size_t> sizes;
};

// Never destroyed: static objects return their blocks as late as they like.
LiveBlocks& Live() {
    static LiveBlocks* const live = new LiveBlocks;
    return *live;
}

[[noreturn]] void Fail(const char* text) {
    LogProcess::Error(0, text, LocationInfo("platform", "Free", __LINE__));
    std::abort();
}

}  // namespace

void NoteLiveBlock(void* block, std::size_t size) {
    LiveBlocks& live = Live();
    const std::lock_guard<std::mutex> lock(live.mutex);
    live.sizes[block] = size;
}

void ForgetLiveBlock(void* block, std::size_t size) {
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
