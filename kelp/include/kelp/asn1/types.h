// kelp/asn1/types.h - the base of everything that can be encoded, and the scalars.
//
// Thread rule: thread-compatible.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "kelp/asn1/ber.h"
#include "kelp/block_text.h"
#include "kelp/blocks.h"
#include "kelp/export.h"

namespace kelp::asn1 {
// The shape that printed lists and records share.
KELP_API void PrintIndent(std::ostream& out, int indent);
KELP_API void PrintOpen(std::ostream& out, std::size_t elements);
KELP_API void PrintClose(std::ostream& out, int indent);
}  // namespace kelp::asn1

/// A value with an ASN.1 type. Objects made with `new` live in pooled blocks.
class KELP_API AsnType : public kelp::BlockObject {
  public:
    virtual ~AsnType();

    /// The universal identifier that elements of this type are written with.
    virtual AsnIdentifier Identifier() const = 0;
    /// Whether an element with this identifier can be read into this type.
    virtual bool Accepts(AsnIdentifier identifier) const { return identifier == Identifier(); }
    /// The source unit that failures name.
    virtual const char* Unit() const { return "asn1"; }

    /// Back to the state after construction.
    virtual void Clear() = 0;
    /// A deep copy.
    virtual std::unique_ptr<AsnType> Clone() const = 0;
    /// Makes this object a deep copy of `other`, which is of the same class.
    virtual void CopyFrom(const AsnType& other) = 0;

    /// Writes the whole element: identifier, length, contents. Throws CSM_Exception
    /// "Too Long" above the buffer's limit.
    void BEnc(AsnBuffer& out) const { BEncDefLenImpl(out, Identifier()); }
    /// The same with another identifier, for implicit tags.
    void BEncDefLenImpl(AsnBuffer& out, AsnIdentifier identifier) const {
        const std::size_t behind = out.size();
        BEncContent(out);
        out.PrependHeader(identifier, out.size() - behind);
    }
    /// Reads one whole element. Throws CSM_Exception: "Unexpected Tag" when another
    /// type's element is there; what was read until a failure stays in this object.
    void BDec(AsnReader& in);
    /// The same when the identifier has been read and accepted.
    void BDecElement(AsnReader& in, AsnIdentifier identifier) {
        const AsnReader::Scope outer = in.Enter(identifier, Unit());
        BDecForm(in, identifier);
        in.Leave(outer);
    }

    /// Writes the contents only.
    virtual void BEncContent(AsnBuffer& out) const = 0;
    /// Reads contents up to the end of what the reader is narrowed to. Lists and
    /// records add to what they hold; call Clear() for a fresh value.
    virtual void BDecContent(AsnReader& in) = 0;

    /// Human-readable text over one or several lines; nested values are indented by
    /// two blanks a level from `indent` on. Nothing in it is meant to be parsed.
    virtual void Print(std::ostream& out, int indent = 0) const = 0;

  protected:
    AsnType() = default;
    AsnType(const AsnType&) = default;
    AsnType& operator=(const AsnType&) = default;

    /// Reads contents whose identifier decides their form (octet strings may be
    /// constructed of segments).
    virtual void BDecForm(AsnReader& in, AsnIdentifier identifier);
};

/// Gives class Self, over Base, the operations that copy it.
template <class Self, class Base>
class AsnCopyable : public Base {
  public:
    std::unique_ptr<AsnType> Clone() const override {
        return std::make_unique<Self>(static_cast<const Self&>(*this));
    }
    void CopyFrom(const AsnType& other) override {
        static_cast<Self&>(*this) = static_cast<const Self&>(other);
    }
};

/// BOOLEAN. Any non-zero octet reads as true; true is written as 0xFF.
class KELP_API AsnBool final : public AsnCopyable<AsnBool, AsnType> {
  public:
    AsnBool(bool value = false) noexcept : value_(value) {}  // NOLINT(google-explicit-constructor)
    operator bool() const { return value_; }                 // NOLINT(google-explicit-constructor)

    AsnIdentifier Identifier() const override { return kAsnBoolean; }
    void Clear() override { value_ = false; }
    void BEncContent(AsnBuffer& out) const override;
    void BDecContent(AsnReader& in) override;
    void Print(std::ostream& out, int indent = 0) const override;

  private:
    bool value_;
};

