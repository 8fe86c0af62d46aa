// kelp/asn1/sequence.h - records: classes whose fields are described to the runtime.
//
//     class Point final : public AsnCopyable<Point, AsnSequence> {
//       public:
//         AsnInt x;                    // mandatory: held by value
//         AsnOptional<AsnOcts> label;  // optional: an owning pointer, null when absent
//         const refl::CClassInfor& GetClassInfor() const override {
//             static const refl::CClassInfor infor = [] {
//                 Point shape;
//                 refl::CClassInfor described(shape, "Point", "geometry");
//                 described.AddAttribInfor(0, "x", shape.x);
//                 described.AddAttribInfor(1, "label", shape.label, 0);  // [0]
//                 return described;
//             }();
//             return infor;
//         }
//     };
//
// Thread rule: thread-compatible; descriptions are immutable once made.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "kelp/asn1/types.h"
#include "kelp/export.h"

class AsnSequence;

/// What the runtime sees of an optional field.
class KELP_API AsnOptionalBase {
  public:
    AsnOptionalBase(const AsnOptionalBase&) = delete;
    AsnOptionalBase& operator=(const AsnOptionalBase&) = delete;

    AsnType* get_type() const { return value_; }
    void reset_type(AsnType* value = nullptr) {
        if (value != value_) {
            delete value_;
            value_ = value;
        }
    }

  protected:
    AsnOptionalBase() = default;
    explicit AsnOptionalBase(AsnType* value) : value_(value) {}
    ~AsnOptionalBase() = default;

    AsnType* value_ = nullptr;
};

/// An optional field: an owning pointer whose copy is deep.
template <class T>
class AsnOptional : public AsnOptionalBase {
  public:
    AsnOptional() = default;
    AsnOptional(const AsnOptional& other) : AsnOptionalBase(CopyOf(other)) {}
    AsnOptional(AsnOptional&& other) noexcept : AsnOptionalBase(other.release()) {}
    ~AsnOptional() { delete get(); }  // the class is known here, and often final
    AsnOptional& operator=(const AsnOptional& other) {
        if (this != &other) {
            reset_type(CopyOf(other));
        }
        return *this;
    }
    AsnOptional& operator=(AsnOptional&& other) noexcept {
        if (this != &other) {
            reset_type(other.release());
        }
        return *this;
    }
    /// Takes ownership of `value`, which was made with `new`; null makes the field absent.
    AsnOptional& operator=(T* value) {
        reset_type(value);
        return *this;
    }

    T* get() const { return static_cast<T*>(value_); }
    T* operator->() const { return get(); }
    T& operator*() const { return *get(); }
    explicit operator bool() const { return value_ != nullptr; }
    bool operator==(std::nullptr_t) const { return value_ == nullptr; }

    /// A new value in this field, made from `args`.
    template <class... Args>
    T& Emplace(Args&&... args) {
        reset_type(new T(std::forward<Args>(args)...));
        return *get();
    }
    /// The field's value, made empty if it was absent.
    T& Ensure() { return value_ != nullptr ? *get() : Emplace(); }
    void reset() { reset_type(); }
    /// Gives the value away; the field is absent afterwards.
    T* release() {
        T* value = get();
        value_ = nullptr;
        return value;
    }

  private:
    static T* CopyOf(const AsnOptional& other) { return other ? new T(*other) : nullptr; }
};

namespace refl {

/// One field of a record.
struct CAttribInfor {
    const char* name;
    int tag;  ///< context tag, or kNoTag
    bool optional;
    std::size_t offset;        ///< of the AsnType or AsnOptionalBase in the record
    AsnIdentifier identifier;  ///< what its elements start with when tags are explicit
    AsnType* (*create)();      ///< null for a mandatory field
};

/// The description of a record class: its name, its source unit and its fields in the
/// order of encoding.
class KELP_API CClassInfor {
  public:
    static constexpr int kNoTag = -1;

    /// `shape` is an object of the described class, used while fields are added; the
    /// texts are literals.
    CClassInfor(const AsnSequence& shape, const char* name, const char* unit)
        : shape_(&shape), name_(name), unit_(unit) {}

    /// Describes the field at `position` (fields are added in order, from 0): a
    /// mandatory member of the shape, untagged unless `tag` is given.
    void AddAttribInfor(int position, const char* name, const AsnType& member, int tag = kNoTag);

    /// The same for an optional member.
    template <class T>
    void AddAttribInfor(int position, const char* name, const AsnOptional<T>& member,
                        int tag = kNoTag) {
        AddOptional(position, name, member, tag, [] { return static_cast<AsnType*>(new T); });
    }

    const std::vector<CAttribInfor>& Attributes() const { return attributes_; }
    const char* Name() const { return name_; }
    const char* Unit() const { return unit_; }

    /// Registers a list or value type under the name that other units know it by.
    /// Registering a name again replaces its factory. Thread-safe.
    static void RegisterType(const char* name, AsnType* (*create)());
    /// A new object of the type registered as `name`, or null. Thread-safe.
    static std::unique_ptr<AsnType> CreateType(const std::string& name);

  private:
    void AddOptional(int position, const char* name, const AsnOptionalBase& member, int tag,
                     AsnType* (*create)());
    void Append(int position, const char* name, const void* member, int tag, const AsnType& value,
                AsnType* (*create)());

    const AsnSequence* shape_;
    const char* name_;
    const char* unit_;
    std::vector<CAttribInfor> attributes_;
};

}  // namespace refl

/// The generic record: SEQUENCE whose fields are those of its description. Context
/// tags are EXPLICIT unless the process says otherwise.
class KELP_API AsnSequence : public AsnType {
  public:
    enum class ContextTags { kExplicit, kImplicit };

    /// How context tags are written and read in this process; set it before the first
    /// record is coded, for peers that use IMPLICIT. Thread-safe.
    static void SetContextTags(ContextTags tags);
    static ContextTags GetContextTags();

    virtual const refl::CClassInfor& GetClassInfor() const = 0;

    /// Makes this record a deep copy of `other`, which is of the same class and no part
    /// of this record. When memory runs out, the fields before are those of `other`.
    void Assign(const AsnSequence& other);

    AsnIdentifier Identifier() const override { return kAsnSequence; }
    const char* Unit() const override { return GetClassInfor().Unit(); }
    void Clear() override;
    void BEncContent(AsnBuffer& out) const override;
    /// Fields come in their order; an absent mandatory field, an unknown element or one
    /// out of order fails with "Unexpected Tag" ("Unexpected End" when the contents
    /// end before a mandatory field).
    void BDecContent(AsnReader& in) override;
    void Print(std::ostream& out, int indent = 0) const override;

  protected:
    AsnSequence() = default;
    AsnSequence(const AsnSequence&) = default;
    AsnSequence& operator=(const AsnSequence&) = default;
};
