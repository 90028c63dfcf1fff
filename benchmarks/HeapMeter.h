#pragma once

#include <cstddef>

/// What goes through the C allocator, of which C++ makes use as well. Counts the usable bytes of a block.
namespace HeapMeter {

std::size_t bytesInUse();
std::size_t allocations();
/// Highest bytesInUse() since the last call of startPeak().
std::size_t peak();
void startPeak();

} // namespace HeapMeter
