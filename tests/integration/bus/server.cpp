// bus_server PROC HANDLE RUN_DIR WORKERS [QUEUE [FRAME_MS]]: serves the commands of
// commands.h until SIGTERM. Writes a line to standard output when it is ready.

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "commands.h"
#include "frameutil/msg.h"
#include "kelp/asn1.h"

namespace {

using bus_test::kManager;

std::atomic<int> g_holding{0};

const std::string& In(AsnType* request) {
    return static_cast<AsnOcts*>(request)->str();
}
std::string& Out(AsnType* response) {
    return static_cast<AsnOcts*>(response)->str();
}
AsnType* NewOcts() {
    return new AsnOcts;
}

void Echo(AsnType* request, AsnType* response, KelpGnlTask*) {
    Out(response) = In(request);
}
void Hold(AsnType* request, AsnType* response, KelpGnlTask*) {
    ++g_holding;
    while (!std::filesystem::exists(In(request))) {
        ::usleep(1000);
    }
    --g_holding;
    Out(response) = In(request);
}
void Throw(AsnType*, AsnType*, KelpGnlTask*) {
    throw std::runtime_error("as asked");
}
void EndThread(AsnType*, AsnType*, KelpGnlTask*) {
    ::pthread_exit(nullptr);
}
void Relay(AsnType* request, AsnType* response, KelpGnlTask*) {
    char* rest = nullptr;
    const auto proc = static_cast<std::uint16_t>(std::strtoul(In(request).c_str(), &rest, 10));
    const unsigned long command = std::strtoul(rest, &rest, 10);
    AsnOcts text(std::string(*rest == ' ' ? rest + 1 : rest));
    AsnOcts answer;
    const int code = FrameUtil::SynSendMsg({proc, 0, kManager, 0}, command, text, &answer, 30);
    Out(response) = code == 0 ? answer.str() : "code " + std::to_string(code);
}
void Make(AsnType* request, AsnType* response, KelpGnlTask*) {
    Out(response).assign(std::strtoul(In(request).c_str(), nullptr, 10), 'x');
}
void Count(AsnType*, AsnType* response, KelpGnlTask*) {
    Out(response) = std::to_string(g_holding);
}
void Report(AsnType*, AsnType* response, KelpGnlTask*) {
    Out(response) = KelpDebugMgr::Report();
}

using Register = FrameUtil::TModel_RegisterCmd;
const Register g_all[] = {
    {bus_test::kEcho, NewOcts, NewOcts, kManager, nullptr, Echo, false},
    {bus_test::kHold, NewOcts, NewOcts, kManager, nullptr, Hold, false},
    {bus_test::kThrow, NewOcts, NewOcts, kManager, nullptr, Throw, false},
    {bus_test::kEndThread, NewOcts, NewOcts, kManager, nullptr, EndThread, false},
    {bus_test::kRelay, NewOcts, NewOcts, kManager, nullptr, Relay, false},
    {bus_test::kMake, NewOcts, NewOcts, kManager, nullptr, Make, false},
    {bus_test::kReport, NewOcts, NewOcts, kManager + 1, nullptr, Report, false},
    {bus_test::kCount, NewOcts, NewOcts, kManager + 1, nullptr, Count, false},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        std::fprintf(stderr, "usage: bus_server PROC HANDLE RUN_DIR WORKERS [QUEUE [FRAME_MS]]\n");
        return 2;
    }
    KelpAppOptions options;
    options.procId = static_cast<std::uint16_t>(std::atoi(argv[1]));
    options.procHandle = static_cast<std::uint16_t>(std::atoi(argv[2]));
    options.runDir = argv[3];
    options.shutdownMs = 5000;
    if (argc > 5) {
        options.requestQueueLimit = std::strtoul(argv[5], nullptr, 10);
    }
    if (argc > 6) {
        options.frameDeadlineMs = std::atoi(argv[6]);
    }
    if (!KelpAppMgr::Initialize(options)) {
        return 1;
    }
    KelpAppMgr& app = *KelpAppMgr::Instance();
    for (const int id : {int{kManager}, kManager + 1}) {
        auto* mgr = new KelpGnlTaskMgr(&app, nullptr, static_cast<unsigned char>(id),
                                       id == kManager ? std::atoi(argv[4]) : 1);
        if (!mgr->Initialize() || !app.TMInsertTaskMgr(mgr, true)) {
            return 1;
        }
    }
    KelpAppMgr::WaitForStopSignal([] {
        std::printf("ready\n");
        std::fflush(stdout);
    });
    KelpAppMgr::Destroy();
    return 0;
}
