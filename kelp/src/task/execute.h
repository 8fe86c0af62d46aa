// Running the program's own code: a command's handler, a task's message or timer.
#pragma once

#include "kelp/task.h"
#include "message/block.h"
#include "task/core.h"

namespace kelp::task {

/// Decodes a request, runs its handler in `task` and answers. Whatever the handler does,
/// a sender that expects an answer gets one. `ask_hook`: the pre-work hook has not seen
/// the request yet.
void ExecuteCommand(Core& core, KelpTask& task, message::MsgPtr msg,
                    const KelpTaskRegister& registration, bool ask_hook);

/// Gives `task` a message, or if there is none the expiry of `timer`.
void RunTask(Core& core, KelpTask& task, message::MsgPtr msg, long timer);

}  // namespace kelp::task
