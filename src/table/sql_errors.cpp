#include "frameutil/sql.h"
#include "kelp/log.h"

namespace FrameUtil {

namespace {

int WarnOf(const dao::CExecStatus& status, const char* text, int line) noexcept {
    const int code = status.GetErrCode();
    if (code != 0 && text != nullptr) {
        LogProcess::Warn(text, LocationInfo("dbapi.cpp", "GetDBErrCode", line));
    }
    return code;
}

}  // namespace

int GetDBErrCode(const dao::CExecResult& result, const char* text) noexcept {
    return WarnOf(result.GetStatus(), text, 41);
}

int GetDBErrCode(const dao::CExecStatus& status, const char* text) noexcept {
    return WarnOf(status, text, 50);
}

int GetDbType() noexcept {
    struct Pair {
        int platform;
        int ours;
    };
    constexpr Pair kTypes[] = {{1, 0}, {2, 1}, {7, 2}, {3, 3}, {6, 4}};
    const int platform = dao::GetDBServerType_OnlyForFrame();
    for (const Pair& type : kTypes) {
        if (type.platform == platform) {
            return type.ours;
        }
    }
    return 5;
}

}  // namespace FrameUtil
