// nemgr/serve.h - the way from a request to a command's work and back to the answer.
//
// A command is a function from arguments to an answer and its registration:
//
//     void ReadSystem(FrameUtil::CParaSet& arguments, FrameUtil::CParaSet& answer) { ... }
//
//     const Command<ReadSystem> g_readSystem(kReadSystem);
//
// Thread rule: thread-safe. Commands run on several workers at once.
#pragma once

#include "frameutil/msg.h"
#include "frameutil/paraset.h"

namespace nemgr {

AsnType* NewRequest();   ///< an AsnCommonRequest
AsnType* NewResponse();  ///< an AsnCommonResponse

/// A command's work: fills `answer` with rows, or throws CommandFailure.
using Work = void (*)(FrameUtil::CParaSet& arguments, FrameUtil::CParaSet& answer);

/// Runs `work` on the request's arguments and fills the response with its answer. Nothing
/// leaves this function as an exception: what `work` throws becomes a "##retCode".
void Serve(AsnType* request, AsnType* response, Work work);

/// The registration of a command, an object of static storage: requests of its code are
/// answered by kWork on the library's workers.
template <Work kWork>
class Command : public FrameUtil::TModel_RegisterCmd {
  public:
    explicit Command(unsigned long code)
        : TModel_RegisterCmd(code, NewRequest, NewResponse, 0, nullptr, Handle, true) {}

  private:
    static void Handle(AsnType* request, AsnType* response, KelpGnlTask*) {
        Serve(request, response, kWork);
    }
};

}  // namespace nemgr
