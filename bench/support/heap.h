// Octets that the process has allocated and not freed: malloc's and the block pools'.
#pragma once

#include <malloc.h>

#include "kelp/blocks.h"

namespace bench {

inline double HeapOctets() {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd + kelp::GetBlockUsage().handed_out);
}

}  // namespace bench
