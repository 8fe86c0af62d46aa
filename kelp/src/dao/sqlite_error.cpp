#include "dao/sqlite_driver.h"

namespace kelp::db {

namespace {

struct Mapping {
    int native;
    int code;
};

// Extended codes first: the primary one is what is left of them.
constexpr Mapping kMappings[] = {
    {SQLITE_BUSY_SNAPSHOT, dao::DAO_ERR_CONFLICT},
    {SQLITE_LOCKED_SHAREDCACHE, dao::DAO_ERR_LOCKED},
    {SQLITE_IOERR_NOMEM, dao::DAO_ERR_NO_MEMORY},
    {SQLITE_CONSTRAINT_DATATYPE, dao::DAO_ERR_DATA},
    {SQLITE_ERROR, dao::DAO_ERR_SYNTAX},
    {SQLITE_PERM, dao::DAO_ERR_PERMISSION},
    {SQLITE_AUTH, dao::DAO_ERR_PERMISSION},
    {SQLITE_BUSY, dao::DAO_ERR_LOCKED},
    {SQLITE_LOCKED, dao::DAO_ERR_LOCKED},
    {SQLITE_NOMEM, dao::DAO_ERR_NO_MEMORY},
    {SQLITE_READONLY, dao::DAO_ERR_READ_ONLY},
    {SQLITE_INTERRUPT, dao::DAO_ERR_TIMEOUT},
    {SQLITE_IOERR, dao::DAO_ERR_IO},
    {SQLITE_CORRUPT, dao::DAO_ERR_IO},
    {SQLITE_NOTADB, dao::DAO_ERR_IO},
    {SQLITE_FULL, dao::DAO_ERR_FULL},
    {SQLITE_CANTOPEN, dao::DAO_ERR_CONNECT},
    {SQLITE_TOOBIG, dao::DAO_ERR_DATA},
    {SQLITE_MISMATCH, dao::DAO_ERR_DATA},
    {SQLITE_CONSTRAINT, dao::DAO_ERR_CONSTRAINT},
};

}  // namespace

int SqliteErrCode(int native_code) {
    for (const int wanted : {native_code, native_code & 0xFF}) {
        for (const Mapping& mapping : kMappings) {
            if (mapping.native == wanted) {
                return mapping.code;
            }
        }
    }
    return dao::DAO_ERR_OTHER;
}

}  // namespace kelp::db
