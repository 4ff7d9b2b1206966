// outline/outline_request.cpp — building the 60-byte outline request.
#include "outline/outline_request.h"

#include <cstdio>
#include <cstring>

#include "outline/host_value_token.h"

namespace tr {

OutlineRequest MakeOutlineRequest(uintptr_t context, std::uint32_t flags, std::int32_t outlineSize,
                                  GlyphOutlineCallback callback, std::uint16_t characterCode,
                                  std::uint32_t extraKey, std::uint32_t options) {
    OutlineRequest request;
    std::memset(&request, 0, sizeof request);
    std::snprintf(request.flagsText, sizeof request.flagsText, "%08X", flags);
    request.characterCode = characterCode;
    request.context = HostValueToken(context);
    request.outlineSize = outlineSize;
    request.glyphCallback = HostValueToken(reinterpret_cast<uintptr_t>(callback));
    request.extraKey = extraKey;
    request.flags = flags;
    request.options = options;
    return request;
}

}  // namespace tr

bool operator<(const OutlineRequest& a, const OutlineRequest& b) {
    if (const int text = std::strncmp(a.flagsText, b.flagsText, sizeof a.flagsText); text != 0) {
        return text < 0;
    }
    if (a.reserved34 != b.reserved34) return a.reserved34 < b.reserved34;
    if (a.characterCode != b.characterCode) return a.characterCode < b.characterCode;
    if (a.outlineSize != b.outlineSize) return a.outlineSize < b.outlineSize;
    return static_cast<std::int32_t>(a.extraKey) < static_cast<std::int32_t>(b.extraKey);
}

namespace tr {

uintptr_t RequestContext(const OutlineRequest& request) {
    return HostValueFromToken(request.context);
}

GlyphOutlineCallback RequestCallback(const OutlineRequest& request) {
    return reinterpret_cast<GlyphOutlineCallback>(HostValueFromToken(request.glyphCallback));
}

}  // namespace tr
