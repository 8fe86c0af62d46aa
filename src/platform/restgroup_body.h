// What the gateway's answer says about REST groups.
#pragma once

#include <map>
#include <string>

namespace FrameUtil {

/// Process identifier, process handle, name of the group.
using RestGroups = std::map<int, std::map<int, std::string>>;

/// Reads `body` into `groups`. False, logged, with `groups` empty, when it is no such answer.
/// What LoadMRBRestGroup() promises about single members holds.
bool ReadRestGroups(const std::string& body, RestGroups& groups);

}  // namespace FrameUtil
