#include "kelpctl/paraset/ber_header.h"

namespace kelpctl {
namespace {

constexpr const char* kEnds = "the input ends inside an element's header";

unsigned OctetAt(std::string_view octets, std::size_t at) {
    return static_cast<unsigned char>(octets[at]);
}

const char* ReadIdentifier(std::string_view octets, BerHeader& header) {
    if (octets.empty()) {
        return kEnds;
    }
    header.first = OctetAt(octets, 0);
    header.number = header.first & 0x1f;
    header.octets = 1;
    if (header.number != 0x1f) {
        return nullptr;
    }
    header.number = 0;
    for (unsigned octet = 0x80; (octet & 0x80) != 0; ++header.octets) {
        if (header.octets == octets.size()) {
            return kEnds;
        }
        if (header.octets > 4) {
            return "the tag number has more than four octets";
        }
        octet = OctetAt(octets, header.octets);
        header.number = header.number << 7 | (octet & 0x7f);
    }
    return nullptr;
}

}  // namespace

const char* ReadBerHeader(std::string_view octets, BerHeader& header) {
    header = {};
    if (const char* reason = ReadIdentifier(octets, header)) {
        return reason;
    }
    if (header.octets == octets.size()) {
        return kEnds;
    }
    const unsigned first = OctetAt(octets, header.octets++);
    std::uint64_t length = first;
    if (first == 0x80) {
        header.indefinite = true;
        length = 0;
        if (!header.Constructed()) {
            return "the length of a primitive element is indefinite";
        }
    } else if (first > 0x80) {
        const std::size_t count = first & 0x7f;
        length = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (header.octets == octets.size()) {
                return kEnds;
            }
            if (length >> 56 != 0) {
                return "the length has more than eight octets";
            }
            length = length << 8 | OctetAt(octets, header.octets++);
        }
    }
    if (length > octets.size() - header.octets) {
        return "the length exceeds the input";
    }
    header.contents = static_cast<std::size_t>(length);
    return nullptr;
}

}  // namespace kelpctl
