#include "failing_malloc.h"

#include <cstddef>

bool g_malloc_fails = false;

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    return g_malloc_fails ? nullptr : __real_malloc(size);
}
