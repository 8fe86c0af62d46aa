// [startup]
#include <cstdio>
#include <string>

#include "frameutil/frameutil.h"
#include "kelp/settings.h"

using namespace FrameUtil;

int main() {
    KelpAppOptions options = KelpAppOptions::FromEnvironment();
    options.procId = 3001;
    if (!KelpAppMgr::Initialize(options))
        return 1;  // the log says why
    Init();        // workers, REST process groups, the start event

    const std::string etc = ns_kelpsdk_wrap::GetPackageRelativePath("", "etc");
    const std::string res = ns_kelpsdk_wrap::GetPackageRelativePath("", "res");
    QWhiteList::Instance()->Init(etc + "/");
    if (!ErrorManage::Instance()->InitRes(res + "/errors.res"))
        std::puts("errors have no texts");

    KelpAppMgr::WaitForStopSignal([] {
        std::puts("ready");
        std::fflush(stdout);
    });

    DestroyKelp();
    QWhiteList::Destroy();
}
// [/startup]
