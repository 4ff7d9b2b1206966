// surface/trace.h — the diagnostic trace of the describing calls.
//
// When the trace switch is on, each traced call appends one line to the
// fixed file "C:\test_qv.txt" (a relative name outside Windows), opening,
// writing and closing the file for every line. The switch is off at load
// unless the library is built with TR_TRACE; no entry point changes it.
// Writers serialise on a process-wide busy flag taken by atomic
// test-and-set; a file that cannot be opened is skipped silently.
#pragma once

namespace tr {

inline constexpr const char* kTraceFileName = "C:\\test_qv.txt";

bool IsTraceOn();
// For tests and diagnostic tools: turns the trace on or off.
void SetTraceSwitch(bool on);

// Appends one formatted line when the trace is on.
void Trace(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace tr
