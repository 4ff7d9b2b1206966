// surface/message_slot.h — the library's one pending message for the host.
//
// A pending flag and a 511-byte text buffer. TakeLastMessage hands the text
// out once and clears the flag. The rendering code posts no message today;
// the slot exists so a host can poll it.
#pragma once

#include <cstddef>

namespace tr {

inline constexpr std::size_t kMessageBufferSize = 511;

// Stores a message (truncated to fit) and marks it pending.
void PostLastMessage(const char* text);
// The pending message, terminated at byte 510 at the latest, or null.
const char* TakeLastMessage();

}  // namespace tr
