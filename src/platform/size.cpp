#include <cstdlib>
#include <limits>

#include "frameutil/log.h"
#include "frameutil/platform.h"
#include "kelp/message.h"

namespace FrameUtil {

namespace {

constexpr int kUnset = 80000;
constexpr int kLeast = 2000;

struct Threads {
    int from;   // size of the managed network
    int large;  // for processes 3001 and 3006
    int other;
};
constexpr Threads kThreads[] = {
    {300000, 100, 50},
    {150000, 70, 30},
    {80000, 60, 20},
    {std::numeric_limits<int>::min(), 10, 10},
};

// The low 32 bits count, signed: a number from 2^31 on may come out as a small one.
int Decimal(const char* text) {
    return static_cast<int>(std::strtol(text, nullptr, 10));
}

}  // namespace

int GetMGMTSize() {
    int size = kUnset;
    // The caller keeps the environment still. NOLINTNEXTLINE(concurrency-mt-unsafe)
    if (const char* text = std::getenv("MGMTSIZE"); text == nullptr) {
        Trace("get MGMTSIZE faild, return defualt value");
    } else {
        size = Decimal(text);
        if (size < kLeast) {
            Trace("MGMTSIZE is too small, return min value");
            size = kLeast;
        }
    }
    Trace("get MGMTSIZE: %d", size);
    return size;
}

int GetFrameTaskMgrMaxThreadNum(unsigned short procId) {
    if (procId == 0) {
        procId = static_cast<unsigned short>(KelpGetProcId());
    }
    const int size = GetMGMTSize();
    const Threads* row = kThreads;
    while (size < row->from) {
        ++row;
    }
    const int threads = procId == 3001 || procId == 3006 ? row->large : row->other;
    Trace("get max thread num: %d", threads);
    return threads;
}

}  // namespace FrameUtil
