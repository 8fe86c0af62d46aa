// [square]
#include <cstdio>

#include "frameutil/frameutil.h"

using namespace FrameUtil;

// A command's handler: a request's arguments in, an answer's values out.
static void Square(AsnType* request, AsnType* response, KelpGnlTask*) {
    CParaSet arguments("arguments"), answer("answer");
    arguments.CommonReqAsn2Para(static_cast<AsnCommonRequest&>(*request));
    answer["square"] = arguments["number"].asInt() * arguments["number"].asInt();
    answer["##RowCount"] = 1;
    answer["##TableCount"] = 1;
    answer.Para2CommonRspAsn(static_cast<AsnCommonResponse&>(*response));
}
static TModel_RegisterCmd g_square(
    1000, [] { return static_cast<AsnType*>(new AsnCommonRequest); },
    [] { return static_cast<AsnType*>(new AsnCommonResponse); }, 1, nullptr, Square, false);

int main() {
    KelpAppOptions options;
    options.procId = 4000;  // where other processes send their requests
    if (!KelpAppMgr::Initialize(options))
        return 1;
    auto* workers = new KelpGnlTaskMgr(KelpAppMgr::Instance(), nullptr, 1, 4);
    if (!workers->Initialize())
        return 1;
    KelpAppMgr::Instance()->TMInsertTaskMgr(workers, true);

    CParaSet arguments("arguments"), answer("answer");  // a caller, in this or any process
    arguments["number"] = 7;
    arguments["##RowCount"] = 1;
    arguments["##TableCount"] = 1;
    AsnCommonRequest request;
    AsnCommonResponse response;
    arguments.Para2CommonReqAsn(request);
    const int code = SynSendMsg({4000, 0, 0, 0}, 1000, request, &response, 5);
    answer.CommonRspAsn2Para(response);
    std::printf("code %d, square %d\n", code, answer["square"].asInt());
    KelpAppMgr::Destroy();
    return code;
}
// [/square]
