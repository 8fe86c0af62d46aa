#include "kelp/asn1/ber.h"

#include <algorithm>
#include <cstring>
#include <utility>

std::string CSM_Exception::Describe() const {
    return std::string(text_) + " at offset " + std::to_string(offset_) + " (" + unit_ + ")";
}

AsnBuffer::AsnBuffer(AsnBuffer&& other) noexcept
    : storage_(std::move(other.storage_)),
      floor_(std::exchange(other.floor_, nullptr)),
      front_(std::exchange(other.front_, nullptr)),
      end_(std::exchange(other.end_, nullptr)),
      limit_(other.limit_) {}

AsnBuffer& AsnBuffer::operator=(AsnBuffer&& other) noexcept {
    storage_ = std::move(other.storage_);
    floor_ = std::exchange(other.floor_, nullptr);
    front_ = std::exchange(other.front_, nullptr);
    end_ = std::exchange(other.end_, nullptr);
    limit_ = other.limit_;
    return *this;
}

void AsnBuffer::Clear(std::size_t limit_octets) {
    limit_ = limit_octets;
    front_ = end_;
    const auto capacity = static_cast<std::size_t>(end_ - storage_.get());
    floor_ = end_ - std::min(capacity, limit_);
}

void AsnBuffer::Grow(std::size_t count) {
    const std::size_t used = size();
    if (count > limit_ || used > limit_ - count) {
        throw CSM_Exception("Too Long", "asn1", used);
    }
    const auto capacity = static_cast<std::size_t>(end_ - storage_.get());
    const std::size_t wanted =
        std::min(std::max({used + count, capacity * 2, std::size_t{512}}), limit_);
    std::unique_ptr<unsigned char[]> larger(new unsigned char[wanted]);
    unsigned char* const end = larger.get() + wanted;
    if (used != 0) {
        std::memcpy(end - used, front_, used);
    }
    storage_ = std::move(larger);
    floor_ = storage_.get();
    end_ = end;
    front_ = end - used;
}

void AsnBuffer::PrependLongHeader(AsnIdentifier identifier, std::size_t content) {
    unsigned char header[2 + sizeof(std::size_t) + 6];
    unsigned char* at = header + sizeof header;
    if (content < 0x80) {
        *--at = static_cast<unsigned char>(content);
    } else {
        unsigned char octets = 0;
        for (std::size_t rest = content; rest != 0; rest >>= 8, ++octets) {
            *--at = static_cast<unsigned char>(rest);
        }
        *--at = static_cast<unsigned char>(0x80 | octets);
    }
    if (identifier >= 0x100) {
        AsnIdentifier number = identifier >> 8;
        *--at = static_cast<unsigned char>(number & 0x7f);
        while ((number >>= 7) != 0) {
            *--at = static_cast<unsigned char>(0x80 | (number & 0x7f));
        }
    }
    *--at = static_cast<unsigned char>(identifier);
    const auto length = static_cast<std::size_t>(header + sizeof header - at);
    std::memcpy(Prepend(length), at, length);
}

void AsnReader::Fail(const char* text) const {
    FailAt(text, Offset());
}

void AsnReader::FailAt(const char* text, std::size_t offset) const {
    throw CSM_Exception(text, unit_, offset);
}

bool AsnReader::BDecEoc() {
    if (Left() < 2 || at_[0] != 0 || at_[1] != 0) {
        return false;
    }
    at_ += 2;
    // From here on the contents are definite and empty, so that asking again does not
    // consume the end-of-contents octets of the element around this one.
    end_ = at_;
    indefinite_ = false;
    return true;
}

AsnIdentifier AsnReader::ReadLongIdentifier() {
    const std::size_t start = Offset();
    const AsnIdentifier first = *at_++;
    std::uint64_t number = 0;
    for (unsigned octets = 0;; ++octets) {
        if (at_ == end_) {
            Fail("Unexpected End");
        }
        const unsigned char octet = *at_++;
        if ((octets == 0 && octet == 0x80) || number > (UINT32_MAX >> 7)) {
            FailAt("Bad Tag", start);
        }
        number = number << 7 | (octet & 0x7f);
        if ((octet & 0x80) == 0) {
            break;
        }
    }
    if (number < 31) {
        FailAt("Bad Tag", start);
    }
    return first | number << 8;
}

AsnReader::Length AsnReader::ReadLongLength() {
    if (at_ == end_) {
        Fail("Unexpected End");
    }
    const std::size_t start = Offset();
    unsigned octets = *at_++ & 0x7f;
    if (octets == 0) {
        return {0, true};
    }
    if (octets == 0x7f) {
        FailAt("Bad Length", start);
    }
    std::uint64_t length = 0;
    for (; octets != 0; --octets) {
        if (at_ == end_) {
            Fail("Unexpected End");
        }
        if (length > (UINT64_MAX >> 8)) {
            FailAt("Length Beyond Input", start);
        }
        length = length << 8 | *at_++;
    }
    if (length > Left()) {
        FailAt("Length Beyond Input", start);
    }
    return {static_cast<std::size_t>(length), false};
}
