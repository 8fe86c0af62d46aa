#include "kelpd/http/chunks.h"

#include <algorithm>

#include "support/numbers.h"

namespace kelpd {
namespace {

constexpr unsigned kMostDigits = 15;  // more than any limit of a body has
constexpr std::size_t kMostSkipped = 4096;

bool IsControl(char c) {
    const auto octet = static_cast<unsigned char>(c);
    return (octet < 0x20 && c != '\t') || octet == 0x7F;
}

}  // namespace

ChunkReader::State ChunkReader::Feed(std::string_view& octets, std::string& body) {
    while (!octets.empty()) {
        if (at_ == At::kData) {
            const std::size_t count = std::min<std::uint64_t>(size_, octets.size());
            body.append(octets.substr(0, count));
            octets.remove_prefix(count);
            size_ -= count;
            at_ = size_ == 0 ? At::kDataCr : At::kData;
            continue;
        }
        const char c = octets.front();
        octets.remove_prefix(1);
        const State state = Take(c, body.size());
        if (state != State::kMore) {
            return state;
        }
    }
    return State::kMore;
}

ChunkReader::State ChunkReader::TakeSize(char c) {
    const int digit = app::HexDigit(c);
    if (digit >= 0) {
        size_ = size_ * 16 + static_cast<unsigned>(digit);
        return ++digits_ > kMostDigits ? State::kMalformed : State::kMore;
    }
    if (digits_ == 0 || (c != ';' && c != '\r')) {
        return State::kMalformed;
    }
    at_ = c == ';' ? At::kExtension : At::kSizeEnd;
    return State::kMore;
}

ChunkReader::State ChunkReader::Take(char c, std::size_t held) {
    const auto expect = [&](char wanted, At next) {
        at_ = next;
        return c == wanted ? State::kMore : State::kMalformed;
    };
    const auto skip = [&](At end) {
        at_ = c == '\r' ? end : at_;
        const bool good = c == '\r' || (!IsControl(c) && ++skipped_ <= kMostSkipped);
        return good ? State::kMore : State::kMalformed;
    };
    switch (at_) {
        case At::kSize:
            return TakeSize(c);
        case At::kExtension:
            return skip(At::kSizeEnd);
        case At::kSizeEnd:
            if (size_ > limit_ - held) {
                return c == '\n' ? State::kTooLarge : State::kMalformed;
            }
            return expect('\n', size_ == 0 ? At::kTrailer : At::kData);
        case At::kDataCr:
            return expect('\r', At::kDataEnd);
        case At::kDataEnd:
            digits_ = 0;
            return expect('\n', At::kSize);
        case At::kTrailer:
            if (c == ' ' || c == '\t') {
                return State::kMalformed;  // a line that goes on
            }
            at_ = At::kTrailerLine;
            return skip(At::kLastEnd);
        case At::kTrailerLine:
            return skip(At::kTrailerEnd);
        case At::kTrailerEnd:
            return expect('\n', At::kTrailer);
        case At::kLastEnd:
            return c == '\n' ? State::kDone : State::kMalformed;
        case At::kData:
            break;
    }
    return State::kMalformed;
}

}  // namespace kelpd
