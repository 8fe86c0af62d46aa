// frameutil/records.h - the records that carry commands between processes.
//
// A common request or response holds header values and any number of tables of typed
// values; CParaSet converts parameter trees to and from them (frameutil/paraset.h).
// On the wire they are BER; the ASN.1 module is docs/frameutil.asn1.
//
//     FrameUtil::AsnCommonRequest request;
//     request.userID = 7;
//     FrameUtil::AsnTable& table = request.tables.Ensure().Append();
//     table.schema.Ensure().Append().name = "port";
//     table.rows.Append().Append().iVal.Emplace(1);
//     AsnBuffer octets;
//     AsnEncode(request, octets);
//
// Every record and list is constructed empty (optional fields absent, integers 0,
// strings empty), copies deeply, and has BEnc, BDec, BEncContent, BDecContent, Clear
// and Print of the ASN.1 runtime (kelp/asn1.h). An element of an unexpected type in
// what is read raises CSM_Exception "Unexpected Tag" with the unit "paraset"; what was
// read before it stays in the record.
//
// Thread rule: thread-compatible.
#pragma once

#include "frameutil/export.h"
#include "kelp/asn1.h"

/// A list of distinguished names.
class FRAMEUTIL_API AsnResDNList final : public AsnCopyable<AsnResDNList, AsnSeqOf<AsnOcts>> {
  public:
    const char* Unit() const override { return "paraset"; }
};

/// A relation of a resource to others.
class FRAMEUTIL_API AsnRelation final : public AsnCopyable<AsnRelation, AsnSequence> {
  public:
    AsnInt iRelation;
    AsnInt iDepend;
    AsnResDNList aResDN;

    const refl::CClassInfor& GetClassInfor() const override;
};

class FRAMEUTIL_API AsnDistinguishedResourceSeqOf final
    : public AsnCopyable<AsnDistinguishedResourceSeqOf, AsnSeqOf<AsnRelation>> {
  public:
    const char* Unit() const override { return "paraset"; }
};

/// A resource identifier.
class FRAMEUTIL_API AsnDistinguishedResource final
    : public AsnCopyable<AsnDistinguishedResource, AsnSequence> {
  public:
    AsnOcts resDN;
    AsnOptional<AsnOcts> label;
    AsnOptional<AsnInt> maintype;
    AsnOptional<AsnInt> subtype;
    AsnOptional<AsnInt> iResNumber;
    AsnOptional<AsnOcts> wholeLabel;
    AsnOptional<AsnDistinguishedResourceSeqOf> aResRelation;

    const refl::CClassInfor& GetClassInfor() const override;
};

namespace FrameUtil {

/// One cell: at most one of its fields is present.
class FRAMEUTIL_API AsnValue final : public AsnCopyable<AsnValue, AsnSequence> {
  public:
    AsnOptional<AsnBool> bVal;
    AsnOptional<AsnInt> iVal;
    AsnOptional<AsnReal> dVal;
    AsnOptional<AsnOcts> sVal;

    const refl::CClassInfor& GetClassInfor() const override;
    const char* Unit() const override { return "paraset"; }
    void BEncContent(AsnBuffer& out) const override;
    void BDecContent(AsnReader& in) override;
};

/// One column: its name, the type code of its cells (2 integer, 4 string, 9 double,
/// 5 not valued, 48 structure or resource) and, where there is one, its description.
class FRAMEUTIL_API AsnSchemaItem final : public AsnCopyable<AsnSchemaItem, AsnSequence> {
  public:
    AsnOcts name;
    AsnInt type;
    AsnOptional<AsnOcts> desc;

    const refl::CClassInfor& GetClassInfor() const override;
};

/// The columns of a table, in their order.
class FRAMEUTIL_API AsnSchemaDef final : public AsnCopyable<AsnSchemaDef, AsnSeqOf<AsnSchemaItem>> {
  public:
    const char* Unit() const override { return "paraset"; }
};

/// One row: a value a column, in the order of the schema.
class FRAMEUTIL_API AsnDataRow final : public AsnCopyable<AsnDataRow, AsnSeqOf<AsnValue>> {
  public:
    const char* Unit() const override { return "paraset"; }
};

class FRAMEUTIL_API AsnTableSeqOf final : public AsnCopyable<AsnTableSeqOf, AsnSeqOf<AsnDataRow>> {
  public:
    const char* Unit() const override { return "paraset"; }
};

/// One table.
class FRAMEUTIL_API AsnTable final : public AsnCopyable<AsnTable, AsnSequence> {
  public:
    AsnOptional<AsnOcts> name;
    AsnOptional<AsnSchemaDef> schema;
    AsnTableSeqOf rows;

    const refl::CClassInfor& GetClassInfor() const override;
};

/// The tables of a request or response.
class FRAMEUTIL_API AsnTableList final : public AsnCopyable<AsnTableList, AsnSeqOf<AsnTable>> {
  public:
    const char* Unit() const override { return "paraset"; }
};

/// A command's arguments.
class FRAMEUTIL_API AsnCommonRequest final : public AsnCopyable<AsnCommonRequest, AsnSequence> {
  public:
    AsnInt userID;                                ///< "##UserID"
    AsnOptional<AsnDistinguishedResource> resID;  ///< "##ResID"
    AsnOptional<AsnTableList> tables;

    const refl::CClassInfor& GetClassInfor() const override;
};

/// A command's answer.
class FRAMEUTIL_API AsnCommonResponse final : public AsnCopyable<AsnCommonResponse, AsnSequence> {
  public:
    AsnInt retCode;                 ///< "##retCode"
    AsnOptional<AsnInt> retCodeEx;  ///< "##retCodeEx"
    AsnOptional<AsnOcts> ver;       ///< "##ver"
    AsnOptional<AsnTableList> tables;

    const refl::CClassInfor& GetClassInfor() const override;
};

class FRAMEUTIL_API AsnCommonRequestSeqOf final
    : public AsnCopyable<AsnCommonRequestSeqOf, AsnSeqOf<AsnCommonRequest>> {
  public:
    const char* Unit() const override { return "paraset"; }
};

class FRAMEUTIL_API AsnCommonResponseSeqOf final
    : public AsnCopyable<AsnCommonResponseSeqOf, AsnSeqOf<AsnCommonResponse>> {
  public:
    const char* Unit() const override { return "paraset"; }
};

}  // namespace FrameUtil
