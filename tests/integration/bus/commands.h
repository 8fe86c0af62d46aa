// What the test's server offers. Requests and responses are octet strings or integers.
#pragma once

namespace bus_test {

enum Command : unsigned long {
    kEcho = 1000,  // octets: the same back
    kHold,         // octets, a path: waits until that file is there; answers when it is
    kThrow,        // octets: throws
    kEndThread,    // octets: ends its thread
    kRelay,        // octets "PROC COMMAND": asks command of process PROC, answers its answer
    kMake,         // octets, a number: that many octets back
    kCount,        // octets: how many kHold handlers run, as text
    kReport,       // octets: what KelpDebugMgr says
};

constexpr unsigned char kManager = 4;

}  // namespace bus_test
