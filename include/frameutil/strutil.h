// frameutil/strutil.h - resource identifiers, lists within a text, small text helpers.
//
// A managed resource is named by key=value pairs, from the outermost object that contains
// it to itself:
//
//     FrameUtil::StrUIDFactory name;
//     name.Append("net", 7L).Append("ne", "Oslo,east").Append("port", 3L);
//     name.GetStr();                              // "net=7,ne=Oslo\ceast,port=3"
//
//     FrameUtil::StrUIDParser parser;
//     std::string ne;
//     parser.Parse("net=7,ne=Oslo\\ceast,port=3"); // true
//     parser.GetValue(ne, "ne", 0);                // true, "Oslo,east"
//     parser.GetMOC();                             // "port"
//
// docs/identifiers.md is the manual.
//
// Objects are handles that hold nothing but their implementation. One that got no memory
// when it was made, or was moved from, has none: its operations then do nothing and return
// false, 0 or an empty text, whatever is said below.
//
// Thread rule: thread-compatible; the functions are thread-safe. Nothing throws because of
// what it is given. What returns or grows a text throws std::bad_alloc when memory is out;
// objects are as they were then.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/export.h"

namespace FrameUtil {

class StrSpliter;

/// Builds an identifier out of pairs.
class FRAMEUTIL_API StrUIDFactory {
  public:
    StrUIDFactory();
    ~StrUIDFactory();
    StrUIDFactory(StrUIDFactory&&) noexcept;
    StrUIDFactory& operator=(StrUIDFactory&&) noexcept;

    /// Back to the empty text.
    void Clear();

    /// Appends `key`=`value`, behind a ',' unless the text is empty. In the value ',' is
    /// written "\c", '=' "\e" and a backslash as two.
    ///
    /// Nothing is appended when either is null, or `key` is a number ("12", "-7", also "+")
    /// or holds a byte outside of 0x20..0x7E. What else makes a key that no parser takes
    /// back is the caller's to avoid: an empty one, and one with ',', '=' or a backslash.
    /// So are empty values, and values with bytes outside of 0x20..0x7E.
    ///
    /// A value above 255 characters, or above with one more counted for each ',', '=' and
    /// backslash in it, is appended as it stands, deliberately. With a ',' or '=' in it, it
    /// does not read back as it was, if at all: keep values with many of them short.
    StrUIDFactory& Append(const char* key, const char* value);
    /// The same with a decimal number.
    StrUIDFactory& Append(const char* key, long value);
    /// So that Append("port", 0) needs no suffix.
    StrUIDFactory& Append(const char* key, int value) {
        return Append(key, static_cast<long>(value));
    }

    /// Appends a whole identifier as it stands, behind a ',' unless one of the two is
    /// empty; it is neither looked at nor escaped. Null changes nothing.
    StrUIDFactory& AppendFDN(const char* fdn);

    /// A copy of the text.
    std::string GetStr() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};

/// Why a text is no identifier.
struct UIDFault {
    const char* reason = "";   ///< a literal, such as "a key without a value"
    unsigned long offset = 0;  ///< characters before the one at fault
};

/// Reads an identifier, pair by pair or by key.
class FRAMEUTIL_API StrUIDParser {
  public:
    StrUIDParser();
    ~StrUIDParser();
    StrUIDParser(StrUIDParser&&) noexcept;
    StrUIDParser& operator=(StrUIDParser&&) noexcept;

    /// Reads `text`: key=value pairs with ',' between them, or nothing at all. Keys and
    /// values are not empty; a key holds no ',', '=' or backslash. In a value "\c" stands
    /// for ',', "\e" for '=' and two backslashes for one; a backslash and a vertical bar
    /// stay both, since they are a splitter's own escape. All keys and values with a
    /// terminator each have 256 bytes together.
    ///
    /// False, with `fault` set, for any other text. A null one and one with a byte outside
    /// of 0x20..0x7E leave the earlier result and the current pair as they were,
    /// deliberately; otherwise the pairs before the fault are there, the last perhaps
    /// without a value, and there is no current pair.
    bool Parse(const char* text, UIDFault* fault = nullptr);

