// nemgr/serve.h - the way from a request to a command's work and back to the answer.
//
// A command is a function from arguments to an answer and a registration:
//
//     void ReadSystem(FrameUtil::CParaSet& arguments, FrameUtil::CParaSet& answer) { ... }
//     void OnReadSystem(AsnType* request, AsnType* response, KelpGnlTask*) {
//         Serve(request, response, ReadSystem);
//     }
//     const FrameUtil::TModel_RegisterCmd g_readSystem(
//         kReadSystem, NewRequest, NewResponse, kWorkers, nullptr, OnReadSystem, false);
//
// Thread rule: thread-safe. Commands run on several workers at once.
#pragma once

#include "frameutil/msg.h"
#include "frameutil/paraset.h"

namespace nemgr {

inline constexpr unsigned char kWorkers = 1;  ///< the task manager that runs the commands

AsnType* NewRequest();   ///< an AsnCommonRequest
AsnType* NewResponse();  ///< an AsnCommonResponse

/// A command's work: fills `answer` with rows, or throws CommandFailure.
using Work = void (*)(FrameUtil::CParaSet& arguments, FrameUtil::CParaSet& answer);

/// Runs `work` on the request's arguments and fills the response with its answer. Nothing
/// leaves this function as an exception: what `work` throws becomes a "##retCode".
void Serve(AsnType* request, AsnType* response, Work work);

}  // namespace nemgr
