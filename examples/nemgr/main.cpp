// nemgr - an element manager on the platform: the example of a server process.
//
// Where to begin: commands.h says what it serves, serve.h how a command is written, and
// read_system.cpp is the shortest of them.

#include <iostream>

#include "kelp/log.h"
#include "kelp/task.h"
#include "nemgr/commands.h"
#include "nemgr/inventory/database.h"
#include "nemgr/inventory/vendors.h"
#include "nemgr/results.h"
#include "nemgr/serve.h"
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

bool StartWorkers() {
    auto* workers = new KelpGnlTaskMgr(KelpAppMgr::Instance(), nullptr, nemgr::kWorkers,
                                       nemgr::TheSettings().workers);
    if (!workers->Initialize()) {
        delete workers;
        return false;
    }
    return KelpAppMgr::Instance()->TMInsertTaskMgr(workers, true);
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

    // From here on other processes reach this one. If it fails the log says why.
    if (!KelpAppMgr::Initialize(AppOptions()) || !StartWorkers()) {
        KelpAppMgr::Destroy();
        return 1;
    }
    std::cout << "nemgr: ready" << std::endl;
    KelpAppMgr::WaitForStopSignal();
    KelpAppMgr::Destroy();
    nemgr::inventory::CloseTheDatabase();
    LogProcess::Destroy();
}
