// kelp/asn1/list.h - lists of values: AsnList holds them, AsnSeqOf codes them.
//
// Elements are held by value in stretches that never move, so a reference that
// Append() returned stays good until the list is cleared or destroyed.
//
//     AsnSeqOf<AsnOcts> names;
//     names.Append() = "a";
//     for (const AsnOcts& name : names) use(name.str());
//
// Thread rule: thread-compatible.
#pragma once

#include <cstddef>
#include <ostream>
#include <utility>

#include "kelp/asn1/elements.h"
#include "kelp/asn1/types.h"

template <class T>
class AsnList : public AsnType {
  public:
    using iterator = typename AsnElements<T>::iterator;
    using const_iterator = typename AsnElements<T>::const_iterator;

    /// A new element at the end.
    T& Append() { return elements_.Append(); }
    T& Append(T value) { return elements_.Append(std::move(value)); }

    /// Makes room for `count` more elements at once: worth a call when the number is
    /// known.
    void Reserve(std::size_t count) { elements_.Reserve(count); }

    std::size_t Count() const { return elements_.Count(); }
    bool empty() const { return elements_.empty(); }

    /// The element at zero-based position `n`, or null when there is none.
    T* At(std::size_t n) { return elements_.At(n); }
    const T* At(std::size_t n) const { return elements_.At(n); }
    /// REQUIRES: n < Count().
    T& operator[](std::size_t n) { return *elements_.At(n); }
    const T& operator[](std::size_t n) const { return *elements_.At(n); }

    iterator begin() { return elements_.begin(); }
    iterator end() { return elements_.end(); }
    const_iterator begin() const { return elements_.begin(); }
    const_iterator end() const { return elements_.end(); }

    void Clear() override { elements_.Clear(); }

  protected:
    AsnElements<T> elements_;
};

/// SEQUENCE OF T. A list with a name of its own is AsnCopyable over it.
template <class T>
class AsnSeqOf : public AsnCopyable<AsnSeqOf<T>, AsnList<T>> {
  public:
    AsnIdentifier Identifier() const override { return kAsnSequence; }

    void BEncContent(AsnBuffer& out) const override {
        this->elements_.EachFromBehind([&out](const T& element) {
            const std::size_t behind = out.size();
            element.T::BEncContent(out);
            out.PrependHeader(element.T::Identifier(), out.size() - behind);
        });
    }

    /// Appends an element for each one found. An element of another type fails with
    /// "Unexpected Tag"; the elements before it stay.
    void BDecContent(AsnReader& in) override {
        while (!in.AtEnd()) {
            const std::size_t start = in.Offset();
            const AsnIdentifier identifier = in.ReadIdentifier();
            if (!Expected().T::Accepts(identifier)) {
                in.FailAt("Unexpected Tag", start);
            }
            this->elements_.AppendWithRoomFor(in.RoomForElements(this->Count()))
                .BDecElement(in, identifier);
        }
    }

    void Print(std::ostream& out, int indent = 0) const override {
        kelp::asn1::PrintOpen(out, this->Count());
        for (const T& element : *this) {
            kelp::asn1::PrintIndent(out, indent + 1);
            element.Print(out, indent + 1);
        }
        kelp::asn1::PrintClose(out, indent);
    }

  private:
    static const T& Expected() {
        static const T expected{};
        return expected;
    }
};

/// The runtime's list of unsigned integers.
class ASNULList final : public AsnCopyable<ASNULList, AsnSeqOf<AsnInt>> {};
