// outline/outline_request.h — the 60-byte outline request, which is also
// the character caches' key (`OMTicket`).
//
// Layout (all bytes zeroed first): 0 flags as "%08X" text, zero-terminated,
// in 32 bytes; 32 character code (u16); 34, 35 zero; 36 context; 40 outline
// size (i32); 44 glyph callback; 48 extra key; 52 flags; 56 option word.
//
// The context and callback slots are 32 bits wide. A 32-bit host's values
// fit as they are; on a 64-bit build the slots hold tokens that stand for
// the full values (see host_value_token.h), so the record keeps its size and
// byte layout on every build.
#pragma once

#include <cstddef>
#include <cstdint>

#include "titlerender.h"

struct OutlineRequest {
    char flagsText[32];
    std::uint16_t characterCode;
    std::uint8_t reserved34;
    std::uint8_t reserved35;
    std::uint32_t context;        // host value token
    std::int32_t outlineSize;
    std::uint32_t glyphCallback;  // host value token
    std::uint32_t extraKey;
    std::uint32_t flags;
    std::uint32_t options;
};

static_assert(sizeof(OutlineRequest) == 60, "the request is a 60-byte cache key");
static_assert(offsetof(OutlineRequest, characterCode) == 32 &&
                  offsetof(OutlineRequest, context) == 36 &&
                  offsetof(OutlineRequest, outlineSize) == 40 &&
                  offsetof(OutlineRequest, glyphCallback) == 44 &&
                  offsetof(OutlineRequest, extraKey) == 48 && offsetof(OutlineRequest, flags) == 52 &&
                  offsetof(OutlineRequest, options) == 56,
              "cache files and key ordering read these byte offsets");

typedef OutlineRequest OMTicket;

// The cache key order: the flags text (strncmp over 32 characters), the byte
// at 34 (unsigned), the character code (unsigned), the outline size (signed),
// the extra key (as a signed 32-bit value). Context, callback, byte 35, the
// flags word and the option word take no part: requests that differ only
// there name the same block, and the first of them supplies the callback and
// context that build it.
bool operator<(const OutlineRequest& a, const OutlineRequest& b);

// Outline request flags read by this subsystem.
enum : std::uint32_t {
    OUTLINE_POLYGON_INPUT = 0x200,
    OUTLINE_SINGLE_PATH_NONZERO = 0x1000,
    OUTLINE_SINGLE_PATH_ODD = 0x2000,
    OUTLINE_SINGLE_PATH = OUTLINE_SINGLE_PATH_NONZERO | OUTLINE_SINGLE_PATH_ODD,
    OUTLINE_NO_CACHE = 0x4000,
};

namespace tr {

OutlineRequest MakeOutlineRequest(uintptr_t context, std::uint32_t flags, std::int32_t outlineSize,
                                  GlyphOutlineCallback callback, std::uint16_t characterCode,
                                  std::uint32_t extraKey, std::uint32_t options);

// The host values a request stands for.
uintptr_t RequestContext(const OutlineRequest& request);
GlyphOutlineCallback RequestCallback(const OutlineRequest& request);

}  // namespace tr
