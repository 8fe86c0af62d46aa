// What a StrSpliter holds: its items one behind another in one block, each terminated.
//
// Thread rule: thread-compatible.
#pragma once

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include "frameutil/strutil.h"

namespace FrameUtil {

struct StrSpliter::Impl {
    explicit Impl(char sep) : separator(sep) {}

    /// StrSpliter::Parse(); `text` holds no terminator.
    bool Parse(std::string_view text) noexcept;

    /// The item at hand, for as long as nothing is parsed; nothing when there is none.
    std::optional<std::string_view> Item() const {
        if (taken == items) {
            return std::nullopt;
        }
        return taken < lengths.size() ? std::string_view(next, lengths[taken])
                                      : std::string_view(next);
    }
    /// Goes behind `item`, which is the one at hand.
    void Skip(std::string_view item) {
        next += item.size() + 1;
        ++taken;
    }

    struct Release {
        void operator()(char* block) const { std::free(block); }
    };

    const char separator;
    std::unique_ptr<char, Release> buffer;
    const char* next = nullptr;  // the item at hand
    std::size_t taken = 0;       // items before it
    std::size_t items = 0;
    // Of the items that GetValueMask() knows, so that they need not be measured again.
    std::array<std::size_t, 32> lengths;

    void Clear() {
        buffer.reset();
        next = nullptr;
        taken = 0;
        items = 0;
    }
};

}  // namespace FrameUtil
