// nemgr - an element manager on the platform: the example of a server process.
//
// Where to begin: commands.h says what it serves, serve.h how a command is written, and
// read_system.cpp is the shortest of them.

#include <iostream>
#include <string>

#include "frameutil/platform.h"
#include "kelp/settings.h"
#include "kelp/task.h"
#include "nemgr/commands.h"
#include "nemgr/error_texts.h"
#include "nemgr/inventory/database.h"
#include "nemgr/inventory/vendors.h"
#include "nemgr/results.h"
#include "nemgr/settings.h"
#include "nemgr/snmp/library.h"

namespace {

KelpAppOptions AppOptions() {
    const nemgr::Settings& settings = nemgr::TheSettings();
    KelpAppOptions options;
    options.procId = nemgr::kProcType;
    options.procHandle = settings.proc_handle;
    options.runDir = settings.run_dir;
    return options;
}

// The files in installed/ of this program's sources, as they stand in the installation root. One
// that is missing or malformed is told in the log, and nemgr serves without it.
void LoadInstalledFiles() {
    const std::string etc = ns_kelpsdk_wrap::GetPackageRelativePath("", "etc");
    if (etc.empty()) {
        return;  // there is no installation
    }
    FrameUtil::QWhiteList::Instance()->Init(etc + "/");
    nemgr::LoadErrorTexts(ns_kelpsdk_wrap::GetPackageRelativePath("", "res/nemgr.res"));
}

}  // namespace

int main(int argc, char** argv) {
    int status = 0;
    if (!nemgr::ParseSettings(argc, argv, status)) {
        return status;
    }
    // Libraries and data first: workers find them ready.
    const nemgr::snmp::Library snmp;
    try {
        nemgr::inventory::OpenTheDatabase(nemgr::TheSettings().database);
        nemgr::inventory::LoadVendors(nemgr::TheSettings().registry);
    } catch (const nemgr::CommandFailure& failure) {
        std::cerr << "nemgr: " << nemgr::ResultText(failure.result()) << ": " << failure.item()
                  << '\n';
        return 1;
    }

    if (!KelpAppMgr::Initialize(AppOptions())) {
        return 1;  // the log says why
    }
    FrameUtil::Init();  // from here on commands are served
    LoadInstalledFiles();
    KelpAppMgr::WaitForStopSignal([] { std::cout << "nemgr: ready" << std::endl; });

    FrameUtil::DestroyKelp();
    FrameUtil::QWhiteList::Destroy();
    nemgr::inventory::CloseTheDatabase();
}
