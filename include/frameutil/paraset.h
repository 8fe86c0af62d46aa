// frameutil/paraset.h - CParaSet, the typed tree that carries commands' arguments and
// results.
//
// A node has a name, a description and a value: an integer, a double, a string of
// octets, a resource identifier, a list of unnamed children (an array) or a set of
// named children (a structure). Dotted paths reach what lies below:
//
//     FrameUtil::CParaSet request("request");
//     request["ne.name"] = "tokyo-1";       // makes the structures on the way
//     request["ne.port"][2] = 8080;         // makes an array with null slots 0 and 1
//     if (FrameUtil::CParaSet* port = request.find("ne.port[2]")) use(port->asInt());
//
// Tables are structures whose children are columns, arrays indexed by row:
//
//     FrameUtil::CParaSet row("row"), table("table");
//     row["name"] = "eth0";
//     row["mtu"] = 1500;
//     table.AddRow(0, row);                 // table["mtu"][0].asInt() == 1500
//
// Reserved children of a root carry what stands beside the tables: "##RowCount",
// "##TableCount", "##retCode", "##retCodeEx", "##ver", "##UserID", "##ResID".
//
// The rules of assignment differ from type to type, and callers rely on each of them:
// an integer may be written into a double node, a double not into an integer node; a
// std::string over a number is taken with a trace, a const char* throws.
//
// Trees may be millions of nodes wide or deep: no operation recurses. An operation that
// throws, be it std::bad_alloc, leaves the tree as it was, unless its comment says more.
//
// Thread rule: one thread at a time for each tree; different trees share nothing.
#pragma once

#include <cstdint>
#include <exception>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/export.h"
#include "frameutil/records.h"
#include "kelp/block_text.h"
#include "kelp/value.h"

namespace FrameUtil {

/// Thrown by value on a bad index or a type conflict:
///   -1  a negative index; value() of a node that is no integer, double or string
///   -2  an index that is not below the number of children; the entry that
///       operator[](int) names on a structure has no child
///   -3  the operation does not fit the node's type
class FRAMEUTIL_API FRexception : public std::exception {
  public:
    explicit FRexception(std::int32_t code) noexcept : m_iCode(code) {}
    std::int32_t code() const noexcept { return m_iCode; }
    const char* what() const noexcept override;

  private:
    std::int32_t m_iCode;
};

struct CParaSetImpl;

class FRAMEUTIL_API CParaSet {
  public:
    enum ValueType : std::int32_t {
        PARA_NULL = 0,  ///< not valued; every new node starts here
        PARA_DOUBLE = 1,
        PARA_INT = 2,     ///< signed, 32 bits
        PARA_STRING = 3,  ///< any octets, zeros included
        PARA_ARRAY = 4,
        PARA_STRUCT = 5,
        PARA_RESERVED = 6,  ///< nothing produces it; treated like an unknown type
        PARA_RESID = 7,
    };

    // ---- making and copying --------------------------------------------------------

    /// A node named `name`, which is not null, of type PARA_NULL.
    CParaSet(const char* name);  // NOLINT(google-explicit-constructor)
    /// A node of type PARA_INT.
    CParaSet(const char* name, int value);
    /// A node of type PARA_STRING; `value` is not null.
    CParaSet(const char* name, const char* value);
    /// A deep copy; see setValue(). Both row counters of the copy are 0.
    CParaSet(const CParaSet& other);
    ~CParaSet();

    /// setValue(other), or nothing when `other` is this node.
    CParaSet& operator=(const CParaSet& other);

    /// Makes this node a deep copy of `other`: name, description, type, value, children
    /// and, on PARA_RESID, the resource record. This node's row counter and table
    /// counter stay. Null slots of the child list are left out, so later elements move
    /// to lower indices; entries of the name index without a child are left out.
    /// `other` may be part of this node's tree, or this node of its.
    const CParaSet& setValue(const CParaSet& other);

    // ---- identity ------------------------------------------------------------------

    bool isNull() const;
    std::string name() const;
    /// Renames the node; the key that a parent knows it by stays.
    void SetName(const std::string& name);
    ValueType type() const;
    /// Overwrites the type and nothing else.
    void SetType(ValueType type);
    /// The ASN.1 universal tag number of the type: 9 double, 2 integer, 4 string,
    /// 48 structure and resource, 257 array, 5 anything else.
    int getType() const;
    /// Stores a copy of `desc`.
    void SetDesc(const std::string& desc);
    std::string& GetDesc();

    /// The children of an array, owned by this node; a slot may be null. What callers
    /// add is made with new, what they take out they delete.
    std::vector<CParaSet*>& GetVctValue();
    /// The children of a structure by name, in the order of the keys' octets, owned
    /// likewise. The quick way to walk a structure.
    std::map<std::string, CParaSet*>& GetMapValue();

    // ---- children ------------------------------------------------------------------

    /// The element at `index` of an array, made if it is not there (the list grows to
    /// exactly index + 1 slots; the child is named "root"). A PARA_NULL node becomes an
    /// array. On a structure: the child of the index-th entry in key order, at a cost
    /// linear in the index. On any other type: the node itself, so that element 0 of a
    /// scalar is the scalar. Throws FRexception -1 and -2 (also for an entry that has no
    /// child); when memory is out the list may have grown by null slots already.
    CParaSet& operator[](int index);

