// [first-program]
#include <cstdio>

#include "frameutil/msg.h"
#include "frameutil/paraset.h"

using namespace FrameUtil;

// A command: as many rows as its argument asks for.
static void Squares(AsnType* request, AsnType* response, KelpGnlTask*) {
    CParaSet arguments("arguments"), row("row"), answer("answer");
    arguments.CommonReqAsn2Para(static_cast<AsnCommonRequest&>(*request));
    for (int i = 0; i < arguments["count"].asInt(); ++i) {
        row["number"] = i;
        row["square"] = i * i;
        answer.AddRow(i, row);
    }
    answer["##TableCount"] = 1;
    answer.Para2CommonRspAsn(static_cast<AsnCommonResponse&>(*response));
}
static AsnType* NewRequest() {
    return new AsnCommonRequest;
}
static AsnType* NewResponse() {
    return new AsnCommonResponse;
}
static TModel_RegisterCmd g_squares(1000, NewRequest, NewResponse, 1, nullptr, Squares, false);

int main() {
    KelpAppOptions options;
    options.procId = 4000;  // this process's type: where others send its commands
    if (!KelpAppMgr::Initialize(options))
        return 1;
    auto* workers = new KelpGnlTaskMgr(KelpAppMgr::Instance(), nullptr, 1, 4);
    if (!workers->Initialize())
        return 1;
    KelpAppMgr::Instance()->TMInsertTaskMgr(workers, true);  // it is the platform's now

    CParaSet arguments("arguments"), answer("answer");
    arguments["count"] = 4;
    arguments["##TableCount"] = 1;
    arguments["##RowCount"] = 1;
    AsnCommonRequest request;
    AsnCommonResponse response;
    arguments.Para2CommonReqAsn(request);
    int code = SynSendMsg({4000, 0, 0, 0}, 1000, request, &response, 5);  // at most 5 s
    answer.CommonRspAsn2Para(response);
    for (int i = 0; i < answer.GetRowCount(); ++i) {
        std::printf("%d %d\n", answer["number"][i].asInt(), answer["square"][i].asInt());
    }
    KelpAppMgr::Destroy();
    return code;
}
// [/first-program]
