#include "failing_malloc.h"

#include <malloc.h>

#include <cstddef>
#include <cstring>

bool g_malloc_fails = false;
std::string_view g_freed_secret;
int g_freed_secrets = 0;

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    return g_malloc_fails ? nullptr : __real_malloc(size);
}

extern "C" void __real_free(void* block);
extern "C" void __wrap_free(void* block);
extern "C" void __wrap_free(void* block) {
    if (block != nullptr && !g_freed_secret.empty() &&
        ::memmem(block, ::malloc_usable_size(block), g_freed_secret.data(),
                 g_freed_secret.size()) != nullptr) {
        ++g_freed_secrets;
    }
    __real_free(block);
}
