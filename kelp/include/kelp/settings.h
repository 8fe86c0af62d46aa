// Where the platform is installed and what it is configured to do.
//
//     // OSS_ROOT=/opt/nms/oss
//     ns_kelpsdk_wrap::GetPackageRelativePath("", "rtsp/DRKFrame");
//     // "/opt/nms/oss/rtsp/DRKFrame"
//
//     std::map<std::string, std::string> info;
//     if (KELPcommonWrap::SysConfigure().getDBServerInfoByDBName("MCDB", info) == 0) ...
//
// The environment variable OSS_ROOT names the installation root; the processes of one
// installation share it. It is read at every call.
//
// thread-safe, as long as no thread changes the environment meanwhile.
#pragma once

#include <map>
#include <string>

#include "kelp/export.h"

namespace ns_kelpsdk_wrap {

// The directory of a package: `relative` below the installation root, or below `root` when
// that is not empty; one slash between the two, none at the end. Nothing is looked up: the
// directory need not exist. Without a root the result is empty, and a warning in the log
// says that OSS_ROOT is not set.
KELP_API std::string GetPackageRelativePath(const std::string& root, const std::string& relative);

}  // namespace ns_kelpsdk_wrap

namespace KELPcommonWrap {

// What reading the configuration ends with, besides 0.
enum SysConfCodeEnum : int {
    SYSCONF_ERR_NO_ROOT = 0x43510001,      // OSS_ROOT is not set
    SYSCONF_ERR_FILE = 0x43510002,         // etc/kelp.json cannot be opened
    SYSCONF_ERR_FORMAT = 0x43510003,       // it is no regular file, too large, no strict JSON, or
                                           // a member is of a kind that it cannot be
    SYSCONF_ERR_PERMISSION = 0x43510004,   // it holds passwords and others may read or change it
    SYSCONF_ERR_NO_DATABASE = 0x43510005,  // it names no such database
    SYSCONF_ERR_NO_MEMORY = 0x43510006,
};

// The configuration of the system. immutable; the file is read at every call.
class KELP_API SysConfigure {
  public:
    // Puts the members of the database `dbName` of OSS_ROOT/etc/kelp.json into `info`, replacing
    // what it held: "lib", "serviceName", "user", "password", "adminUser", "adminPassword",
    // "url", "type", and whatever else stands there (docs/formats/databases.md). Whole numbers
    // come as decimal text.
    //
    // Result: 0 or one of SysConfCodeEnum, with one warning in the log that names the file, the
    // line and the database and never a value; `info` is then as it was. Nothing is kept: all
    // that this call held of the file is overwritten before it returns. Wiping `info` is the
    // caller's. Does not throw.
    int getDBServerInfoByDBName(const std::string& dbName,
                                std::map<std::string, std::string>& info) const noexcept;
};

}  // namespace KELPcommonWrap
