// tests/cache/allocation_probe.h — test-private: the largest request made
// through the non-throwing array new since the last reset, so that a test
// can tell how much a file reader dared to allocate. Linking
// allocation_probe.cpp replaces that one form of new in the test program;
// the storage still comes from the ordinary array new.
#pragma once

#include <cstddef>

namespace tr::test {

void ResetLargestNothrowArray();
std::size_t LargestNothrowArray();

}  // namespace tr::test
