// nemgr/find_vendors.cpp - the command kFindVendors: a large table, built column by column.

#include <string>

#include "nemgr/arguments.h"
#include "nemgr/commands.h"
#include "nemgr/inventory/vendors.h"
#include "nemgr/results.h"
#include "nemgr/serve.h"
#include "nemgr/vendors/registry.h"

namespace nemgr {
namespace {

void Find(const Arguments& arguments, FrameUtil::CFrmTableObject& found) {
    const std::string prefix = arguments.Text("prefix").value_or("");
    const std::string name = arguments.Text("name").value_or("");
    if (!prefix.empty() && !name.empty()) {
        throw CommandFailure(Result::kBadArgument, "both prefix and name are given");
    }
    const auto digits = vendors::PrefixDigits(prefix);
    if (!digits) {
        throw CommandFailure(Result::kBadArgument, "prefix: '" + prefix + "' is not hexadecimal");
    }
    if (name.empty()) {
        inventory::FindPrefix(*digits, found);
    } else {
        inventory::FindName(name, found);
    }
    if (found.GetRowCount() == 0) {
        throw CommandFailure(Result::kUnknownVendor, "'" + prefix + name + "'");
    }
}

void FindVendors(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {"prefix", "name"});
    FrameUtil::CFrmTableObject found;
    Find(arguments, found);
    // Writing the columns saves the row that AddRow would copy: worth it for tens of
    // thousands of rows.
    FrameUtil::CParaSet& assignment = answer["assignment"];
    FrameUtil::CParaSet& block = answer["block"];
    FrameUtil::CParaSet& organization = answer["organization"];
    FrameUtil::CParaSet& postal_address = answer["postalAddress"];
    int row = 0;
    for (TEValue cell; found() != nullptr; ++row) {
        for (FrameUtil::CParaSet* column : {&block, &assignment, &organization, &postal_address}) {
            found >> cell;
            (*column)[row] = cell;
        }
    }
    answer["##RowCount"] = row;
}

const Command<FindVendors> g_findVendors(kFindVendors);

}  // namespace
}  // namespace nemgr
