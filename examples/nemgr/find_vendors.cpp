// nemgr/find_vendors.cpp - the command kFindVendors: a large table, built column by column.

#include <string>
#include <vector>

#include "nemgr/arguments.h"
#include "nemgr/commands.h"
#include "nemgr/results.h"
#include "nemgr/serve.h"
#include "nemgr/vendors/registry.h"

namespace nemgr {
namespace {

using vendors::Vendor;

std::vector<const Vendor*> Find(const vendors::Registry& registry, const Arguments& arguments) {
    const std::string prefix = arguments.Text("prefix").value_or("");
    const std::string name = arguments.Text("name").value_or("");
    if (!prefix.empty() && !name.empty()) {
        throw CommandFailure(Result::kBadArgument, "both prefix and name are given");
    }
    if (!name.empty()) {
        return registry.FindName(name);
    }
    const auto digits = vendors::PrefixDigits(prefix);
    if (!digits) {
        throw CommandFailure(Result::kBadArgument, "prefix: '" + prefix + "' is not hexadecimal");
    }
    return registry.FindPrefix(*digits);
}

void FindVendors(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {"prefix", "name"});
    const vendors::Registry& registry = vendors::TheRegistry();
    if (registry.empty()) {
        throw CommandFailure(Result::kNoRegistry, registry.fault());
    }
    const std::vector<const Vendor*> found = Find(registry, arguments);
    if (found.empty()) {
        throw CommandFailure(Result::kUnknownVendor, "'" + arguments.Text("prefix").value_or("") +
                                                         arguments.Text("name").value_or("") + "'");
    }
    // Writing the columns saves the row that AddRow would copy: worth it for tens of
    // thousands of rows.
    FrameUtil::CParaSet& assignment = answer["assignment"];
    FrameUtil::CParaSet& block = answer["block"];
    FrameUtil::CParaSet& organization = answer["organization"];
    FrameUtil::CParaSet& postal_address = answer["postalAddress"];
    int row = 0;
    for (const Vendor* vendor : found) {
        assignment[row] = vendor->assignment;
        block[row] = vendor->block;
        organization[row] = vendor->organization;
        postal_address[row] = vendor->postal_address;
        ++row;
    }
    answer["##RowCount"] = row;
}

void OnFindVendors(AsnType* request, AsnType* response, KelpGnlTask*) {
    Serve(request, response, FindVendors);
}

const FrameUtil::TModel_RegisterCmd g_findVendors(kFindVendors, NewRequest, NewResponse, kWorkers,
                                                  nullptr, OnFindVendors, false);

}  // namespace
}  // namespace nemgr
