// require.h - what fuzz targets claim of their code. Not assert(): the claims hold in every
// build.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program, as a finding, unless `claim` holds; `what` says what is wrong.
inline void Require(bool claim, const char* what = "a claim does not hold") {
    if (!claim) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}