    /// Goes to the next pair, from before the first one at the beginning. True: there is
    /// one.
    bool Next();
    /// Back to before the first pair: Next() goes to the first.
    void SetCurToFirst();

    /// Key and value of the current pair; "" when there is none.
    std::string Type() const;
    std::string StrValue() const;
    /// The value as a decimal number with an optional sign, 0 when it is none or there is
    /// no pair. A lone sign is 0. A signed number out of range is the nearest that fits. An
    /// unsigned one is read as a stream does: above the range it is the largest, and a
    /// negative one is counted down from 2^64, so "-1" is the largest as well.
    long IntValue() const;
    unsigned long UIntValue() const;

    /// The value of the pair with this key, of several the one with `index` others of the
    /// key before it. True: there is one, and `out` has it; numbers as IntValue() and
    /// UIntValue() read them. False: there is none, `key` is null, or the value is no
    /// number; `out` is as it was.
    bool GetValue(long& out, const char* key, unsigned long index) const;
    bool GetValue(unsigned long& out, const char* key, unsigned long index) const;
    bool GetValue(std::string& out, const char* key, unsigned long index) const;
    /// Splits the value by `out`'s separator.
    bool GetValue(StrSpliter& out, const char* key, unsigned long index) const;

    /// The class of the named resource: the key of the last pair, wherever the current one
    /// is; "" when there are no pairs.
    std::string GetMOC() const;
    /// The same of `text`; "" when it is no identifier.
    static std::string GetMOC(const char* text);
    /// The name of what contains the resource: `text` up to its last ',', whether it is an
    /// identifier or not; "" when it has none or is null.
    static std::string GetParentFDN(const char* text);

  private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};

/// Joins items into one text.
///
///     StrLinker list('|');
///     list << "a" << "b|c" << 5;
///     list();                        // "a|b\|c|5"
class FRAMEUTIL_API StrLinker {
  public:
    explicit StrLinker(char sep = '|');
    ~StrLinker();
    StrLinker(StrLinker&&) noexcept;
    StrLinker& operator=(StrLinker&&) noexcept;

    /// Appends an item, behind the separator unless it is the first; null appends none. A
    /// backslash is put before each separator in the item, and before nothing else; an item
    /// of 256 characters or more is appended as it stands.
    ///
    /// Items are counted in eight bits, deliberately: the 257th, 513th, ... item is
    /// appended without a separator and runs into the one before. Start a new linker in
    /// time.
    StrLinker& operator<<(const char* item);
    /// The same with a decimal number.
    StrLinker& operator<<(unsigned long item);
    StrLinker& operator<<(long item);
    /// So that `<< 5` needs no suffix.
    StrLinker& operator<<(int item) { return *this << static_cast<long>(item); }
    StrLinker& operator<<(unsigned int item) { return *this << static_cast<unsigned long>(item); }

    /// The joined text. Good until the linker is changed, moved or destroyed.
    const char* operator()() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};

/// Cuts a joined text into its items and hands them out one after another.
///
///     StrSpliter items("7||east", '|');
///     long number;
///     std::string none, text;
///     items >> number >> none >> text;     // 7, "", "east"
class FRAMEUTIL_API StrSpliter {
  public:
    explicit StrSpliter(char sep = '|');
    /// Parse(text) at once; HasNext() is false if that failed.
    explicit StrSpliter(const char* text, char sep = '|');
    ~StrSpliter();
    StrSpliter(StrSpliter&&) noexcept;
    StrSpliter& operator=(StrSpliter&&) noexcept;

    /// Cuts `text` at each separator and goes to the first item. There is one item more
    /// than separators: one empty item in an empty text. False when `text` is null or memory
    /// is out: there are no items then.
    ///
    /// A backslash and a vertical bar become a bar that does not separate; a backslash
    /// before any other character stays and keeps that from separating. So a linker and a
    /// splitter agree about '|', and deliberately not about other separators: "x\,y" cut at
    /// ',' is one item, "x\,y".
    bool Parse(const char* text);

