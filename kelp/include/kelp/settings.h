// Where the platform is installed and what it is configured to do.
//
//     // OSS_ROOT=/opt/nms/oss
//     ns_kelpsdk_wrap::GetPackageRelativePath("", "rtsp/DRKFrame");
//     // "/opt/nms/oss/rtsp/DRKFrame"
//
//     ns_kelpsdk_wrap::GetIRBaseURL() + "/rest/mrb/v1/getrestgroupinfo"
//
//     std::string tag;
//     KELPSetting::Setting::instance()->getParamValue("/kelp/sac/services/nemgr/svctag", tag);
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
#include <vector>

#include "kelp/export.h"

namespace ns_kelpsdk_wrap {

// The directory of a package: `relative` below the installation root, or below `root` when
// that is not empty; one slash between the two, none at the end. Nothing is looked up: the
// directory need not exist. Without a root the result is empty, and a warning in the log
// says that OSS_ROOT is not set.
KELP_API std::string GetPackageRelativePath(const std::string& root, const std::string& relative);

// The address of the platform's REST gateway, "https://HOST:PORT" with no slash at its end,
// to which a path is appended: member "baseUrl" of member "gateway" of OSS_ROOT/etc/kelp.json.
// "" when there is none or it is no such address; a warning in the log says why, naming file
// and line. The file is read again when it has changed.
KELP_API std::string GetIRBaseURL();

}  // namespace ns_kelpsdk_wrap

namespace KELPSetting {

// What asking for a setting ends with, besides 0.
enum SettingCode : int {
    SETTING_ERR_NO_ROOT = 0x43510011,    // OSS_ROOT is not set
    SETTING_ERR_FILE = 0x43510012,       // etc/kelp.json cannot be read
    SETTING_ERR_FORMAT = 0x43510013,     // it is no strict JSON, or the value is no text or integer
    SETTING_ERR_NOT_FOUND = 0x43510014,  // there is no such group or parameter
};

// The platform's settings: a tree of groups with parameters as its leaves, which stands as
// member "settings" in OSS_ROOT/etc/kelp.json:
//
//     "settings": {"kelp": {"sac": {"services": {
//         "nemgr": {"svctag": "nemgr", "msgProcess": {"executableFile": "nemgr"}}}}}}
//
// Its parameters are "/kelp/sac/services/nemgr/svctag" and
// "/kelp/sac/services/nemgr/msgProcess/executableFile". thread-safe. Nothing here is logged:
// the caller has the code.
class KELP_API Setting {
  public:
    // The process's one object; it has no state and is never released.
    static Setting* instance() noexcept;

    // Replaces `subGroups` by the paths of the groups directly within `group`, sorted, each
    // with a slash at its end so that a parameter's name can be appended:
    // "/kelp/sac/services/nemgr/". The slash at the end of `group` may be left out. A group in
    // which no parameter stands, however deep, is none.
    //
    // Result: 0, also when the group holds parameters only; otherwise one of SettingCode, and
    // `subGroups` is as it was.
    int getGroupSubGroups(const std::string& group, std::vector<std::string>& subGroups);

    // Puts the text of the parameter `param`, or an integer's decimal digits, into `value`.
    //
    // Result: 0 or one of SettingCode, and `value` is as it was.
    int getParamValue(const std::string& param, std::string& value);

  private:
    Setting() = default;
};

}  // namespace KELPSetting

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
