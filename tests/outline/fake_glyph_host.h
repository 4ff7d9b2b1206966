// tests/outline/fake_glyph_host.h — test-private: a glyph callback that
// answers from a byte vector and records how it was called.
#pragma once

#include <cstdint>
#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

#include "titlerender.h"

namespace tr::test {

struct FakeGlyphHost {
    std::vector<std::uint8_t> data;
    static constexpr std::int32_t kHonest = INT32_MIN;
    std::int32_t sizeAnswer = kHonest;    // kHonest: data.size()
    std::int32_t resultAnswer = kHonest;  // kHonest: data.size()
    std::uint8_t metricsToWrite[20] = {9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};

    struct Call {
        std::uint32_t code;
        std::uint32_t bufferSize;
        bool nullBuffer;
        std::int32_t matrix[4];
        bool metricsZero;
    };
    std::vector<Call> calls;

    uintptr_t Context() { return reinterpret_cast<uintptr_t>(this); }

    static std::int32_t Callback(uintptr_t context, std::uint32_t code, void* metrics, std::uint32_t bufferSize,
                                 void* buffer, const std::int32_t* matrix) {
        auto* host = reinterpret_cast<FakeGlyphHost*>(context);
        Call call{code, bufferSize, buffer == nullptr, {}, true};
        std::memcpy(call.matrix, matrix, sizeof call.matrix);
        for (int i = 0; i < 20; ++i) call.metricsZero = call.metricsZero && static_cast<std::uint8_t*>(metrics)[i] == 0;
        host->calls.push_back(call);
        std::memcpy(metrics, host->metricsToWrite, 20);
        const auto size = static_cast<std::int32_t>(host->data.size());
        if (buffer == nullptr) return host->sizeAnswer != kHonest ? host->sizeAnswer : size;
        std::memcpy(buffer, host->data.data(), std::min<std::size_t>(host->data.size(), bufferSize));
        return host->resultAnswer != kHonest ? host->resultAnswer : size;
    }
};

}  // namespace tr::test
