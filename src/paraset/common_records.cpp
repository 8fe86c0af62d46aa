// Parameter trees to common requests and responses, and back.

#include "paraset/node.h"
#include "paraset/reserved.h"
#include "paraset/tables.h"

namespace FrameUtil {

namespace {

// One table a child whose key does not begin with '#', under that key.
void AppendNamedTables(CParaSet& root, AsnTableList& tables) {
    for (const auto& [key, child] : NodeAccess::Index(root)) {
        if (!key.starts_with('#')) {
            AsnTable& table = tables.Append();
            table.name.Emplace(key);
            ParaSet2Table(child, &table);
        }
    }
}

enum class NamedSingleTable { kIntoRoot, kIntoChild };

void TakeTables(CParaSet& root, const AsnOptional<AsnTableList>& tables, NamedSingleTable single) {
    if (!tables) {
        NodeAccess::MakeChild(root, reserved::kTableCount) = 0;
        return;
    }
    NodeAccess::MakeChild(root, reserved::kTableCount) = static_cast<int>(tables->Count());
    const bool several = tables->Count() > 1;
    int number = 0;
    for (const AsnTable& table : *tables) {
        const bool named = table.name && !table.name->empty();
        CParaSet* target = &root;
        if (several || (named && single == NamedSingleTable::kIntoChild)) {
            target = &NodeAccess::MakeChild(
                root, named ? std::string(table.name->view()) : "tab" + std::to_string(number));
        }
        Table2ParaSet(&table, *target);
        ++number;
    }
}

}  // namespace

int CParaSet::Para2CommonReqAsn(AsnCommonRequest& request) {
    request.userID = NodeAccess::MakeChild(*this, reserved::kUserID).asInt();
    if (const CParaSet* resource = NodeAccess::Child(*this, reserved::kResID)) {
        AsnDistinguishedResource& target = request.resID.Ensure();
        target.Clear();
        if (resource->asResID() != nullptr) {
            target = *resource->asResID();
        }
    }
    const CParaSet* table_count = NodeAccess::Child(*this, reserved::kTableCount);
    if (table_count == nullptr) {
        return 0;
    }
    const int tables = table_count->asInt();
    if (tables < 1) {
        if (request.tables) {
            request.tables->Clear();
        }
        return 0;
    }
    AsnTableList& list = request.tables.Ensure();
    list.Clear();
    if (tables == 1) {
        ParaSet2Table(this, &list.Append());
    } else {
        AppendNamedTables(*this, list);
    }
    return 0;
}

int CParaSet::Para2CommonRspAsn(AsnCommonResponse& response) {
    if (const CParaSet* code = NodeAccess::Child(*this, reserved::kRetCode)) {
        response.retCode = code->asInt();
    }
    if (const CParaSet* code = NodeAccess::Child(*this, reserved::kRetCodeEx)) {
        response.retCodeEx.Emplace(code->asInt());
    }
    if (CParaSet* version = NodeAccess::Child(*this, reserved::kVer)) {
        const char* text = version->asString();
        response.ver = text == nullptr ? nullptr : new AsnOcts(text);
    }
    const CParaSet* table_count = NodeAccess::Child(*this, reserved::kTableCount);
    const int tables = table_count == nullptr ? 0 : table_count->asInt();
    if (tables <= 0) {
        return 0;
    }
    AsnTableList& list = response.tables.Ensure();
    list.Clear();
    const CParaSet* row_count = NodeAccess::Child(*this, reserved::kRowCount);
    if (tables == 1 && row_count != nullptr && row_count->asInt() != -1) {
        ParaSet2Table(this, &list.Append());
    } else {
        // Unlike a request, also when one table was announced: a root without rows of
        // its own answers with its children.
        AppendNamedTables(*this, list);
    }
    return 0;
}

int CParaSet::CommonReqAsn2Para(const AsnCommonRequest& request) {
    NodeAccess::MakeChild(*this, reserved::kUserID) =
        static_cast<int>(static_cast<std::int64_t>(request.userID));
    if (request.resID) {
        NodeAccess::MakeChild(*this, reserved::kResID) =
            static_cast<const AsnDistinguishedResource*>(request.resID.get());
    }
    TakeTables(*this, request.tables, NamedSingleTable::kIntoChild);
    return 0;
}

int CParaSet::CommonRspAsn2Para(const AsnCommonResponse& response) {
    NodeAccess::MakeChild(*this, reserved::kRetCode) =
        static_cast<int>(static_cast<std::int64_t>(response.retCode));
    if (response.retCodeEx) {
        NodeAccess::MakeChild(*this, reserved::kRetCodeEx) =
            static_cast<int>(static_cast<std::int64_t>(*response.retCodeEx));
    }
    if (response.ver) {
        // A version ends at its first zero octet, unlike a cell.
        const std::string_view version = response.ver->view();
        NodeAccess::MakeChild(*this, reserved::kVer) =
            std::string(version.substr(0, version.find('\0')));
    }
    TakeTables(*this, response.tables, NamedSingleTable::kIntoRoot);
    return 0;
}

}  // namespace FrameUtil
