// kelpd/config/guard.h - an installation that others could read the keys of, or change, is
// not served.
//
// thread-safe
#pragma once

#include <string>

namespace kelpd {

/// Throws Refusal (kForeignRoot) unless the folder belongs to this process's user and only
/// that user may write to it; kConfiguration when it is not there.
void RequireOwnFolder(const std::string& folder);

/// Throws Refusal (kKeys) unless the file is there and readable, belongs to this process's
/// user, and nobody else may read or write it.
void RequireOwnKey(const std::string& file);

}  // namespace kelpd
