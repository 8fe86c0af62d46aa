// Base64 as key files have it.
//
// Thread rule: thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace FrameUtil {

/// Appends the octets that `text` encodes to `octets`. False for a character outside of the
/// alphabet, padding that is missing or misplaced, and unused bits that are not zero; what
/// was decoded before stays appended then.
bool DecodeBase64(std::string_view text, std::string& octets);

}  // namespace FrameUtil
