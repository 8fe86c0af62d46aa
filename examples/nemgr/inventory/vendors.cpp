#include "nemgr/inventory/vendors.h"

#include "kelp/log.h"
#include "nemgr/inventory/database.h"
#include "nemgr/results.h"
#include "nemgr/vendors/registry.h"

namespace nemgr::inventory {
namespace {

constexpr const char* kLoading = "the vendor registry cannot be loaded";

// Set before there are threads.
std::string& TheFault() {
    static std::string fault;
    return fault;
}

std::string Upper(std::string text) {
    for (char& c : text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return text;
}

bool HasFingerprint(dao::CSqlSession& session, const std::string& fingerprint) {
    FrameUtil::CFrmTableObject rows;
    Select(session, "SELECT fingerprint FROM vendorSource WHERE fingerprint = $1", {fingerprint},
           rows);
    return rows.GetRowCount() != 0;
}

void Store(dao::CSqlSession& session, const vendors::Registry& registry,
           const std::string& fingerprint) {
    dao::CTransaction change(session);
    Require(change.GetStatus(), kLoading);
    Require(session.Exec("DELETE FROM vendor"), kLoading);
    Require(session.Exec("DELETE FROM vendorSource"), kLoading);
    dao::CStatement insert;
    Require(session.Prepare("INSERT INTO vendor (position, block, assignment, organization,"
                            " organizationKey, postalAddress) VALUES ($1, $2, $3, $4, $5, $6)",
                            insert),
            kLoading);
    int position = 0;
    for (const vendors::Vendor& vendor : registry.vendors()) {
        Require(insert.Exec({position++, vendor.block, vendor.assignment, vendor.organization,
                             Upper(vendor.organization), vendor.postal_address}),
                kLoading);
    }
    Require(session.Exec("INSERT INTO vendorSource (fingerprint) VALUES ($1)", {fingerprint}),
            kLoading);
    Require(change.Commit(), kLoading);
}

void Find(const std::string& condition, const std::string& text,
          FrameUtil::CFrmTableObject& found) {
    const auto session = Lease();
    Select(*session,
           "SELECT block, assignment, organization, postalAddress FROM vendor WHERE " + condition +
               " ORDER BY position",
           {text}, found);
    if (found.GetRowCount() != 0) {
        return;
    }
    FrameUtil::CFrmTableObject any;
    Select(*session, "SELECT position FROM vendor LIMIT 1", {}, any);
    if (any.GetRowCount() == 0) {
        throw CommandFailure(Result::kNoRegistry, TheFault());
    }
}

}  // namespace

void LoadVendors(const std::string& directory) {
    const std::string fingerprint = vendors::Fingerprint(directory);
    const auto session = Lease();
    if (!fingerprint.empty() && HasFingerprint(*session, fingerprint)) {
        return;
    }
    vendors::Registry registry;
    registry.Load(directory);
    TheFault() = registry.fault();
    if (!registry.empty()) {
        Store(*session, registry, fingerprint);
        LogProcess::Info("[inventory] " + std::to_string(registry.size()) +
                             " vendors were loaded from " + directory,
                         LocationInfo("nemgr", "LoadVendors", 0));
    }
}

void FindPrefix(const std::string& digits, FrameUtil::CFrmTableObject& found) {
    Find(
        "substr(assignment, 1, length(CAST($1 AS VARCHAR(16)))) = CAST($1 AS VARCHAR(16))"
        " OR substr(CAST($1 AS VARCHAR(16)), 1, length(assignment)) = assignment",
        digits, found);
}

void FindName(const std::string& name, FrameUtil::CFrmTableObject& found) {
    Find(
        "substr(organizationKey, 1, length(CAST($1 AS VARCHAR(1024)))) ="
        " CAST($1 AS VARCHAR(1024))",
        Upper(name), found);
}

}  // namespace nemgr::inventory
