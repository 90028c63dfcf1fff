#pragma once

#include <cstddef>

/// What the whole process holds of the heap, libraries included: malloc and its siblings are replaced in the program
/// that links this.
namespace HeapUse {

/// Bytes handed out and not given back, as the allocator rounds them.
std::size_t now();
/// The highest value of now() since the last call of beginPeak().
std::size_t peak();
void beginPeak();

} // namespace HeapUse
