// nemgr/inventory/elements.h - the elements that were read, and what they said.
//
// Thread rule: thread-safe.
#pragma once

#include <string>

#include "frameutil/paraset.h"

namespace nemgr::inventory {

/// Remembers an answer of readSystem. Throws CommandFailure.
void RememberSystem(const std::string& address, FrameUtil::CParaSet& system);

/// Remembers an answer of readInterfaces in place of what was known of the element's
/// interfaces. Throws CommandFailure.
void RememberInterfaces(const std::string& address, FrameUtil::CParaSet& interfaces);

/// Forgets the element and its interfaces; whether it was known. Throws CommandFailure.
bool Forget(const std::string& address);

}  // namespace nemgr::inventory
