// Ends a benchmark program whose contestants do not agree: times of a wrong answer are
// worth nothing.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace bench {

inline void Require(bool holds, const char* contestant, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "%s: wrong result: %s\n", contestant, what);
        std::abort();
    }
}

}  // namespace bench
