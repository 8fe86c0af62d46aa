// Lists: the first byte is the separator, the second the capacity of a buffer, the rest the
// text. All ways to take items agree, and what a linker joins of them with '|' comes back
// unless it holds backslashes.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "frameutil/strutil.h"
#include "require.h"

namespace {

std::vector<std::string> Items(FrameUtil::StrSpliter& items) {
    std::vector<std::string> all;
    while (items.HasNext()) {
        items >> all.emplace_back();
    }
    return all;
}

void TakeIntoBuffer(FrameUtil::StrSpliter& items, const std::string& item, std::size_t shown) {
    // Exactly as large as it shows: a byte more is found by the sanitizer.
    std::vector<char> buffer(shown + 1, 'x');
    buffer[shown] = '\0';
    items >> buffer.data();
    Require(std::string(buffer.data()) == item.substr(0, shown - 1));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const auto separator = static_cast<char>(data[0]);
    const std::size_t shown = 1U + data[1];
    std::string text(reinterpret_cast<const char*>(data + 2), size - 2);
    text.resize(std::min(text.find('\0'), text.size()));

    FrameUtil::StrSpliter splitter(text.c_str(), separator);
    const unsigned int mask = splitter.GetValueMask();
    const std::vector<std::string> items = Items(splitter);
    Require(!items.empty() && !splitter.HasError());
    const auto separators = static_cast<std::size_t>(
        separator == '\0' ? 0 : std::count(text.begin(), text.end(), separator));
    Require(items.size() <= separators + 1);
    for (std::size_t i = 0; i < 32; ++i) {
        Require((mask >> i & 1) == (i < items.size() && !items[i].empty() ? 1U : 0U));
    }

    Require(splitter.Parse(text.c_str()));
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i % 3 == 0) {
            TakeIntoBuffer(splitter, items[i], shown);
        } else if (i % 3 == 1) {
            long number = 0;
            splitter >> number;
        } else {
            unsigned long number = 0;
            splitter >> number;
        }
    }
    Require(!splitter.HasNext());

    FrameUtil::StrLinker linker('|');
    bool comes_back = items.size() <= 256;
    for (const std::string& item : items) {
        linker << item.c_str();
        comes_back = comes_back && item.size() < 256 && item.find('\\') == std::string::npos;
    }
    if (comes_back) {
        FrameUtil::StrSpliter again(linker(), '|');
        Require(Items(again) == items);
    }
    return 0;
}
