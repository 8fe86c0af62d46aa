#include "message/trailer.h"

#include <algorithm>
#include <cstring>

#include "kelp/message.h"

namespace kelp::message {
namespace {

constexpr unsigned char kMark[] = {'K', 'T', 'L', 'R'};
constexpr std::size_t kFixed = sizeof kMark + 2;
constexpr std::size_t kEntryFixed = 3;
constexpr unsigned char kToken = 'T';
constexpr unsigned char kAddress = 'A';
constexpr std::size_t kMaxAddress = 64;

std::size_t Read16(const unsigned char* at) {
    return at[0] | std::size_t{at[1]} << 8;
}

void Write16(unsigned char* at, std::size_t value) {
    at[0] = static_cast<unsigned char>(value);
    at[1] = static_cast<unsigned char>(value >> 8);
}

bool HasZero(std::span<const unsigned char> value) {
    return std::find(value.begin(), value.end(), 0) != value.end();
}

}  // namespace

std::size_t TrailerOctets(std::size_t token_octets) {
    return kFixed + kEntryFixed + token_octets;
}

std::size_t WriteTrailer(unsigned char* to, std::string_view token) {
    std::memcpy(to, kMark, sizeof kMark);
    Write16(to + sizeof kMark, kEntryFixed + token.size());
    to[kFixed] = kToken;
    Write16(to + kFixed + 1, token.size());
    std::memcpy(to + kFixed + kEntryFixed, token.data(), token.size());
    return kFixed + kEntryFixed;
}

const char* ParseTrailer(std::span<const unsigned char> octets, TrailerView& view) {
    view = TrailerView();
    if (octets.empty()) {
        return nullptr;
    }
    if (octets.size() < kFixed || std::memcmp(octets.data(), kMark, sizeof kMark) != 0) {
        return "octets behind the body are no trailer";
    }
    if (Read16(octets.data() + sizeof kMark) != octets.size() - kFixed) {
        return "the trailer's length is not what is left of the frame";
    }
    if (octets.size() == kFixed) {
        return "the trailer is empty";
    }
    bool have_token = false;
    bool have_address = false;
    for (std::size_t at = kFixed; at < octets.size();) {
        if (octets.size() - at < kEntryFixed) {
            return "the trailer ends inside an entry";
        }
        const unsigned char tag = octets[at];
        const std::size_t length = Read16(octets.data() + at + 1);
        at += kEntryFixed;
        if (length > octets.size() - at) {
            return "a trailer's entry is longer than the trailer";
        }
        bool& seen = tag == kToken ? have_token : have_address;
        const std::size_t longest = tag == kToken ? KELP_MSG_MAX_TOKEN : kMaxAddress;
        if (tag != kToken && tag != kAddress) {
            return "a trailer's entry has an unknown tag";
        }
        if (seen) {
            return "a trailer's entry is there twice";
        }
        if (length == 0 || length > longest || HasZero(octets.subspan(at, length))) {
            return "a trailer's entry has no acceptable value";
        }
        seen = true;
        if (tag == kToken) {
            view.token_at = at;
            view.token_octets = length;
        }
        at += length;
    }
    return nullptr;
}

}  // namespace kelp::message
