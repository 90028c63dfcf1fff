#include "HeapMeter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

/// The size that each living block was asked for, by its address: open addressing in memory that needs no allocation.
class RequestedSizes {
public:
    void put(void* block, std::size_t size) {
        Entry& entry = find(block);
        entry = {block, size};
    }
    std::size_t get(void* block) { return find(block).size; }
    /// The address stays behind with a size of 0, so that nothing that was put beyond it is lost.
    void forget(void* block) { find(block).size = 0; }

private:
    struct Entry {
        void* block;
        std::size_t size;
    };
    static constexpr std::size_t places = std::size_t{1} << 22;

    Entry& find(void* block) {
        std::size_t at = reinterpret_cast<std::uintptr_t>(block) / 16 * 0x9E3779B97F4A7C15u >> 42;
        while (m_entries[at].block != nullptr && m_entries[at].block != block) {
            at = (at + 1) % places;
        }
        return m_entries[at];
    }

    Entry m_entries[places];
};

RequestedSizes sizes;
std::size_t inUse = 0;
std::size_t highest = 0;
std::size_t count = 0;

void* added(void* block, std::size_t size) {
    if (block != nullptr) {
        sizes.put(block, size);
        inUse += size;
        highest = std::max(highest, inUse);
        ++count;
    }
    return block;
}

void removed(void* block) {
    if (block != nullptr) {
        inUse -= sizes.get(block);
        sizes.forget(block);
    }
}

} // namespace

// One thread runs in the measuring program, so plain counters do.
extern "C" {

void* malloc(std::size_t size) {
    return added(__libc_malloc(size), size);
}
void* calloc(std::size_t elements, std::size_t size) {
    return added(__libc_calloc(elements, size), elements * size);
}
void* realloc(void* block, std::size_t size) {
    void* moved = __libc_realloc(block, size);
    if (moved != nullptr || size == 0) {
        removed(block);
    }
    return added(moved, size);
}
void free(void* block) {
    removed(block);
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
