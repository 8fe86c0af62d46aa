// The descriptions of the common records: one line a field, in the order of encoding.

#include "frameutil/records.h"

namespace {

using refl::CClassInfor;

constexpr const char* kUnit = "paraset";

// Other units and tools make lists and values by these names.
const bool g_types_registered = [] {
    CClassInfor::RegisterType("FrameUtil::AsnSchemaDef",
                              [] { return static_cast<AsnType*>(new FrameUtil::AsnSchemaDef); });
    CClassInfor::RegisterType("FrameUtil::AsnTableSeqOf",
                              [] { return static_cast<AsnType*>(new FrameUtil::AsnTableSeqOf); });
    CClassInfor::RegisterType("AsnDistinguishedResourceSeqOf", [] {
        return static_cast<AsnType*>(new AsnDistinguishedResourceSeqOf);
    });
    CClassInfor::RegisterType("AsnResDNList",
                              [] { return static_cast<AsnType*>(new AsnResDNList); });
    CClassInfor::RegisterType("AsnBool", [] { return static_cast<AsnType*>(new AsnBool); });
    CClassInfor::RegisterType("AsnReal", [] { return static_cast<AsnType*>(new AsnReal); });
    return true;
}();

}  // namespace

const CClassInfor& AsnRelation::GetClassInfor() const {
    static const CClassInfor infor = [] {
        const AsnRelation shape;
        CClassInfor described(shape, "AsnRelation", kUnit);
        described.AddAttribInfor(0, "iRelation", shape.iRelation);
        described.AddAttribInfor(1, "iDepend", shape.iDepend);
        described.AddAttribInfor(2, "aResDN", shape.aResDN);
        return described;
    }();
    return infor;
}

const CClassInfor& AsnDistinguishedResource::GetClassInfor() const {
    static const CClassInfor infor = [] {
        const AsnDistinguishedResource shape;
        CClassInfor described(shape, "AsnDistinguishedResource", kUnit);
        described.AddAttribInfor(0, "resDN", shape.resDN);
        described.AddAttribInfor(1, "label", shape.label, 0);
        described.AddAttribInfor(2, "maintype", shape.maintype, 1);
        described.AddAttribInfor(3, "subtype", shape.subtype, 2);
        described.AddAttribInfor(4, "iResNumber", shape.iResNumber, 3);
        described.AddAttribInfor(5, "wholeLabel", shape.wholeLabel, 4);
        described.AddAttribInfor(6, "aResRelation", shape.aResRelation, 5);
        return described;
    }();
    return infor;
}

namespace FrameUtil {

const CClassInfor& AsnValue::GetClassInfor() const {
    static const CClassInfor infor = [] {
        const AsnValue shape;
        CClassInfor described(shape, "AsnValue", kUnit);
        described.AddAttribInfor(0, "bVal", shape.bVal, 0);
        described.AddAttribInfor(1, "iVal", shape.iVal, 1);
        described.AddAttribInfor(2, "dVal", shape.dVal, 2);
        described.AddAttribInfor(3, "sVal", shape.sVal, 3);
        return described;
    }();
    return infor;
}

const CClassInfor& AsnSchemaItem::GetClassInfor() const {
    static const CClassInfor infor = [] {
        const AsnSchemaItem shape;
        CClassInfor described(shape, "AsnSchemaItem", kUnit);
        described.AddAttribInfor(0, "name", shape.name);
        described.AddAttribInfor(1, "type", shape.type);
        described.AddAttribInfor(2, "desc", shape.desc, 0);
        return described;
    }();
    return infor;
}

const CClassInfor& AsnTable::GetClassInfor() const {
    static const CClassInfor infor = [] {
        const AsnTable shape;
        CClassInfor described(shape, "AsnTable", kUnit);
        described.AddAttribInfor(0, "name", shape.name, 0);
        described.AddAttribInfor(1, "schema", shape.schema, 1);
        described.AddAttribInfor(2, "rows", shape.rows);
        return described;
    }();
    return infor;
}

const CClassInfor& AsnCommonRequest::GetClassInfor() const {
    static const CClassInfor infor = [] {
        const AsnCommonRequest shape;
        CClassInfor described(shape, "AsnCommonRequest", kUnit);
        described.AddAttribInfor(0, "userID", shape.userID);
        described.AddAttribInfor(1, "resID", shape.resID, 0);
        described.AddAttribInfor(2, "tables", shape.tables, 1);
        return described;
    }();
    return infor;
}

const CClassInfor& AsnCommonResponse::GetClassInfor() const {
    static const CClassInfor infor = [] {
        const AsnCommonResponse shape;
        CClassInfor described(shape, "AsnCommonResponse", kUnit);
        described.AddAttribInfor(0, "retCode", shape.retCode);
        described.AddAttribInfor(1, "retCodeEx", shape.retCodeEx, 0);
        described.AddAttribInfor(2, "ver", shape.ver, 1);
        described.AddAttribInfor(3, "tables", shape.tables, 2);
        return described;
    }();
    return infor;
}

}  // namespace FrameUtil
