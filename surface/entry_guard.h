// surface/entry_guard.h — keeps C++ exceptions from crossing into the host.
// Folder-private.
//
// Internals report failure through values; the one exception that can still
// arise is an allocation or container-length failure inside the standard
// library. An entry point then returns its fallback result, leaving the
// surface as it was at the failing step.
#pragma once

#include <utility>

namespace tr {

template <class Result, class Body>
Result Guarded(Result fallback, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return fallback;
    }
}

template <class Body>
void Guarded(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (...) {
    }
}

}  // namespace tr
