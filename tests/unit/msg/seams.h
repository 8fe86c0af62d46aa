// Makes the platform do what no real one does, for the next call of an operation. The
// linker puts these in front of the platform's own (see CMakeLists.txt).
#pragma once

namespace seams {

inline thread_local bool receive_nothing = false;  // KelpSynRecvEx succeeds without a message
inline thread_local bool no_memory = false;        // KelpMsgAlloc returns null
inline thread_local bool null_reply = false;       // KelpSendSynMsgToMDP succeeds without one

}  // namespace seams
