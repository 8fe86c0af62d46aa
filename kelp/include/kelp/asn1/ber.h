// kelp/asn1/ber.h - reading and writing BER's identifiers, lengths and contents.
//
// Thread rule: thread-compatible.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string>

#include "kelp/export.h"

/// What the runtime throws on input that is not a valid element of the expected type,
/// and on output that would exceed its limit.
class KELP_API CSM_Exception : public std::exception {
  public:
    /// `text` and `unit` are string literals; `offset` counts octets from the start of
    /// the input (of the output's end, when writing).
    CSM_Exception(const char* text, const char* unit, std::size_t offset) noexcept
        : text_(text), unit_(unit), offset_(offset) {}

    /// The text alone, for instance "Unexpected Tag".
    const char* what() const noexcept override { return text_; }
    /// The source unit whose type was being read, for instance "paraset".
    const char* Unit() const noexcept { return unit_; }
    std::size_t Offset() const noexcept { return offset_; }
    /// "Unexpected Tag at offset 12 (paraset)".
    std::string Describe() const;

  private:
    const char* text_;
    const char* unit_;
    std::size_t offset_;
};

/// An identifier: its first octet and, for tag numbers from 31, the number in the bits
/// above. Equal identifiers compare equal as numbers.
using AsnIdentifier = std::uint64_t;

inline constexpr AsnIdentifier kAsnBoolean = 0x01;
inline constexpr AsnIdentifier kAsnInteger = 0x02;
inline constexpr AsnIdentifier kAsnOctetString = 0x04;
inline constexpr AsnIdentifier kAsnReal = 0x09;
inline constexpr AsnIdentifier kAsnSequence = 0x30;
inline constexpr AsnIdentifier kAsnConstructed = 0x20;
inline constexpr AsnIdentifier kAsnContext = 0x80;

/// The identifier of context-specific tag `number` (0 or more).
constexpr AsnIdentifier AsnContextIdentifier(int number, bool constructed) {
    const AsnIdentifier form = kAsnContext | (constructed ? kAsnConstructed : 0);
    return number < 31 ? form | static_cast<AsnIdentifier>(number)
                       : form | 0x1f | static_cast<AsnIdentifier>(number) << 8;
}

/// Octets written back to front: an element's contents first, then its header, so that
/// every length is known when it is written and nothing is moved or measured twice.
class KELP_API AsnBuffer {
  public:
    static constexpr std::size_t kDefaultLimit = std::size_t{64} << 20;

    AsnBuffer() noexcept = default;
    AsnBuffer(AsnBuffer&& other) noexcept;
    AsnBuffer& operator=(AsnBuffer&& other) noexcept;

    const unsigned char* data() const { return front_; }
    std::size_t size() const { return static_cast<std::size_t>(end_ - front_); }

    /// Drops the contents and keeps the memory; the limit becomes `limit_octets`.
    void Clear(std::size_t limit_octets = kDefaultLimit);

    /// Room for `count` octets in front of what is there; the caller writes all of
    /// them. Throws CSM_Exception "Too Long" above the limit.
    unsigned char* Prepend(std::size_t count) {
        if (static_cast<std::size_t>(front_ - floor_) < count) {
            Grow(count);
        }
        return front_ -= count;
    }

    /// An identifier and a definite length of `content` octets in its shortest form.
    void PrependHeader(AsnIdentifier identifier, std::size_t content) {
        if (content < 0x80 && identifier < 0x100) {
            unsigned char* at = Prepend(2);
            at[0] = static_cast<unsigned char>(identifier);
            at[1] = static_cast<unsigned char>(content);
        } else {
            PrependLongHeader(identifier, content);
        }
    }

  private:
    void Grow(std::size_t count);
    void PrependLongHeader(AsnIdentifier identifier, std::size_t content);

    std::unique_ptr<unsigned char[]> storage_;
    unsigned char* floor_ = nullptr;  // the lowest octet that may be used
    unsigned char* front_ = nullptr;
    unsigned char* end_ = nullptr;
    std::size_t limit_ = kDefaultLimit;
};

/// A bounded walk over encoded octets. Every failure throws CSM_Exception; after that
/// the reader is not used again.
class KELP_API AsnReader {
  public:
    static constexpr unsigned kMaxDepth = 128;

    struct Length {
        std::size_t octets;
        bool indefinite;
    };
    /// What Enter() leaves behind for Leave().
    struct Scope {
        const unsigned char* end;
        bool indefinite;
        const char* unit;
    };

    /// Reads `octets` octets at `data`, which must outlive the reader.
    AsnReader(const void* data, std::size_t octets) noexcept
        : begin_(static_cast<const unsigned char*>(data)),
          at_(begin_),
          end_(begin_ + octets),
          input_end_(end_) {}