/// INTEGER of 64 bits, signed. Contents of 1 to 8 octets are read, also when they are
/// longer than they need be; more do not fit and fail with "Bad Integer".
class KELP_API AsnInt final : public AsnCopyable<AsnInt, AsnType> {
  public:
    AsnInt(std::int64_t value = 0) noexcept
        : value_(value) {}                            // NOLINT(google-explicit-constructor)
    operator std::int64_t() const { return value_; }  // NOLINT(google-explicit-constructor)

    AsnIdentifier Identifier() const override { return kAsnInteger; }
    void Clear() override { value_ = 0; }
    void BEncContent(AsnBuffer& out) const override;
    void BDecContent(AsnReader& in) override;
    void Print(std::ostream& out, int indent = 0) const override;

  private:
    std::int64_t value_;
};

/// REAL. Written in X.690's binary form, base 2, with an odd mantissa, or as one of
/// the special values; read in every form: binary with base 2, 8 or 16, any scale and
/// exponent length, decimal NR1, NR2 and NR3, and the special values. What a double
/// cannot hold exactly is rounded to nearest even, overflows to infinity or
/// underflows to zero.
class KELP_API AsnReal final : public AsnCopyable<AsnReal, AsnType> {
  public:
    AsnReal(double value = 0.0) noexcept : value_(value) {}  // NOLINT(google-explicit-constructor)
    operator double() const { return value_; }               // NOLINT(google-explicit-constructor)

    /// The most octets that contents are written with.
    static constexpr std::size_t kMaxOctets = 10;
    /// Writes the contents to `out` and returns how many octets they are.
    std::size_t Contents(unsigned char (&out)[kMaxOctets]) const;

    AsnIdentifier Identifier() const override { return kAsnReal; }
    void Clear() override { value_ = 0.0; }
    void BEncContent(AsnBuffer& out) const override;
    void BDecContent(AsnReader& in) override;
    void Print(std::ostream& out, int indent = 0) const override;

  private:
    double value_;
};

/// OCTET STRING. Any octets, zeros included. Read in primitive or constructed form. The
/// octets live in a pooled block; only editing them in place costs a std::string.
class KELP_API AsnOcts final : public AsnCopyable<AsnOcts, AsnType> {
  public:
    AsnOcts() noexcept = default;
    AsnOcts(const std::string& value) : text_(value) {}  // NOLINT(google-explicit-constructor)
    AsnOcts(std::string_view value) : text_(value) {}    // NOLINT(google-explicit-constructor)
    AsnOcts(const char* value) : text_(value) {}         // NOLINT(google-explicit-constructor)
    AsnOcts(const AsnOcts& other) : AsnCopyable(other), text_(other.view()) {}
    AsnOcts(AsnOcts&& other) noexcept = default;
    ~AsnOcts() override = default;

    AsnOcts& operator=(const AsnOcts& other) { return *this = other.view(); }
    AsnOcts& operator=(AsnOcts&& other) noexcept = default;
    AsnOcts& operator=(const std::string& value) { return *this = std::string_view(value); }
    AsnOcts& operator=(const char* value) { return *this = std::string_view(value); }
    AsnOcts& operator=(std::string_view value) {
        text_.assign(value);
        edited_.reset();
        return *this;
    }

    /// The octets, until they next change.
    std::string_view view() const { return edited_ != nullptr ? *edited_ : text_.view(); }
    /// A copy of the octets.
    std::string str() const { return std::string(view()); }
    /// The octets for editing; the reference is good until the next assignment, Clear()
    /// or decoding.
    std::string& str();
    operator std::string() const { return str(); }  // NOLINT(google-explicit-constructor)
    bool empty() const { return view().empty(); }
    std::size_t size() const { return view().size(); }

    AsnIdentifier Identifier() const override { return kAsnOctetString; }
    bool Accepts(AsnIdentifier identifier) const override {
        return (identifier & ~kAsnConstructed) == kAsnOctetString;
    }
    void Clear() override {
        text_.clear();
        edited_.reset();
    }
    void BEncContent(AsnBuffer& out) const override;
    void BDecContent(AsnReader& in) override;
    void Print(std::ostream& out, int indent = 0) const override;

  protected:
    void BDecForm(AsnReader& in, AsnIdentifier identifier) override;

  private:
    kelp::BlockText text_;
    std::unique_ptr<std::string> edited_;  // what str() gave out, in place of text_
};
