#include "frameutil/msg.h"

namespace FrameUtil {
namespace {

// The library's shared task manager.
constexpr unsigned char kSharedTaskMgr = 200;

}  // namespace

TModel_RegisterCmd::TModel_RegisterCmd(unsigned long cmdCode, AsnType* (*reqCreator)(),
                                       AsnType* (*rspCreator)(), unsigned char taskMgrId,
                                       KelpGnlTask* (*taskCreator)(KelpTaskMgr*),
                                       void (*handler)(AsnType*, AsnType*, KelpGnlTask*),
                                       bool useSharedMgr) {
    const KelpTaskRegister registration{useSharedMgr ? kSharedTaskMgr : taskMgrId,
                                        cmdCode,
                                        taskCreator,
                                        reqCreator,
                                        rspCreator,
                                        nullptr,
                                        handler};
    if (KelpTaskCreator* creator = KelpTaskCreator::Instance(); creator != nullptr) {
        creator->RegisterTask(registration);
    }
}

}  // namespace FrameUtil