    std::size_t Offset() const { return static_cast<std::size_t>(at_ - begin_); }

    /// Whether the contents being read are used up. An indefinite length ends at its
    /// end-of-contents octets, which are consumed, or where the whole input ends; where
    /// a definite length around it ends first, one of the two lies, and this fails.
    bool AtEnd() {
        if (at_ != end_) {
            return indefinite_ && BDecEoc();
        }
        if (indefinite_ && end_ != input_end_) {
            Fail("Unexpected End");
        }
        return true;
    }

    /// Reads an identifier, of one octet or of several.
    AsnIdentifier ReadIdentifier() {
        if (at_ == end_) {
            Fail("Unexpected End");
        }
        const unsigned char first = *at_;
        if ((first & 0x1f) != 0x1f) {
            ++at_;
            return first;
        }
        return ReadLongIdentifier();
    }

    /// For how many elements a list of `count` makes room when the identifier of one more
    /// has just been read: for no more than the octets left can hold, two each, and
    /// where an indefinite length may end much sooner, for half as many as there are.
    std::size_t RoomForElements(std::size_t count) const {
        const std::size_t most = (Left() + 1) / 2;
        return indefinite_ ? std::min(most, count / 2) : most;
    }

    /// Reads a length and checks a definite one against the octets that are left.
    Length ReadLength() {
        if (at_ != end_ && *at_ < 0x80) {
            const std::size_t octets = *at_++;
            if (octets > Left()) {
                Fail("Length Beyond Input");
            }
            return {octets, false};
        }
        return ReadLongLength();
    }

    /// Narrows the reader to the contents of the element whose identifier was just
    /// read; its length comes next. `unit` names the reading type's source in failures.
    Scope Enter(AsnIdentifier identifier, const char* unit) {
        const Scope outer{end_, indefinite_, unit_};
        unit_ = unit;
        const Length length = ReadLength();
        if (depth_ == kMaxDepth) {
            Fail("Too Deep");
        }
        if (length.indefinite && (identifier & kAsnConstructed) == 0) {
            Fail("Indefinite Primitive");
        }
        ++depth_;
        indefinite_ = length.indefinite;
        if (!length.indefinite) {
            end_ = at_ + length.octets;
        }
        return outer;
    }

    /// Widens the reader again; contents that were not used up are a failure.
    void Leave(const Scope& outer) {
        if (!AtEnd()) {
            Fail("Unexpected Tag");
        }
        --depth_;
        end_ = outer.end;
        indefinite_ = outer.indefinite;
        unit_ = outer.unit;
    }

    /// The rest of the contents being read, which are definite; consumes them.
    std::span<const unsigned char> TakeContent() {
        const std::span<const unsigned char> content(at_, end_);
        at_ = end_;
        return content;
    }

    /// Whether the contents being read are exactly one element of a one-octet identifier
    /// around one primitive element of a one-octet identifier, with definite lengths of one
    /// octet: what an explicitly tagged scalar mostly is. Then both identifiers, the outer
    /// one in the higher octet; else 0. Consumes nothing.
    unsigned PlainTagged() const {
        const std::size_t left = Left();
        if (indefinite_ || left < 4 || left > 0x81 || at_[1] != left - 2 || at_[3] != left - 4 ||
            depth_ + 2 > kMaxDepth) {
            return 0;
        }
        return static_cast<unsigned>(at_[0]) << 8 | at_[2];
    }
    /// Consumes both identifiers and lengths; the element's contents come next.
    /// REQUIRES: PlainTagged() was not 0.
    void SkipPlainTag() { at_ += 4; }

    /// The identifier that comes next, without consuming it.
    AsnIdentifier PeekIdentifier() {
        const unsigned char* here = at_;
        const AsnIdentifier identifier = ReadIdentifier();
        at_ = here;
        return identifier;
    }

    [[noreturn]] void Fail(const char* text) const;
    /// Fails as if found `octets` octets back, to blame an element's first octet.
    [[noreturn]] void FailAt(const char* text, std::size_t offset) const;

    const char* unit() const { return unit_; }
    void SetUnit(const char* unit) { unit_ = unit; }

  private:
    std::size_t Left() const { return static_cast<std::size_t>(end_ - at_); }
    bool BDecEoc();
    AsnIdentifier ReadLongIdentifier();
    Length ReadLongLength();

    const unsigned char* begin_;
    const unsigned char* at_;
    const unsigned char* end_;
    const unsigned char* input_end_;
    const char* unit_ = "asn1";
    unsigned depth_ = 0;
    bool indefinite_ = false;
};