    /// Take the item at hand and go to the next. When there is none, a number is 0, a
    /// string "" and a buffer as it was.
    ///
    /// A number is a decimal one with an optional sign (see StrUIDParser::IntValue());
    /// another item gives 0.
    ///
    /// A buffer says how large it is by the text in it: fill it with as many characters as
    /// may be written, L of 1 to 4095. It gets the item's first L - 1 characters and a
    /// terminator. With an L of 0 or above 4095, or no buffer, nothing happens and the item
    /// stays at hand.
    StrSpliter& operator>>(char* buffer);
    StrSpliter& operator>>(long& number);
    StrSpliter& operator>>(unsigned long& number);
    StrSpliter& operator>>(std::string& text);

    /// Whether there is an item at hand.
    bool HasNext() const;
    /// Deliberately always false: nothing is an error to a splitter.
    bool HasError() const;
    /// Bit i, of 0 to 31, is set when the item i is there and not empty, whatever was taken
    /// already.
    unsigned int GetValueMask() const;

  private:
    friend class StrUIDParser;
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};

// ---- helpers

/// `s` without blanks, tabs, line feeds and carriage returns at both ends.
FRAMEUTIL_API std::string Trim(const std::string& s);

/// What Split() does with items of no characters.
enum class EmptyItems { kKeep, kDrop };

/// Cuts `text` at every character that is one of `separators`; without separators it is one
/// item. Kept, there is one item more than separators found, one empty item in an empty
/// text; dropped, there may be none. Nothing is escaped.
FRAMEUTIL_API std::vector<std::string> Split(const std::string& text, std::string_view separators,
                                             EmptyItems empty = EmptyItems::kKeep);

/// `text` with each single quote doubled, to stand between the quotes of a literal in
/// standard SQL: "'" + EscapeQuotation(text) + "'". Databases that give backslashes a
/// meaning in literals need more; a text from outside is better bound as a parameter.
FRAMEUTIL_API std::string EscapeQuotation(const std::string& text);

/// Overwrites `n` bytes at `p` with zero, also when nothing reads them any more. A null `p`
/// does nothing.
FRAMEUTIL_API void ClearPasswd(volatile char* p, unsigned long n) noexcept;
/// Overwrites every character of `s`; its length stays.
FRAMEUTIL_API void ClearPasswd(std::string& s) noexcept;

/// The identifier of 16 bytes as hexadecimal text, lower case: each half as one number, most
/// significant byte first, without leading zeros. A half that begins with a zero digit thus
/// gives fewer than 16 characters, and nobody can tell the halves apart again: that is
/// traced, and the short text returned all the same. Null gives sixteen zeros, deliberately
/// not thirty-two.
FRAMEUTIL_API std::string GetGUIDBy16Bytes(const char* bytes);

/// The way back: two hexadecimal numbers of 16 digits each into 16 bytes. A text that is not
/// 32 hexadecimal digits, such as one with hyphens, is traced and writes nothing; a null
/// `bytes` does nothing.
FRAMEUTIL_API void ConvertTo16BytesByGUID(const std::string& guid, char* bytes);

/// The public key in an OpenSSH key text: the octets that the base64 text of a public key
/// file encodes, and servers and clients compare.
///
/// `text` is a public key ("ssh-ed25519 AAAA... comment") or a private one ("-----BEGIN
/// OPENSSH PRIVATE KEY-----"). An encrypted one needs no passphrase: its public half is
/// readable. RSA, DSA, ECDSA and Ed25519 keys, security keys among them.
///
/// "" when it is none of these, is cut or malformed, or names another type than it holds;
/// `why` then says what is wrong. Whether a key's numbers are a key is not looked at. Copies
/// of the private half that were made on the way are wiped.
FRAMEUTIL_API std::string GetPubKeyFromOPenSSH(const std::string& text, std::string* why = nullptr);

}  // namespace FrameUtil
