// What another process of this program does: serve, ask for a time, ask a number of times.
#pragma once

#include "bus/contestant.h"

namespace bench {

const Contestant& ContestantOf(const std::string& name);

/// A payload of the line's size; `seed` makes it another one.
std::string Payload(const Line& line, unsigned seed);

/// One request whose answer is checked.
void ExchangeAndCheck(Client& client, const std::string& payload, std::string& answer,
                      const char* contestant);

/// Runs the role that the program's arguments name:
///     serve CONTESTANT FOLDER OCTETS            writes "ready", serves until SIGTERM
///     ask CONTESTANT FOLDER OCTETS SEED SECONDS writes "ready", waits for a line, asks for
///                                               that time and writes how many answers came
///     count CONTESTANT FOLDER OCTETS REQUESTS   asks that often
/// False when they name none.
bool RunRole(int argc, char** argv);

}  // namespace bench
