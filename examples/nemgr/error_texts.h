// nemgr/error_texts.h - what operators are told of a command that failed.
//
// Thread rule: thread-safe.
#pragma once

#include <string>

#include "nemgr/results.h"

namespace nemgr {

struct ErrorTexts {
    std::string desc;
    std::string reason;
    std::string detail;
    std::string advice;
};

/// Takes the texts from the resource file `file` from now on. False, with a log line that
/// says why, when it is refused.
bool LoadErrorTexts(const std::string& file);

/// The texts for `result`. Without a resource file that has them: ResultText() as the
/// description, and nothing else.
ErrorTexts ErrorTextsOf(Result result);

}  // namespace nemgr
