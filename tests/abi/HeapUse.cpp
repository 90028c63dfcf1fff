#include "HeapUse.h"

#include <malloc.h>

#include <atomic>

namespace {

std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> highest{0};

void* counted(void* block) {
    const std::size_t total = inUse += malloc_usable_size(block);
    for (std::size_t former = highest; former < total && !highest.compare_exchange_weak(former, total);) {
    }
    return block;
}

void uncount(void* block) {
    inUse -= malloc_usable_size(block);
}

} // namespace

// The C library's own names for what is replaced here.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    return counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
    return counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
    const std::size_t former = malloc_usable_size(block);
    void* moved = __libc_realloc(block, size);
    if (moved != nullptr || size == 0) {
        inUse -= former;
    }
    return counted(moved);
}

void* memalign(std::size_t alignment, std::size_t size) {
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return counted(__libc_memalign(alignment, size));
}

void free(void* block) {
    uncount(block);
    __libc_free(block);
}
}

std::size_t HeapUse::now() {
    return inUse;
}

std::size_t HeapUse::peak() {
    return highest;
}

void HeapUse::beginPeak() {
    highest = inUse.load();
}
