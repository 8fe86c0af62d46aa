// A server whose commands answer what a test of kelpctl wants to see. Its one argument is
// the run directory.

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "frameutil/msg.h"
#include "frameutil/paraset.h"
#include "kelp/log.h"

namespace {

using FrameUtil::AsnCommonRequest;
using FrameUtil::AsnCommonResponse;
using FrameUtil::CParaSet;

constexpr unsigned char kWorkers = 1;

AsnType* NewRequest() {
    return new AsnCommonRequest;
}
AsnType* NewResponse() {
    return new AsnCommonResponse;
}
AsnType* NewInteger() {
    return new AsnInt(5);
}

CParaSet ArgumentsOf(AsnType* request) {
    CParaSet arguments("arguments");
    arguments.CommonReqAsn2Para(static_cast<AsnCommonRequest&>(*request));
    return arguments;
}

// One row: each argument and its type ("i 5", "d 0.5", "t x"), and the user.
void Echo(AsnType* request, AsnType* response, KelpGnlTask*) {
    CParaSet arguments = ArgumentsOf(request);
    CParaSet answer("answer");
    for (const auto& [name, child] : arguments.GetMapValue()) {
        if (name[0] != '#') {
            const char* type = child->type() == CParaSet::PARA_INT      ? "i "
                               : child->type() == CParaSet::PARA_DOUBLE ? "d "
                                                                        : "t ";
            answer[name] = std::string(type) + child->asString();
        }
    }
    answer["user"] = arguments["##UserID"].asInt();
    answer["##retCode"] = 0;
    answer["##TableCount"] = 1;
    answer["##RowCount"] = 1;
    answer.Para2CommonRspAsn(static_cast<AsnCommonResponse&>(*response));
}

// "##retCode" is the argument "code"; with "text" and "item" an error row stands beside it.
void Fail(AsnType* request, AsnType* response, KelpGnlTask*) {
    CParaSet arguments = ArgumentsOf(request);
    CParaSet answer("answer");
    answer["##retCode"] = arguments["code"].asInt();
    if (arguments.find("text") != nullptr) {
        answer["errorText"] = arguments["text"].asString();
        answer["errorItem"] = arguments["item"].asString();
        answer["##TableCount"] = 1;
        answer["##RowCount"] = 1;
    }
    answer.Para2CommonRspAsn(static_cast<AsnCommonResponse&>(*response));
}

// Two tables, "##retCodeEx", "##ver", wide characters, control characters, any octets.
void Tables(AsnType*, AsnType* response, KelpGnlTask*) {
    auto& answer = static_cast<AsnCommonResponse&>(*response);
    answer.retCodeEx.Emplace(7);
    answer.ver.Emplace("1.2");
    for (const char* name : {"first", ""}) {
        FrameUtil::AsnTable& table = answer.tables.Ensure().Append();
        table.name.Emplace(name);
        table.schema.Ensure().Append().name = "text";
        table.schema->Append().name = "number";
        for (const std::string& text :
             {std::string("\u6771\u4eac"), std::string("\x1b[2J"), std::string("\xff\0", 2)}) {
            FrameUtil::AsnDataRow& row = table.rows.Append();
            row.Append().sVal.Emplace(text);
            row.Append().iVal.Emplace(1000);
        }
    }
}

void Throw(AsnType*, AsnType*, KelpGnlTask*) {
    throw std::runtime_error("on purpose");
}

void Die(AsnType*, AsnType*, KelpGnlTask*) {
    _exit(3);
}

void Nothing(AsnType*, AsnType*, KelpGnlTask*) {}

// Leaves the task waiting and never sends what it would have answered.
void Silent(AsnType*, AsnType*, KelpGnlTask* task) {
    CmdMSG* never = nullptr;
    task->KelpSynRecvEx(never, 3600);
    KelpMsgFree(never);
}

using FrameUtil::TModel_RegisterCmd;

const TModel_RegisterCmd g_commands[] = {
    {1, NewRequest, NewResponse, kWorkers, nullptr, Echo, false},
    {2, NewRequest, NewResponse, kWorkers, nullptr, Fail, false},
    {3, NewRequest, NewResponse, kWorkers, nullptr, Tables, false},
    {4, NewRequest, NewResponse, kWorkers, nullptr, Throw, false},
    {5, NewRequest, NewResponse, kWorkers, nullptr, Die, false},
    {6, NewRequest, NewInteger, kWorkers, nullptr, Nothing, false},
    {7, NewRequest, NewResponse, kWorkers, nullptr, Silent, false},
    {8, NewInteger, NewResponse, kWorkers, nullptr, Nothing, false},
};

}  // namespace

int main(int argc, char** argv) {
    KelpAppOptions options;
    options.procId = 77;
    options.runDir = argc > 1 ? argv[1] : "";
    options.shutdownMs = 1000;
    if (!KelpAppMgr::Initialize(options)) {
        return 1;
    }
    auto workers = std::make_unique<KelpGnlTaskMgr>(KelpAppMgr::Instance(), nullptr, kWorkers, 4);
    if (!workers->Initialize() ||
        !KelpAppMgr::Instance()->TMInsertTaskMgr(workers.release(), true)) {
        return 1;
    }
    KelpAppMgr::WaitForStopSignal([] { std::cout << "ready" << std::endl; });
    KelpAppMgr::Destroy();
    LogProcess::Destroy();
}
