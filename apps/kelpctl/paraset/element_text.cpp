#include "kelpctl/paraset/element_text.h"

#include <algorithm>
#include <cstdint>
#include <iomanip>
#include <iterator>
#include <limits>
#include <optional>

#include "kelp/asn1.h"
#include "kelpctl/paraset/types.h"
#include "support/json_write.h"
#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

constexpr int kBoolean = 1;
constexpr std::size_t kMostShown = 60;     // octets of a text
constexpr std::size_t kMostShownHex = 20;  // of others
constexpr std::size_t kMostIndented = 16;

const char* UniversalName(std::uint64_t number) {
    switch (number) {
        case 0:
            return "end of contents";
        case 1:
            return "BOOLEAN";
        case 2:
            return "INTEGER";
        case 3:
            return "BIT STRING";
        case 4:
            return "OCTET STRING";
        case 5:
            return "NULL";
        case 6:
            return "OBJECT IDENTIFIER";
        case 9:
            return "REAL";
        case 10:
            return "ENUMERATED";
        case 12:
            return "UTF8String";
        case 16:
            return "SEQUENCE";
        case 17:
            return "SET";
        default:
            return nullptr;
    }
}

// The codec's type of a scalar: described, or universal.
int ScalarType(const WalkedElement& element) {
    if (element.opened) {
        return -1;
    }
    return element.match.type >= 0              ? element.match.type
           : (element.header.first & 0xe0) == 0 ? static_cast<int>(element.header.first)
                                                : -1;
}

std::optional<std::int64_t> IntegerOf(std::string_view contents) {
    if (contents.empty() || contents.size() > 8) {
        return std::nullopt;
    }
    std::uint64_t value = (static_cast<unsigned char>(contents[0]) & 0x80) != 0 ? ~0ULL : 0;
    for (const char octet : contents) {
        value = value << 8 | static_cast<unsigned char>(octet);
    }
    return static_cast<std::int64_t>(value);
}

std::string HexOf(std::string_view contents) {
    std::string text;
    for (const char octet : contents.substr(0, kMostShownHex)) {
        text += (text.empty() ? "" : " ") + app::HexText({&octet, 1});
    }
    return text + (contents.size() > kMostShownHex ? " ..." : "");
}

std::string TextOf(std::string_view contents) {
    if (app::InvalidUtf8At(contents) != std::string_view::npos) {
        return HexOf(contents);
    }
    std::size_t shown = 0;
    while (shown < std::min(contents.size(), kMostShown)) {
        shown += app::FirstUtf8(contents.substr(shown)).bytes;
    }
    return '"' + app::ShowText(contents.substr(0, shown)) + '"' +
           (shown < contents.size() ? "..." : "");
}

std::string RealOf(std::string_view contents) {
    AsnReal value;
    try {
        AsnReader reader(contents.data(), contents.size());
        value.BDecContent(reader);
    } catch (const CSM_Exception&) {
        return HexOf(contents);
    }
    return app::DoubleText(value);
}

}  // namespace

std::string TextOfIdentifier(const BerHeader& header) {
    const char first = static_cast<char>(header.first);
    const std::string number = std::to_string(header.number);
    const std::string hex = app::HexText({&first, 1}) + ' ';
    switch (header.first >> 6) {
        case 0: {
            const char* name = UniversalName(header.number);
            return hex + (name != nullptr ? name : "[UNIVERSAL " + number + ']');
        }
        case 1:
            return hex + "[APPLICATION " + number + ']';
        case 2:
            return hex + '[' + number + ']';
        default:
            return hex + "[PRIVATE " + number + ']';
    }
}

std::string TextOfValue(const WalkedElement& element) {
    const std::string_view contents = element.contents;
    switch (ScalarType(element)) {
        case kBoolean:
            return contents.size() == 1 ? (contents[0] != 0 ? "true" : "false") : HexOf(contents);
        case codec_type::kInteger: {
            const auto value = IntegerOf(contents);
            return value ? std::to_string(*value) : HexOf(contents);
        }
        case codec_type::kString:
            return TextOf(contents);
        case codec_type::kReal:
            return RealOf(contents);
        default:
            return element.opened ? "" : HexOf(contents);
    }
}

bool FitsInteger32(const WalkedElement& element) {
    if (ScalarType(element) != codec_type::kInteger) {
        return true;
    }
    const auto value = IntegerOf(element.contents);
    return !value || (*value >= std::numeric_limits<std::int32_t>::min() &&
                      *value <= std::numeric_limits<std::int32_t>::max());
}

void PrintElement(const WalkedElement& element, std::ostream& out) {
    const BerHeader& header = element.header;
    const std::string size = std::to_string(header.octets) + '+' +
                             (header.indefinite ? "?" : std::to_string(header.contents));
    out << std::setw(8) << element.offset << std::setw(4) << element.depth << std::setw(11) << size
        << "  " << std::string(2 * std::min(element.depth, kMostIndented), ' ');
    if (!element.match.name.empty()) {
        out << app::ShowText(element.match.name) << ": ";
    }
    out << TextOfIdentifier(header);
    const std::string value = TextOfValue(element);
    out << (value.empty() ? "" : " ") << value << (element.match.read ? "" : "  (not read)")
        << '\n';
}

}  // namespace kelpctl
