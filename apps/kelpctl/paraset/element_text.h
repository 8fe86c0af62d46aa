// kelpctl/paraset/element_text.h - an element's identifier and value in words.
//
// Thread rule: thread-safe.
#pragma once

#include <string>

#include "kelpctl/paraset/elements.h"

namespace kelpctl {

/// "30 SEQUENCE", "a1 [1]", "41 [APPLICATION 1]".
std::string TextOfIdentifier(const BerHeader& header);

/// The value of a primitive element by its described type or, without one, by its
/// identifier: a number, a text in quotes, octets in hexadecimal. Long ones are cut.
std::string TextOfValue(const WalkedElement& element);

/// False for an integer that a parameter set cuts.
bool FitsInteger32(const WalkedElement& element);

}  // namespace kelpctl
