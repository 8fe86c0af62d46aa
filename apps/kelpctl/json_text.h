// kelpctl/json_text.h - an answer for programs: one JSON document, whatever octets it has.
//
//     {"retCode":0,"retCodeEx":5,"ver":"1.2","tables":[
//     {"name":null,"columns":["ifDescr","ifMtu"],"rows":[
//     {"ifDescr":"lo","ifMtu":65536},
//     {"ifDescr":{"octets":"ff00"},"ifMtu":null}]}]}
//
// "retCodeEx" and "ver" are there if the answer carries them. A text that is UTF-8 is a
// JSON text, any other an object whose "octets" are its octets in hexadecimal. A cell
// without value is null; doubles that JSON has no number for are "NaN", "Infinity" and
// "-Infinity". A column without a name of its own, or with that of a column before it, is
// called "#" and its zero-based position in the rows.
//
// Thread rule: thread-safe.
#pragma once

#include <ostream>

#include "kelpctl/answer.h"

namespace kelpctl {

/// Writes `answer` and a line end.
void PrintJson(const Answer& answer, std::ostream& out);

}  // namespace kelpctl
