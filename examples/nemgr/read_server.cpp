// nemgr/read_server.cpp - the command kReadServer: what the platform made of this process.

#include <map>
#include <string>
#include <vector>

#include "frameutil/platform.h"
#include "frameutil/strutil.h"
#include "kelp/message.h"
#include "nemgr/arguments.h"
#include "nemgr/commands.h"
#include "nemgr/results.h"
#include "nemgr/serve.h"

namespace nemgr {
namespace {

std::string RestGroups(int handle) {
    std::map<int, std::map<int, std::string>> groups;
    if (FrameUtil::GetRestGroupByMRBProcHandle(kProcType, handle, groups) != 0) {
        throw CommandFailure(Result::kNoGateway, "the REST groups are not known");
    }
    FrameUtil::StrLinker names(',');
    for (const auto& [number, name] : groups[kProcType]) {
        names << name.c_str();
    }
    return names();
}

std::string CommandsWithoutToken() {
    std::vector<std::string> entries;
    FrameUtil::QWhiteList::Instance()->GetWhiteList(entries);
    FrameUtil::StrLinker codes(',');
    for (const std::string& entry : entries) {
        codes << entry.c_str();
    }
    return codes();
}

void ReadServer(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {});
    const int handle = KelpGetProcHandle();
    answer["procHandle"] = handle;
    answer["networkSize"] = static_cast<int>(FrameUtil::GetMGMTSize());
    answer["workers"] = static_cast<int>(FrameUtil::GetFrameTaskMgrMaxThreadNum(0));
    answer["restGroups"] = RestGroups(handle);
    answer["withoutToken"] = CommandsWithoutToken();
    answer["##RowCount"] = 1;
}

const Command<ReadServer> g_readServer(kReadServer);

}  // namespace
}  // namespace nemgr
