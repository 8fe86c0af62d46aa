#include "freed_memory.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t kMostSecret = 64;

struct Watch {
    bool on = false;
    char secret[kMostSecret] = {};
    char wiped[kMostSecret] = {};
    std::size_t length = 0;
    int with_secret = 0;
    int with_wiped = 0;
};
thread_local Watch g_watch;

void Look(const void* block) {
    if (!g_watch.on || block == nullptr) {
        return;
    }
    const std::size_t size = ::malloc_usable_size(const_cast<void*>(block));
    g_watch.with_secret += ::memmem(block, size, g_watch.secret, g_watch.length) != nullptr;
    g_watch.with_wiped += ::memmem(block, size, g_watch.wiped, g_watch.length) != nullptr;
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* block = std::calloc(1, size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::calloc(1, size == 0 ? 1 : size);
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
    return operator new(size, nothrow);
}
void operator delete(void* block) noexcept {
    Look(block);
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    operator delete(block);
}
void operator delete[](void* block) noexcept {
    operator delete(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    operator delete(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    operator delete(block);
}

FreedMemory::FreedMemory(const std::string& secret) {
    g_watch = Watch();
    g_watch.length = secret.copy(g_watch.secret, kMostSecret);
    std::memset(g_watch.wiped, 0xCC, sizeof g_watch.wiped);
    g_watch.on = true;
}
FreedMemory::~FreedMemory() {
    g_watch.on = false;
}
int FreedMemory::WithSecret() const {
    return g_watch.with_secret;
}
int FreedMemory::Wiped() const {
    return g_watch.with_wiped;
}
