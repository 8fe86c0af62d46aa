// Identifiers: what the parser makes of a text is what the table of states says, and what
// it accepts is built again from its pairs.

#include <algorithm>
#include <cstdint>
#include <string>

#include "frameutil/strutil.h"
#include "require.h"
#include "support/uid_model.h"

namespace {

// A key that the factory ignores.
bool IsNumber(const std::string& key) {
    const std::size_t sign = key[0] == '+' || key[0] == '-' ? 1 : 0;
    return key.find_first_not_of("0123456789", sign) == std::string::npos;
}

// A value that the factory escapes; a longer one it writes as it stands.
bool IsEscaped(const std::string& value) {
    const auto counted = std::count_if(value.begin(), value.end(),
                                       [](char c) { return c == ',' || c == '=' || c == '\\'; });
    return value.size() + static_cast<std::size_t>(counted) <= 255;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    text.resize(std::min(text.find('\0'), text.size()));
    FrameUtil::StrUIDParser parser;
    FrameUtil::UIDFault fault;
    const bool parsed = parser.Parse(text.c_str(), &fault);
    Require(parsed == (*fault.reason == '\0') && fault.offset <= text.size());
    FrameUtil::StrUIDParser::GetParentFDN(text.c_str());
    if (std::any_of(text.begin(), text.end(), [](char c) { return c < 0x20 || c > 0x7e; })) {
        Require(!parsed && !parser.Next());
        return 0;
    }
    const support::UidModel model(text);
    Require(parsed == model.done);
    FrameUtil::StrUIDFactory again;
    bool buildable = true;
    for (const auto& [key, value] : model.pairs) {
        Require(parser.Next() && parser.Type() == key && parser.StrValue() == value.value_or(""));
        std::string found;
        Require(parser.GetValue(found, key.c_str(), 0) && found == model.Find(key, 0));
        FrameUtil::StrSpliter items;
        Require(parser.GetValue(items, key.c_str(), 0) && items.HasNext());
        again.Append(key.c_str(), parser.StrValue().c_str());
        buildable = buildable && !IsNumber(key) && IsEscaped(parser.StrValue());
    }
    Require(!parser.Next());
    if (parsed && buildable) {
        FrameUtil::StrUIDParser other;
        Require(other.Parse(again.GetStr().c_str()));
        for (const auto& [key, value] : model.pairs) {
            Require(other.Next() && other.Type() == key && other.StrValue() == *value);
        }
        Require(!other.Next());
    }
    return 0;
}
