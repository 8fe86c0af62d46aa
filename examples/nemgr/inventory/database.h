// nemgr/inventory/database.h - the database that the inventory is kept in.
//
//     auto session = inventory::Lease();
//     FrameUtil::CFrmTableObject elements;
//     inventory::Select(*session, "SELECT address, sysName FROM element", {}, elements);
//     std::string address, name;
//     while (elements() != nullptr) {
//         elements >> address >> name;
//     }
//
// Whatever the database refuses becomes the command's failure kNoDatabase.
//
// Thread rule: thread-safe; a lease belongs to the thread that took it.
#pragma once

#include <string>
#include <string_view>

#include "frameutil/table.h"
#include "kelp/dao.h"

namespace nemgr::inventory {

/// Makes the sessions of this process go to the database `name` of the installation's
/// configuration, or, if it is empty, to one in memory that ends with the process. Makes the
/// tables that are not there. To be called before there are threads. Throws CommandFailure.
void OpenTheDatabase(const std::string& name);

/// Ends all sessions; to be called when there are no more threads.
void CloseTheDatabase();

/// A session of its own until it is destroyed. Throws CommandFailure.
dao::CSessionPool::CLease Lease();

/// Runs one statement and puts its rows into `table`, with the columns' names and types.
/// Throws CommandFailure.
void Select(dao::CSqlSession& session, std::string_view sql, const dao::CParams& parameters,
            FrameUtil::CFrmTableObject& table);

/// Throws CommandFailure unless `status` is success. `what` was being done.
void Require(const dao::CExecStatus& status, const char* what);

}  // namespace nemgr::inventory
