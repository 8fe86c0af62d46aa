#include "failing_copy.h"

#include <cerrno>
#include <cstddef>
#include <cstring>

static_assert(FailNthCopy::kError == ERANGE);

namespace {

thread_local int until_failure = 0;  // 0: none will fail
thread_local bool fired = false;

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
int __real__Z8memcpy_sPvmPKvm(void* to, std::size_t size, const void* from, std::size_t count);
int __wrap__Z8memcpy_sPvmPKvm(void* to, std::size_t size, const void* from, std::size_t count) {
    if (until_failure != 0 && --until_failure == 0) {
        fired = true;
        std::memset(to, 0, size);
        return FailNthCopy::kError;
    }
    return __real__Z8memcpy_sPvmPKvm(to, size, from, count);
}
// NOLINTEND(bugprone-reserved-identifier)

}  // extern "C"

FailNthCopy::FailNthCopy(int n) {
    until_failure = n;
    fired = false;
}

FailNthCopy::~FailNthCopy() {
    until_failure = 0;
}

bool FailNthCopy::Fired() const {
    return fired;
}
