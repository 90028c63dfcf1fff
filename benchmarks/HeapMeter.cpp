#include "HeapMeter.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::size_t inUse = 0;
std::size_t highest = 0;
std::size_t count = 0;

void* added(void* block) {
    if (block != nullptr) {
        inUse += malloc_usable_size(block);
        highest = std::max(highest, inUse);
        ++count;
    }
    return block;
}

} // namespace

// One thread runs in the measuring program, so plain counters do.
extern "C" {

void* malloc(std::size_t size) {
    return added(__libc_malloc(size));
}
void* calloc(std::size_t elements, std::size_t size) {
    return added(__libc_calloc(elements, size));
}
void* realloc(void* block, std::size_t size) {
    const std::size_t before = block == nullptr ? 0 : malloc_usable_size(block);
    void* moved = __libc_realloc(block, size);
    if (moved != nullptr || size == 0) {
        inUse -= before;
    }
    return added(moved);
}
void free(void* block) {
    inUse -= block == nullptr ? 0 : malloc_usable_size(block);
    __libc_free(block);
}
}

namespace HeapMeter {

std::size_t bytesInUse() {
    return inUse;
}
std::size_t allocations() {
    return count;
}
std::size_t peak() {
    return highest;
}
void startPeak() {
    highest = inUse;
}

} // namespace HeapMeter
