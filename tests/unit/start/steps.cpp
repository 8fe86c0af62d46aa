#include "steps.h"

#include <cstdio>
#include <mutex>

#include "frameutil/start.h"

namespace {

struct Steps {
    std::mutex mutex;
    std::vector<std::string> list;
    bool show = false;
};

Steps& TheSteps() {
    static Steps& steps = *new Steps;  // steps are taken until the very end
    return steps;
}

void Note(const std::string& step) {
    Steps& steps = TheSteps();
    const std::lock_guard<std::mutex> lock(steps.mutex);
    steps.list.push_back(step);
    if (steps.show) {
        std::fprintf(stderr, "<%s>\n", step.c_str());
    }
}

}  // namespace

std::vector<std::string> steps::Taken() {
    Steps& steps = TheSteps();
    const std::lock_guard<std::mutex> lock(steps.mutex);
    return steps.list;
}
void steps::Forget() {
    Steps& steps = TheSteps();
    const std::lock_guard<std::mutex> lock(steps.mutex);
    steps.list.clear();
}
void steps::ShowOnStandardError() {
    Steps& steps = TheSteps();
    const std::lock_guard<std::mutex> lock(steps.mutex);
    steps.show = true;
}

// name: as it is noted; symbol: the operation's, without arguments.
#define NOTED(name, symbol)  \
    void __real_##symbol();  \
    void __wrap_##symbol() { \
        Note(name);          \
        __real_##symbol();   \
    }

extern "C" {

NOTED("KelpDebugMgr::Destroy", _ZN12KelpDebugMgr7DestroyEv)
NOTED("KELPInstance::cleanup", _ZN7KELPsac12KELPInstance7cleanupEv)
NOTED("TraceClient::Destroy", _ZN10KELPcommon11TraceClient7DestroyEv)
NOTED("LogProcess::Destroy", _ZN10LogProcess7DestroyEv)
NOTED("KelpAppMgr::Destroy", _ZN10KelpAppMgr7DestroyEv)
NOTED("CFrameTaskMgr::Destroy", _ZN9FrameUtil13CFrameTaskMgr7DestroyEv)
NOTED("ErrorManage::Destroy", _ZN9FrameUtil11ErrorManage7DestroyEv)

FrameUtil::CFrameTaskMgr* __real__ZN9FrameUtil13CFrameTaskMgr8InstanceEv();
FrameUtil::CFrameTaskMgr* __wrap__ZN9FrameUtil13CFrameTaskMgr8InstanceEv() {
    Note("CFrameTaskMgr::Instance");
    return __real__ZN9FrameUtil13CFrameTaskMgr8InstanceEv();
}

int __wrap__ZN9FrameUtil16LoadMRBRestGroupEv() {
    Note("LoadMRBRestGroup");
    return steps::rest_group_result;
}

int __real__ZN10TEEventMgr9PostEventEjP12TEEventParamh(TEEventMgr* self, unsigned event,
                                                       TEEventParam* param, unsigned char mgr);
int __wrap__ZN10TEEventMgr9PostEventEjP12TEEventParamh(TEEventMgr* self, unsigned event,
                                                       TEEventParam* param, unsigned char mgr) {
    Note("TEEventMgr::PostEvent " + std::to_string(event) +
         (param == nullptr ? " null " : " not null ") + std::to_string(mgr));
    return __real__ZN10TEEventMgr9PostEventEjP12TEEventParamh(self, event, param, mgr);
}

}  // extern "C"
