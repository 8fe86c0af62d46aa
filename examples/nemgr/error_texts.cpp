#include "nemgr/error_texts.h"

#include <json/value.h>

#include <atomic>

#include "frameutil/error_manage.h"

namespace nemgr {
namespace {

// Without a file every failed command would log that it has no texts.
std::atomic<bool> g_loaded{false};

}  // namespace

bool LoadErrorTexts(const std::string& file) {
    const bool loaded = FrameUtil::ErrorManage::Instance()->InitRes(file);
    g_loaded.store(g_loaded.load() || loaded);
    return loaded;
}

ErrorTexts ErrorTextsOf(Result result) {
    Json::Value error;
    if (!g_loaded.load() ||
        FrameUtil::ErrorManage::Instance()->AppendError(ResultId(result), error) != 0) {
        return {ResultText(result), {}, {}, {}};
    }
    const auto text = [&error](const char* member) { return error[member][0].asString(); };
    return {text("descArgs"), text("reasonArgs"), text("detailArgs"), text("adviceArgs")};
}

}  // namespace nemgr