    /// The child at a dotted path, made if it is not there. Making a child turns its
    /// parent into a structure whatever it was; only arrays refuse, with FRexception -3,
    /// and then nothing has changed. Brackets are ordinary characters here, and a path
    /// that ends in a dot names a child whose name is empty.
    CParaSet& operator[](const char* path);
    CParaSet& operator[](const std::string& path);

    /// The node at a path such as "ne.port[2].name", or null. Nothing is made, but for
    /// an element whose slot is null. The empty path is this node; an index without a
    /// name applies to this node. Throws FRexception -2 when an index meets a structure
    /// that has a child list as well and fewer entries.
    CParaSet* find(const char* path);
    CParaSet* find(const std::string& path);

    /// The position in key order of the entry named by `name` up to its first dot, or
    /// -1: there is none, or this node is no structure.
    int GetIndexByName(const char* name) const;
    int GetIndexByName(const std::string& name) const;

    /// Removes the element at `index` of an array (a null slot stays: the list does not
    /// shrink), or the index-th entry of a structure; true. False on any other type.
    /// Throws FRexception -1 and -2. The child that a structure loses this way is not
    /// destroyed: references to it stay good until this node is cleared, assigned to or
    /// destroyed.
    bool remove(int index);
    /// Destroys the child whose key is exactly `name`, and its entry; whether there was
    /// an entry. The type stays, even when no child is left.
    bool remove(const char* name);
    bool remove(const std::string& name);

    /// Destroys all children; the type becomes PARA_NULL. Name, description, scalar
    /// fields, counters and the resource record stay.
    void clear();
    /// Destroys the child whose key is exactly `name` and keeps the entry: count()
    /// still counts it, find() yields null, operator[](name) makes a fresh child.
    /// False when there is no such child.
    bool clear(const char* name);
    bool clear(const std::string& name);

    /// The number of values: 0 for PARA_NULL, 1 for a number, octets of a string, slots
    /// of an array, entries of a structure, 0 for any other type.
    int count() const;
    /// The size in the node's own unit: 8 double, 4 integer, octets, slots, entries, 0.
    int size() const;

    // ---- scalars -------------------------------------------------------------------

    /// A PARA_DOUBLE node keeps its type. Any type but PARA_NULL, PARA_INT and
    /// PARA_DOUBLE becomes PARA_INT with a trace; children and resource stay in place.
    CParaSet& operator=(int value);
    /// These keep the low 32 bits of the value.
    CParaSet& operator=(unsigned int value);
    CParaSet& operator=(long value);
    CParaSet& operator=(unsigned long value);
    /// Throws FRexception -3 unless the node is PARA_NULL or PARA_DOUBLE.
    CParaSet& operator=(double value);
    /// Throws FRexception -3 unless the node is PARA_NULL or PARA_STRING, and
    /// std::logic_error on a null pointer.
    CParaSet& operator=(const char* value);
    /// Any type becomes PARA_STRING; one that was not PARA_NULL or PARA_STRING is traced.
    CParaSet& operator=(const std::string& value);
    /// Attaches a copy of `resource`, whatever the type was; null does nothing.
    CParaSet& operator=(const AsnDistinguishedResource* resource);
    /// Integers (codes 13, 14, 23, 24 and 25, low 32 bits) go into PARA_NULL and
    /// PARA_INT nodes, doubles (17, 18) into PARA_NULL and PARA_DOUBLE, text and octets
    /// (12, 22, 41, 47, and 15 and 16 as decimal text) into PARA_NULL and PARA_STRING;
    /// anything else throws FRexception -3, with the new text already in the string
    /// field. A null value, or one of an unknown code, resets a scalar: integer -1,
    /// double 0, string empty, type kept.
    CParaSet& operator=(const TEValue& value);
    CParaSet& operator=(const refl::CValue& value);

    /// The integer; a string read as a decimal number (0 if it is none); -1 for any
    /// other type, PARA_DOUBLE included.
    int asInt() const;
    /// The double or the integer; 0.0 for any other type, PARA_STRING included.
    double asDouble() const;
    /// The string; a number as text ("%d", six significant digits), which then stands in
    /// the node's string field. Null for any other type. Good until the string field
    /// next changes.
    const char* asString();
    /// The attached resource record, owned by the node, whatever its type; or null.
    AsnDistinguishedResource* asResID() const;

    /// Copies up to `length` octets of a PARA_STRING from `offset` on; see size() for
    /// how many there are. Copies nothing for any other type.
    void getBytes(void* buffer, unsigned long length, unsigned long offset) const;
    /// PARA_STRING: `out` takes the string, the result is its length. A number: `out`
    /// stays, the result is its length. Any other type: 0.
    int getBytes(std::string& out) const;
    /// Overwrites the first octets of the string in place; its length never changes, so
    /// what lies beyond it is dropped. Null or no octets change nothing. The type
    /// becomes PARA_STRING. Throws FRexception -3 unless the node is PARA_NULL or
    /// PARA_STRING.
    void setBytes(const void* data, unsigned long length);
    /// The string becomes `value`, the type PARA_STRING; the result is the new length.
    /// Throws as above.
    int setBytes(const std::string& value);

