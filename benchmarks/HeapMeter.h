#pragma once

#include <cstddef>

/// What goes through the C allocator, of which C++ makes use as well. Counts the bytes that were asked for.
namespace HeapMeter {

std::size_t bytesInUse();
std::size_t allocations();
/// Highest bytesInUse() since the last call of startPeak().
std::size_t peak();
void startPeak();

} // namespace HeapMeter
