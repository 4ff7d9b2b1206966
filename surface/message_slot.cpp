// surface/message_slot.cpp — pending flag and text buffer.
#include "surface/message_slot.h"

#include <atomic>
#include <cstring>

namespace tr {
namespace {

std::atomic<bool> messagePending{false};
char messageBuffer[kMessageBufferSize];

}  // namespace

void PostLastMessage(const char* text) {
    if (!text) return;
    std::strncpy(messageBuffer, text, kMessageBufferSize - 1);
    messageBuffer[kMessageBufferSize - 1] = '\0';
    messagePending.store(true, std::memory_order_release);
}

const char* TakeLastMessage() {
    if (!messagePending.exchange(false, std::memory_order_acq_rel)) return nullptr;
    messageBuffer[kMessageBufferSize - 1] = '\0';
    return messageBuffer;
}

}  // namespace tr