    /// Whether find(path) finds a node that is not PARA_NULL.
    bool checkParaValid(const std::string& path);

    /// The integer, double or string as the platform's variant. Throws FRexception -1
    /// for any other type.
    TEValue value() const;

    // ---- rows ----------------------------------------------------------------------

    // A table's columns are all children but "##TableCount", "##RowCount" and
    // "##retCode"; the other reserved names count as columns here.

    /// Copies every column of `rowSet` into element `row` of this table's column of the
    /// same name, adds one to the row counter, writes it to "##RowCount" and returns
    /// that child. The counter does not look at "##RowCount": on a decoded table the
    /// first AddRow sets it to 1. An entry of `rowSet` without a child leaves its cell as
    /// it is, made if it was not there. `rowSet` is not one of the cells that are written
    /// to, nor part of one. Throws FRexception -1, -2 (a structure as column) and -3; the
    /// columns before the failing one have changed then.
    CParaSet& AddRow(int row, CParaSet& rowSet);
    /// Copies element `row` of every column into the child of `rowSet` of that name.
    /// Missing elements are made; what else `rowSet` holds stays. A column whose entry has
    /// no child is left out. Throws as AddRow does.
    void GetRow(int row, CParaSet& rowSet);
    /// Removes element `row` of every column, takes one off the row count if the last
    /// column lost it, writes the count to "##RowCount" and returns that child. Throws
    /// FRexception -1 and -2; the columns before the failing one have changed then.
    CParaSet& DelRow(int row);
    /// "##RowCount" as an integer; -1 when it is missing or not valued.
    int GetRowCount();
    /// A counter kept for the library's users; nothing else reads it, and it is not
    /// "##TableCount".
    int GetTableCount() const;
    void SetTableCount(int count);

    // ---- common records ------------------------------------------------------------

    // Called on a root. A named child travels under its key, and what arrives under a
    // name becomes the child of exactly that key: a peer's dots make no structures, so a
    // name with dots in it is found through GetMapValue() or GetRow(), not by a path.
    // These return 0 always: headers that are missing are skipped, and a child that is no
    // table travels as an empty one. Assigning over existing children can throw
    // FRexception -3.

    /// "##UserID" (made if missing, and then -1), "##ResID" and the tables that
    /// "##TableCount" announces: with 1 the root itself, unnamed; with more, every child
    /// whose name does not begin with '#', under its name.
    int Para2CommonReqAsn(AsnCommonRequest& request);
    /// "##retCode", "##retCodeEx", "##ver" (absent when it has no text) and the tables. With
    /// "##TableCount" 1 the root itself travels only if it has a valued "##RowCount"; else its
    /// children do, as named tables.
    int Para2CommonRspAsn(AsnCommonResponse& response);
    /// The way back. A single table goes into the root, or, if it has a name, into the
    /// child of that name; of several, those without a name become "tab0", "tab1", ...
    /// A table that is nearly all gaps (rows much shorter than its columns, tens of
    /// thousands of values missing) is left out, with a warning in the log.
    int CommonReqAsn2Para(const AsnCommonRequest& request);
    /// The same, but that a single table goes into the root whatever its name.
    int CommonRspAsn2Para(const AsnCommonResponse& response);

    // ---- text for people -----------------------------------------------------------

    /// Writes the whole tree to the platform's log as one error record of code 0 with many
    /// lines. It is a dump for people: nothing parses it.
    void display(const char* prefix);
    /// Appends the same text to `out`: for each value a line break, the dotted path that
    /// leads to it from `prefix` (null: this node's name), and the value:
    ///
    ///     cfg.ne.id:7(integer).
    ///     cfg.ne.load:0.25(double).
    ///     cfg.ports.0:eth0(string).       // its first 1000 octets, then "..."
    ///     cfg.ports.1:invalid value(NULL).
    ///     cfg.old:not valued(NULL).       // a slot or an entry without a child
    ///     cfg.ports.##desc:physical ports
    ///
    /// A resource record is printed behind its path in its own form; an empty array or
    /// structure is not seen. Doubles follow the stream's settings. `count` grows by one for
    /// each value and each description.
    void subDisplay(const char* prefix, std::ostringstream& out, int& count);

    // Nodes on the free store come from blocks that hold a child and its
    // implementation object side by side.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* node, std::size_t size) noexcept;
    static void operator delete(void*, void*) noexcept {}

  private:
    friend struct NodeAccess;
    // A child; REQUIRES: the node is made by operator new of this class.
    explicit CParaSet(kelp::BlockText&& name) noexcept;

    std::vector<CParaSet*> m_vctValue;
    std::map<std::string, CParaSet*> m_mapValue;
    AsnDistinguishedResource* m_pResID = nullptr;
    std::string m_strDesc;
    std::shared_ptr<CParaSetImpl> m_pImpl;
};

}  // namespace FrameUtil
