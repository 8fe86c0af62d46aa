#include "nemgr/serve.h"

#include <exception>
#include <string>

#include "frameutil/log.h"
#include "nemgr/error_texts.h"
#include "nemgr/results.h"

namespace nemgr {
namespace {

// One row, so that "##TableCount" and "##RowCount" are both 1.
void FillFailure(FrameUtil::CParaSet& answer, Result result, const char* item) {
    const ErrorTexts texts = ErrorTextsOf(result);
    answer.clear();  // rows that were there already are no answer
    answer["##retCode"] = static_cast<int>(result);
    answer["##TableCount"] = 1;
    answer["##RowCount"] = 1;
    answer["errorText"] = texts.desc;
    answer["errorItem"] = item;
    answer["errorReason"] = texts.reason;
    answer["errorDetail"] = texts.detail;
    answer["errorAdvice"] = texts.advice;
}

}  // namespace

AsnType* NewRequest() {
    return new FrameUtil::AsnCommonRequest;
}

AsnType* NewResponse() {
    return new FrameUtil::AsnCommonResponse;
}

void Serve(AsnType* request, AsnType* response, Work work) {
    FrameUtil::CParaSet arguments("arguments");
    FrameUtil::CParaSet answer("answer");
    try {
        arguments.CommonReqAsn2Para(static_cast<FrameUtil::AsnCommonRequest&>(*request));
        work(arguments, answer);
        answer["##retCode"] = static_cast<int>(Result::kSuccess);
        answer["##TableCount"] = 1;
    } catch (const CommandFailure& failure) {
        FillFailure(answer, failure.result(), failure.item());
    } catch (const std::exception& e) {
        FrameUtil::TraceError(static_cast<unsigned long>(Result::kInternalFault),
                              "[Serve] the command failed: %s", e.what());
        FillFailure(answer, Result::kInternalFault, e.what());
    }
    answer.Para2CommonRspAsn(static_cast<FrameUtil::AsnCommonResponse&>(*response));
}

}  // namespace nemgr
