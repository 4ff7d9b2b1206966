// surface/trace.cpp — trace switch, busy flag and line writer.
#include "surface/trace.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace tr {
namespace {

#if defined(TR_TRACE) && TR_TRACE
std::atomic<bool> traceSwitch{true};
#else
std::atomic<bool> traceSwitch{false};
#endif
std::atomic_flag traceBusy = ATOMIC_FLAG_INIT;

}  // namespace

bool IsTraceOn() { return traceSwitch.load(std::memory_order_relaxed); }

void SetTraceSwitch(bool on) { traceSwitch.store(on, std::memory_order_relaxed); }

void Trace(const char* format, ...) {
    if (!IsTraceOn()) return;
    while (traceBusy.test_and_set(std::memory_order_acquire)) {
        // Another writer holds the file; lines are short, so spin.
    }
    if (std::FILE* file = std::fopen(kTraceFileName, "a+")) {
        va_list args;
        va_start(args, format);
        std::vfprintf(file, format, args);
        va_end(args);
        std::fclose(file);
    }
    traceBusy.clear(std::memory_order_release);
}

}  // namespace tr
