// fuzz/character_pass.cpp — whole characters through the C entry points,
// from a glyph to the host's pixels, with hostile face values, fragments
// and painter calls.
//
// Input: bytes 0-2 give the surface (width 1-64, height 1-64, row padding
// 0-7 pixels); then up to four characters, each read from the stream:
// a polygon glyph (1-2 contours of 3-8 points on a coarse grid), the ten
// face values, 0-4 fragments with their nibble maps, colour calls, optional
// shear, opacity and outline flags, and the FinishCharacter arguments.
// Doubles come from a selector byte: most select ordinary values, the rest
// NaN, infinities, huge and tiny magnitudes and slants near ±π/2.
//
// Checked: nothing crashes, the sanitizers stay quiet, and the host's
// buffer is untouched outside its pixels (the padding of every row and the
// guard areas before and after the image keep their sentinel).
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "titlerender.h"

namespace {

constexpr uint32_t kSentinel = 0xA5C3E1F7u;
constexpr int32_t kGuard = 64;
constexpr int32_t kMaxCharacters = 4;

class Stream {
public:
    Stream(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool Empty() const { return at_ >= size_; }
    uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
    uint32_t Word() {
        uint32_t w = 0;
        for (int i = 0; i < 4; ++i) w = w << 8 | Byte();
        return w;
    }
    // Ordinary values around `scale` most of the time, hostile ones else.
    double Value(double scale) {
        static const double kHostile[] = {
            std::numeric_limits<double>::quiet_NaN(),
            std::numeric_limits<double>::infinity(),
            -std::numeric_limits<double>::infinity(),
            1e300,
            -1e300,
            1e5,
            -1e5,
            0.0,
            -0.0,
            1e-300,
            1.5707963267948966 - 1e-9,
            -1.5707963267948966 + 1e-9,
            1.5707963267948966,
            2147483648.0,
            -2147483649.0,
            std::numeric_limits<double>::denorm_min(),
        };
        const uint8_t b = Byte();
        if (b >= 240) return kHostile[b - 240];
        return (static_cast<double>(b) - 120.0) / 120.0 * scale;
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

// Polygons of doubles: a 56-byte header with the contour count at offset 8,
// then per contour an 8-byte header with the point count at offset 4 and
// the (x, y) pairs.
std::vector<uint8_t> ReadGlyph(Stream& in) {
    const uint32_t contours = 1 + in.Byte() % 2;
    std::vector<uint8_t> data(56, 0);
    std::memcpy(data.data() + 8, &contours, 4);
    for (uint32_t c = 0; c < contours; ++c) {
        const uint32_t points = 3 + in.Byte() % 6;
        uint8_t header[8] = {};
        std::memcpy(header + 4, &points, 4);
        data.insert(data.end(), header, header + 8);
        for (uint32_t p = 0; p < 2 * points; ++p) {
            const double v = (in.Byte() % 17) * 8.0;  // 0..128 outline units
            const auto* bytes = reinterpret_cast<const uint8_t*>(&v);
            data.insert(data.end(), bytes, bytes + sizeof v);
        }
    }
    return data;
}

int32_t GlyphCallback(uintptr_t context, uint32_t, void*, uint32_t size, void* buffer,
                      const int32_t*) {
    const auto& data = *reinterpret_cast<const std::vector<uint8_t>*>(context);
    if (size == 0 || buffer == nullptr) return static_cast<int32_t>(data.size());
    if (size < data.size()) return 0;
    std::memcpy(buffer, data.data(), data.size());
    return static_cast<int32_t>(data.size());
}

void Check(bool condition) {
    if (!condition) std::abort();
}

void DriveCharacter(Surface* surface, Stream& in, std::vector<uint8_t>& glyph) {
    glyph = ReadGlyph(in);
    const uint32_t flags = TR_CHARACTER_POLYGON_INPUT | TR_CHARACTER_NO_CACHE |
                           (in.Byte() & 1 ? TR_CHARACTER_WIDE_OUTLINES : 0);
    NewCharacterCallBack(surface, reinterpret_cast<uintptr_t>(&glyph), flags, 128,
                         &GlyphCallback, 'G');
    FaceParameters face{in.Value(160.0), in.Value(2.0),  in.Value(2.0),  in.Value(1.6),
                        in.Value(1.6),   in.Value(3.2),  in.Value(80.0), in.Value(80.0),
                        in.Value(100.0), in.Value(100.0)};
    SetFace(surface, &face);
    const int fragments = in.Byte() % 5;
    for (int f = 0; f < fragments; ++f) {
        uint8_t map[16];
        for (uint8_t& m : map) m = in.Byte() % 20;  // 16-19: out of range
        const int32_t kind = static_cast<int8_t>(in.Byte()) % 12;
        const double width = in.Value(8.0), angle = in.Value(360.0), distance = in.Value(16.0);
        SetFragment(surface, in.Byte() % 8 == 0 ? nullptr : map, kind, width, angle, distance);
    }
    const int colours = in.Byte() % 4;
    for (int c = 0; c < colours; ++c) {
        const int32_t slot = static_cast<int8_t>(in.Byte()) % 20;
        if (in.Byte() % 4 == 0) {
            SetNullColor(surface, slot);
        } else {
            SetColor(surface, slot, in.Word());
        }
    }
    const uint8_t extras = in.Byte();
    if (extras & 1) SetCharacterShear(surface, in.Value(1.6), in.Value(1.6));
    if (extras & 2) SetPainterOpacity(surface, in.Value(1.0));
    if (extras & 4) AddOutlineFlags(surface, in.Word());
    const int32_t mode = static_cast<int8_t>(in.Byte());
    const uint32_t options = in.Byte();
    const uint32_t user1 = in.Byte() % 4, user2 = in.Byte() % 4;
    FinishCharacter(surface, mode, options, user1, user2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Stream in(data, size);
    const int32_t width = 1 + in.Byte() % 64;
    const int32_t height = 1 + in.Byte() % 64;
    const int32_t pitch = width + in.Byte() % 8;
    std::vector<uint32_t> buffer(static_cast<size_t>(pitch) * height + 2 * kGuard, kSentinel);
    uint32_t* pixels = buffer.data() + kGuard;
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) pixels[y * pitch + x] = 0;
    }
    SurfaceDescriptor descriptor{{pixels, width, height, pitch * 4}, 1.0};
    Surface* surface = CreateSurface(&descriptor);
    if (surface == nullptr) return 0;
    std::vector<uint8_t> glyphs[kMaxCharacters];
    for (int c = 0; c < kMaxCharacters && !in.Empty(); ++c) DriveCharacter(surface, in, glyphs[c]);
    CloseSurface(surface);

    for (size_t i = 0; i < buffer.size(); ++i) {
        const ptrdiff_t offset = static_cast<ptrdiff_t>(i) - kGuard;
        const bool inImage = offset >= 0 && offset < static_cast<ptrdiff_t>(pitch) * height &&
                             offset % pitch < width;
        if (!inImage) Check(buffer[i] == kSentinel);
    }
    return 0;
}
