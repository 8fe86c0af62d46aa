#include "frameutil/start.h"

#include "frameutil/error_manage.h"
#include "frameutil/restgroup.h"
#include "kelp/log.h"
#include "kelp/service_agent.h"

namespace FrameUtil {

void Init() {
    CFrameTaskMgr::Instance();
    TEEventMgr* const events = TEEventMgr::Instance();
    if (events == nullptr) {
        return;
    }
    LoadMRBRestGroup();
    events->PostEvent(FRAME_START_EVENT, nullptr, 0);
}

void DestroyKelp() {
    KelpDebugMgr::Destroy();
    KELPsac::KELPInstance::cleanup();
    KELPcommon::TraceClient::Destroy();
    LogProcess::Destroy();
    KelpAppMgr::Destroy();
    // Handlers used these until here.
    CFrameTaskMgr::Destroy();
    ErrorManage::Destroy();
}

}  // namespace FrameUtil
