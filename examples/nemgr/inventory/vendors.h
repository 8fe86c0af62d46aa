// nemgr/inventory/vendors.h - the IEEE registry in the inventory.
//
// Thread rule: thread-safe, once the registry is loaded.
#pragma once

#include <string>

#include "frameutil/table.h"

namespace nemgr::inventory {

/// Puts the registry's files in `directory` (vendors/registry.h) into the database, unless
/// it has them from these very files already. Files that are missing leave what is there.
/// To be called before there are threads. Throws CommandFailure (kNoDatabase).
void LoadVendors(const std::string& directory);

/// The columns block, assignment, organization and postalAddress of those whose assignment
/// begins with `digits` (vendors::PrefixDigits), or that own the longer prefix or whole address
/// `digits`; in the order of their assignments. All of them if it is empty. Throws
/// CommandFailure: kNoRegistry when there are none at all.
void FindPrefix(const std::string& digits, FrameUtil::CFrmTableObject& found);

/// The same of those whose organization begins with `name`, the case of ASCII letters aside.
void FindName(const std::string& name, FrameUtil::CFrmTableObject& found);

}  // namespace nemgr::inventory
