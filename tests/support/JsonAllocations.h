#pragma once

#include <jansson.h>

#include <cstddef>
#include <cstdlib>

/// Makes one allocation of the JSON library fail, for as long as the object lives. One at a time.
class JsonAllocations {
public:
    /// The allocation with that number, from 1, gives nothing; 0 lets all of them through.
    explicit JsonAllocations(std::size_t failingAllocation) {
        s_failing = failingAllocation;
        s_count = 0;
        json_get_alloc_funcs(&m_allocate, &m_release);
        json_set_alloc_funcs(allocate, std::free);
    }
    ~JsonAllocations() { json_set_alloc_funcs(m_allocate, m_release); }
    JsonAllocations(const JsonAllocations&) = delete;
    JsonAllocations& operator=(const JsonAllocations&) = delete;

    /// How many were asked for so far.
    static std::size_t count() { return s_count; }

private:
    static void* allocate(std::size_t size) { return ++s_count == s_failing ? nullptr : std::malloc(size); }

    inline static std::size_t s_failing = 0;
    inline static std::size_t s_count = 0;
    json_malloc_t m_allocate = nullptr;
    json_free_t m_release = nullptr;
};
