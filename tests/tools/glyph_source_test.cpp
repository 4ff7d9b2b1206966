// The FreeType glyph source: curve-record data are well formed and follow
// the font's outline, the metrics record and the size protocol.
#include "tools/glyph_source/glyph_source.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tr::tools {
namespace {

std::uint32_t U32(const std::vector<std::uint8_t>& d, std::size_t at) {
    std::uint32_t v;
    std::memcpy(&v, d.data() + at, 4);
    return v;
}

double Fixed(const std::vector<std::uint8_t>& d, std::size_t at) {
    std::int32_t v;
    std::memcpy(&v, d.data() + at, 4);
    return v / 65536.0;
}

TEST(GlyphSource, CurveRecordsAreWellFormedAndInsideTheBox) {
    auto source = GlyphSource::Open(kDefaultFont, 100, GlyphFormat::CurveRecords);
    ASSERT_NE(source, nullptr);
    for (std::uint32_t code = 0x21; code < 0x7F; ++code) {
        std::vector<std::uint8_t> d;
        GlyphMetricsRecord m;
        ASSERT_TRUE(source->Encode(code, d, m));
        std::vector<GlyphSource::Contour> contours;
        ASSERT_TRUE(source->Flatten(code, contours));
        std::size_t polygons = 0;
        for (std::size_t at = 0; at < d.size(); ++polygons) {
            const std::uint32_t cb = U32(d, at);
            ASSERT_GE(cb, 16u);
            ASSERT_LE(at + cb, d.size());
            EXPECT_EQ(U32(d, at + 4), 24u);
            for (std::size_t r = at + 16; r < at + cb;) {
                std::uint16_t type, n;
                std::memcpy(&type, d.data() + r, 2);
                std::memcpy(&n, d.data() + r + 2, 2);
                EXPECT_TRUE(type >= 1 && type <= 3) << code;
                if (type == 3) {
                    EXPECT_EQ(n % 3, 0) << code;
                }
                for (std::size_t k = 0; k < n; ++k) {
                    // Control points of these fonts lie within the control box.
                    const double x = Fixed(d, r + 4 + 8 * k), y = Fixed(d, r + 8 + 8 * k);
                    EXPECT_GE(x, m.originX) << code;
                    EXPECT_LE(x, static_cast<double>(m.originX) + m.blackBoxX) << code;
                    EXPECT_LE(y, m.originY) << code;
                    EXPECT_GE(y, static_cast<double>(m.originY) - m.blackBoxY) << code;
                }
                r += 4 + 8 * std::size_t{n};
                ASSERT_LE(r, at + cb) << code;
            }
            at += cb;
        }
        EXPECT_EQ(polygons, contours.size()) << code;
        EXPECT_GT(m.advanceX, 0) << code;
    }
}

TEST(GlyphSource, CallbackAnswersSizeThenData) {
    auto source = GlyphSource::Open(kDefaultFont, 64, GlyphFormat::PolygonsOfDoubles);
    ASSERT_NE(source, nullptr);
    std::uint8_t metrics[20] = {};
    const std::int32_t identity[4] = {0x10000, 0, 0, 0x10000};
    const std::int32_t size = GlyphSource::Callback(source->Context(), 'A', metrics, 0, nullptr, identity);
    ASSERT_GT(size, 56);
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(size));
    EXPECT_EQ(GlyphSource::Callback(source->Context(), 'A', metrics, static_cast<std::uint32_t>(size), buffer.data(),
                                    identity),
              size);
    EXPECT_EQ(U32(buffer, 8), 2u) << "'A' has an outer contour and a counter";
    EXPECT_EQ(GlyphSource::Callback(source->Context(), 'A', metrics, 10, buffer.data(), identity), 0)
        << "a buffer too small is refused";
    EXPECT_EQ(GlyphSource::Callback(source->Context(), ' ', metrics, 0, nullptr, identity), 0);
    EXPECT_EQ(GlyphSource::Open("/nonexistent.ttf", 64, GlyphFormat::CurveRecords), nullptr);
}

}  // namespace
}  // namespace tr::tools
