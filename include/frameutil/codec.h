// frameutil/codec.h - CEndeCode, parameter sets as BER octets and back.
//
// The octets carry values, tags and lengths; which children a structure has, in which
// order and with which types and tags, stands in a description table, known to both sides
// and read from a file (docs/codec.md):
//
//     1100 0 userName 4 -1 -1
//     1100 0 ports 257 2 -1
//
//     FrameUtil::CParaSet user("user");
//     user["userName"] = "tokyo";
//     user["ports"][0] = 8443;
//     unsigned char octets[512];
//     int left = sizeof octets;
//     unsigned char* end =
//         FrameUtil::CEndeCode::Instance()->build(user, octets, left, 1100, -1, -1);
//     // null: it did not fit; else end - octets octets were written and left are free
//
// A type is one of these codes; -1 takes it from the value (CParaSet::getType()) or, in
// parse, from the tag that is there:
//
//       2  integer             257  list; `desc` is the type of its elements
//       4  octet string        258  a name and a value; 257 with `desc` 258 is a
//       5  null                     list of the named children
//       9  real             > 1023  a structure described under this key
//      48  structure described under the key `desc`
//     256  wrapper: one value of its own type inside an element of another tag
//
// `tag` is the tag octet, its low eight bits count; -1 derives it from the type.
//
// The format is not symmetric everywhere. What callers must know:
//
// - build may leave out children that parse demands: an item of the description whose tag
//   is below 64 (or -1) must be there when parse has used up the input.
// - A key with one single item, a list, is parsed as that list, without the structure
//   around it that build writes.
// - A structure without a description is written as an empty one, and its contents are
//   not read: whole trees need a description.
// - parse takes any tag from 160 on as an explicit wrapper around a scalar; build writes
//   none. A wrapper (256) reads back only with a tag from 160 on.
// - Values keep the low 32 bits of an integer: that is what a parameter set holds.
//
// Limits: 128 elements inside one another; 16,777,215 octets of contents in a structure,
// list or named value; 127 octets in a wrapper (build fails above); 655,359 octets in a
// string (parse fails above). A decoded tree takes up to some hundred times the octets it
// came from, since a number of three octets becomes a node.
//
// Thread rule: thread-safe, with one thread at a time for each parameter set.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "frameutil/export.h"

namespace FrameUtil {

class CParaSet;

/// A child in the description of a structure.
struct DescItem {
    std::string name;  ///< the child's name
    int type;          ///< a type code
    int desc;          ///< what goes with it: a key, an element type, or, in parse, a tag
    int tag;           ///< the tag octet; -1: the type's own
};

/// Why build() or parse() failed.
struct CodecFault {
    const char* reason = "";  ///< a literal, such as "the length exceeds the input"
    std::string path;         ///< the child in question, such as "ne.ports[3]"; "" the root
    int offset = 0;           ///< octets from `buf` to where it was noticed
};

/// How the reading of a description file went.
struct DescReport {
    /// A line that holds no item: it has not six fields.
    struct Line {
        int number;  ///< from 1
        int fields;
    };
    int error = 0;               ///< why the file could not be read: a system error number
    std::vector<Line> rejected;  ///< but for empty lines and lines that begin with '#'
};

class FRAMEUTIL_API CEndeCode {
  public:
    /// The process's codec, made by the first call and never released. Its table comes
    /// from "/drk/frame/conf/MCDB..bms_desc_Asn1ParaDesc.bcp" below the package
    /// "rtsp/DRKFrame" of the installation (see kelp/settings.h), read once. A file that is
    /// not there makes an empty table: structures are then empty. Throws std::bad_alloc,
    /// and the next call tries again.
    static CEndeCode* Instance();

    /// A codec of its own, with the table that Instance() has, read again.
    CEndeCode();
    /// A codec with the table of another file. A line of the file has six fields between
    /// blanks, tabs or "#$": key, a number that nothing reads, name, type, desc, tag. Other
    /// lines are left out with a trace, and named in `report`.
    explicit CEndeCode(const std::string& file, DescReport* report = nullptr);
    ~CEndeCode();
    CEndeCode(const CEndeCode&) = delete;
    CEndeCode& operator=(const CEndeCode&) = delete;

    /// The items described under `key` in the file's order; none when there are none. A
    /// copy.
    std::vector<DescItem> findDesc(int key) const;

    /// Writes `para` as one element to `buf`, of which `len` octets may be used.
    ///
    /// The result is the position behind the element, and `len` is what remains. A
    /// parameter that is not valued is written as nothing. Null: it does not fit, is too
    /// deep or too long for its header, or has no type that can be written; `len` and what
    /// lies beyond it are untouched then, what lies before is not, and `fault` says why.
    ///
    /// Names that the description has and the structure has not are entered into
    /// GetMapValue() without a child. A parameter of another kind than its description
    /// says is converted as asInt() and asDouble() do; as an octet string it has size()
    /// octets of zero.
    unsigned char* build(CParaSet& para, unsigned char* buf, int& len, int type = -1, int desc = -1,
                         int tag = -1, CodecFault* fault = nullptr) const;

    /// The same for peers that expect every named value as text: an integer inside a named
    /// value (258) is written as decimal text. It stays text in `para`, deliberately: encode
    /// a copy if the integers are still needed. After a failure some may have changed.
    unsigned char* buildAsString(CParaSet& para, unsigned char* buf, int& len, int type = -1,
                                 int desc = -1, int tag = -1, CodecFault* fault = nullptr) const;

    /// Reads the element at `buf`, of which `len` octets are there, into `para`, which is
    /// not valued: what is read is added to what it holds.
    ///
    /// The result is the position behind the element, and `len` is what remains. `buf`
    /// itself, with `len` and `para` unchanged, when the element there is not the expected
    /// one. Null for input that is malformed, with `len` unchanged, `para` partly filled,
    /// and `fault` set. Nothing that comes in `buf` makes it throw; a `para` that holds a
    /// value of another kind already can throw FRexception -3.
    ///
    /// In a structure a second child of the same name is dropped, with a trace; elements
    /// behind the last described one are skipped. A list ends at the first element that is
    /// not of its type.
    unsigned char* parse(CParaSet& para, unsigned char* buf, int& len, int type = -1, int desc = -1,
                         int tag = -1, CodecFault* fault = nullptr) const;

  private:
    struct CEndeCodeImpl;
    std::unique_ptr<CEndeCodeImpl> m_pImpl;
};

}  // namespace FrameUtil
