// How many blocks operator new has given out, for programs that link allocations.cpp.
#pragma once

namespace bench {

long Allocations();

}  // namespace bench
