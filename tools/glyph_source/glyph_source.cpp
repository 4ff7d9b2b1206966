// tools/glyph_source/glyph_source.cpp — FreeType outlines converted into
// the library's glyph data formats.
//
// The curve-record encoder walks each FreeType contour from an on-curve
// start point (the first point, else the last, else the midpoint of the
// two when both are conic) and emits one record per run: consecutive lines
// share a line record, a run of conic points plus the on-curve point that
// ends it (or the start point when the run wraps) is one quadratic-spline
// record, consecutive cubic arcs share a cubic record. The flattening
// encoders use FT_Outline_Decompose.
#include "tools/glyph_source/glyph_source.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <cmath>
#include <cstring>

namespace tr::tools {
namespace {

constexpr std::uint32_t kPolygonType = 24;
constexpr std::uint16_t kLine = 1;
constexpr std::uint16_t kQuadratic = 2;
constexpr std::uint16_t kCubic = 3;
constexpr std::int32_t kMaxFixedPixels = 32767;
constexpr double k26Dot6 = 64.0;

class Writer {
public:
    explicit Writer(std::vector<std::uint8_t>& out) : out_(out) {}
    template <typename T>
    void Put(T value) {
        const std::size_t at = out_.size();
        out_.resize(at + sizeof(T));
        std::memcpy(out_.data() + at, &value, sizeof(T));
    }
    template <typename T>
    void PutAt(std::size_t at, T value) {
        std::memcpy(out_.data() + at, &value, sizeof(T));
    }
    std::size_t Size() const { return out_.size(); }

private:
    std::vector<std::uint8_t>& out_;
};

// 26.6 to FIXED 16.16: the 32-bit little-endian value is the fraction word
// followed by the integer word.
std::int32_t ToFixed(FT_Pos v) { return static_cast<std::int32_t>(v * 1024); }

void PutPoint(Writer& w, FT_Vector p) {
    w.Put(ToFixed(p.x));
    w.Put(ToFixed(p.y));
}

struct Segment {
    std::uint16_t type;
    std::vector<FT_Vector> points;
};

FT_Vector Mid(FT_Vector a, FT_Vector b) { return FT_Vector{(a.x + b.x) / 2, (a.y + b.y) / 2}; }

// Records of one contour points[first..last], start point out.
std::vector<Segment> ContourSegments(const FT_Outline& o, int first, int last, FT_Vector& start) {
    const int n = last - first + 1;
    const auto tag = [&o, first, n](int i) { return FT_CURVE_TAG(o.tags[first + ((i % n) + n) % n]); };
    const auto pt = [&o, first, n](int i) { return o.points[first + ((i % n) + n) % n]; };
    int begin = 0;  // index of the start point, points begin+1 .. begin+n follow
    if (tag(0) == FT_CURVE_TAG_ON) {
        start = pt(0);
    } else if (tag(n - 1) == FT_CURVE_TAG_ON) {
        start = pt(n - 1);
        begin = -1;
    } else {
        start = Mid(pt(n - 1), pt(0));
        begin = -1;  // the virtual start sits between the last and first point
    }
    std::vector<Segment> segments;
    const bool virtualStart = tag(0) != FT_CURVE_TAG_ON && tag(n - 1) != FT_CURVE_TAG_ON;
    // Index that stands for the return to the start point; a virtual start
    // follows the last point, which must then be walked too.
    const int end = virtualStart ? begin + n + 1 : begin + n;
    for (int i = begin + 1; i <= end;) {
        const bool atStart = i == end;
        const FT_Vector p = atStart ? start : pt(i);
        const int t = atStart ? FT_CURVE_TAG_ON : tag(i);
        if (t == FT_CURVE_TAG_ON) {
            if (!atStart) {
                if (segments.empty() || segments.back().type != kLine) segments.push_back({kLine, {}});
                segments.back().points.push_back(p);
            }
            ++i;
        } else if (t == FT_CURVE_TAG_CONIC) {
            Segment s{kQuadratic, {}};
            while (i < end && tag(i) == FT_CURVE_TAG_CONIC) s.points.push_back(pt(i++));
            s.points.push_back(i < end ? pt(i) : start);
            ++i;
            segments.push_back(std::move(s));
        } else {  // cubic: two controls then the on-curve end
            if (segments.empty() || segments.back().type != kCubic) segments.push_back({kCubic, {}});
            for (int k = 0; k < 3; ++k, ++i) segments.back().points.push_back(i < end ? pt(i) : start);
        }
    }
    return segments;
}

bool EncodeCurveRecords(const FT_Outline& o, std::vector<std::uint8_t>& data) {
    Writer w(data);
    int first = 0;
    for (int c = 0; c < o.n_contours; ++c) {
        const int last = o.contours[c];
        FT_Vector start;
        const std::vector<Segment> segments = ContourSegments(o, first, last, start);
        first = last + 1;
        const std::size_t header = w.Size();
        w.Put<std::uint32_t>(0);  // cb, patched below
        w.Put<std::uint32_t>(kPolygonType);
        PutPoint(w, start);
        for (const Segment& s : segments) {
            w.Put<std::uint16_t>(s.type);
            w.Put<std::uint16_t>(static_cast<std::uint16_t>(s.points.size()));
            for (const FT_Vector& p : s.points) PutPoint(w, p);
        }
        w.PutAt<std::uint32_t>(header, static_cast<std::uint32_t>(w.Size() - header));
    }
    return true;
}

// Flattening through FT_Outline_Decompose.
struct FlattenState {
    std::vector<GlyphSource::Contour>* contours;
    double x = 0, y = 0;
    void Add(double px, double py) {
        contours->back().xy.push_back(px);
        contours->back().xy.push_back(py);
        x = px;
        y = py;
    }
};

int MoveTo(const FT_Vector* to, void* user) {
    auto* s = static_cast<FlattenState*>(user);
    s->contours->emplace_back();
    s->Add(to->x / k26Dot6, to->y / k26Dot6);
    return 0;
}

int LineTo(const FT_Vector* to, void* user) {
    static_cast<FlattenState*>(user)->Add(to->x / k26Dot6, to->y / k26Dot6);
    return 0;
}

int ConicTo(const FT_Vector* c, const FT_Vector* to, void* user) {
    auto* s = static_cast<FlattenState*>(user);
    const double x0 = s->x, y0 = s->y;
    const double cx = c->x / k26Dot6, cy = c->y / k26Dot6;
    const double ex = to->x / k26Dot6, ey = to->y / k26Dot6;
    for (int i = 1; i <= kFlattenSteps; ++i) {
        const double t = static_cast<double>(i) / kFlattenSteps, mt = 1.0 - t;
        s->Add(mt * mt * x0 + 2 * mt * t * cx + t * t * ex, mt * mt * y0 + 2 * mt * t * cy + t * t * ey);
    }
    return 0;
}

int CubicTo(const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* to, void* user) {
    auto* s = static_cast<FlattenState*>(user);
    const double x0 = s->x, y0 = s->y;
    const double ax = c1->x / k26Dot6, ay = c1->y / k26Dot6;
    const double bx = c2->x / k26Dot6, by = c2->y / k26Dot6;
    const double ex = to->x / k26Dot6, ey = to->y / k26Dot6;
    for (int i = 1; i <= kFlattenSteps; ++i) {
        const double t = static_cast<double>(i) / kFlattenSteps, mt = 1.0 - t;
        s->Add(mt * mt * mt * x0 + 3 * mt * mt * t * ax + 3 * mt * t * t * bx + t * t * t * ex,
               mt * mt * mt * y0 + 3 * mt * mt * t * ay + 3 * mt * t * t * by + t * t * t * ey);
    }
    return 0;
}

double SignedArea(const GlyphSource::Contour& c) {
    const std::size_t n = c.xy.size() / 2;
    double a = 0;
    for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
        a += c.xy[2 * j] * c.xy[2 * i + 1] - c.xy[2 * i] * c.xy[2 * j + 1];
    }
    return a / 2;
}

bool Inside(const GlyphSource::Contour& c, double x, double y) {
    const std::size_t n = c.xy.size() / 2;
    bool in = false;
    for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
        const double xi = c.xy[2 * i], yi = c.xy[2 * i + 1], xj = c.xy[2 * j], yj = c.xy[2 * j + 1];
        if ((yi > y) != (yj > y) && x < (xj - xi) * (y - yi) / (yj - yi) + xi) in = !in;
    }
    return in;
}

void PutFloatContour(Writer& w, const GlyphSource::Contour& c) {
    w.Put(static_cast<float>(c.xy.size() / 2));
    for (double v : c.xy) w.Put(static_cast<float>(v));
}

void EncodeGroupedFloats(const std::vector<GlyphSource::Contour>& contours, bool fillClockwise,
                         std::vector<std::uint8_t>& data) {
    // Degenerate contours (no area) are passed on as groups of their own,
    // as the font has them.
    const auto isOuter = [&contours, fillClockwise](std::size_t i) {
        const double area = SignedArea(contours[i]);
        return area == 0.0 || (area < 0.0) == fillClockwise;
    };
    std::vector<std::size_t> outers;
    std::vector<std::vector<std::size_t>> holes;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        if (isOuter(i)) {
            outers.push_back(i);
            holes.emplace_back();
        }
    }
    for (std::size_t i = 0; i < contours.size(); ++i) {
        if (isOuter(i)) continue;
        std::size_t best = outers.size();
        double bestArea = 0;
        for (std::size_t o = 0; o < outers.size(); ++o) {
            const auto& outer = contours[outers[o]];
            const double area = std::fabs(SignedArea(outer));
            if (Inside(outer, contours[i].xy[0], contours[i].xy[1]) && (best == outers.size() || area < bestArea)) {
                best = o;
                bestArea = area;
            }
        }
        if (best < outers.size()) holes[best].push_back(i);
    }
    Writer w(data);
    w.Put<std::int32_t>(-1);
    w.Put(static_cast<float>(outers.size()));
    for (std::size_t o = 0; o < outers.size(); ++o) {
        PutFloatContour(w, contours[outers[o]]);
        w.Put(static_cast<float>(holes[o].size()));
        for (std::size_t h : holes[o]) PutFloatContour(w, contours[h]);
    }
}

void EncodePolygons(const std::vector<GlyphSource::Contour>& contours, std::vector<std::uint8_t>& data) {
    Writer w(data);
    for (int i = 0; i < 14; ++i) w.Put<std::uint32_t>(i == 2 ? static_cast<std::uint32_t>(contours.size()) : 0);
    for (const auto& c : contours) {
        w.Put<std::uint32_t>(0);
        w.Put<std::uint32_t>(static_cast<std::uint32_t>(c.xy.size() / 2));
        for (double v : c.xy) w.Put(v);
    }
}

void EncodeSinglePath(const std::vector<GlyphSource::Contour>& contours, std::vector<std::uint8_t>& data) {
    if (contours.empty() || contours[0].xy.size() < 2) return;
    const auto& c = contours[0];
    const auto fixed = [](double v) { return static_cast<std::int32_t>(std::lround(v * 65536.0)); };
    Writer w(data);
    const std::size_t n = c.xy.size() / 2;
    w.Put<std::uint32_t>(static_cast<std::uint32_t>(16 + 4 + 8 * (n - 1)));
    w.Put<std::uint32_t>(kPolygonType);
    w.Put(fixed(c.xy[0]));
    w.Put(fixed(c.xy[1]));
    w.Put<std::uint16_t>(kLine);
    w.Put<std::uint16_t>(static_cast<std::uint16_t>(n - 1));
    for (std::size_t i = 2; i < c.xy.size(); ++i) w.Put(fixed(c.xy[i]));
}

}  // namespace

struct GlyphSource::Impl {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    ~Impl() {
        if (face != nullptr) FT_Done_Face(face);
        if (library != nullptr) FT_Done_FreeType(library);
    }
};

GlyphSource::GlyphSource(std::unique_ptr<Impl> impl, std::int32_t charSize, GlyphFormat format)
    : impl_(std::move(impl)), charSize_(charSize), format_(format) {}

GlyphSource::~GlyphSource() = default;

std::unique_ptr<GlyphSource> GlyphSource::Open(const std::string& fontPath, std::int32_t charSize,
                                               GlyphFormat format) {
    if (charSize <= 0 || charSize > kMaxFixedPixels / 2) return nullptr;
    auto impl = std::make_unique<Impl>();
    if (FT_Init_FreeType(&impl->library) != 0) return nullptr;
    if (FT_New_Face(impl->library, fontPath.c_str(), 0, &impl->face) != 0) return nullptr;
    if (FT_Set_Char_Size(impl->face, 0, static_cast<FT_F26Dot6>(charSize) * 64, 72, 72) != 0) return nullptr;
    return std::unique_ptr<GlyphSource>(new GlyphSource(std::move(impl), charSize, format));
}

bool GlyphSource::Flatten(std::uint32_t code, std::vector<Contour>& contours) {
    contours.clear();
    FT_Face face = impl_->face;
    if (FT_Load_Char(face, code, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) != 0) return false;
    if (face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return false;
    FT_Outline_Funcs funcs{MoveTo, LineTo, ConicTo, CubicTo, 0, 0};
    FlattenState state{&contours};
    if (FT_Outline_Decompose(&face->glyph->outline, &funcs, &state) != 0) return false;
    for (Contour& c : contours) {  // the decomposer repeats the start point at the end
        const std::size_t n = c.xy.size();
        if (n >= 4 && c.xy[0] == c.xy[n - 2] && c.xy[1] == c.xy[n - 1]) c.xy.resize(n - 2);
    }
    return true;
}

bool GlyphSource::Encode(std::uint32_t code, std::vector<std::uint8_t>& data, GlyphMetricsRecord& metrics) {
    data.clear();
    metrics = GlyphMetricsRecord{};
    FT_Face face = impl_->face;
    if (FT_Load_Char(face, code, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) != 0) return false;
    if (face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return false;
    const FT_Outline& outline = face->glyph->outline;
    FT_BBox box;
    FT_Outline_Get_CBox(&outline, &box);
    const FT_Pos left = box.xMin >> 6, bottom = box.yMin >> 6;
    const FT_Pos right = (box.xMax + 63) >> 6, top = (box.yMax + 63) >> 6;
    if (outline.n_points > 0) {
        if (left < -kMaxFixedPixels || bottom < -kMaxFixedPixels || right > kMaxFixedPixels ||
            top > kMaxFixedPixels) {
            return false;
        }
        metrics.blackBoxX = static_cast<std::uint32_t>(right - left);
        metrics.blackBoxY = static_cast<std::uint32_t>(top - bottom);
        metrics.originX = static_cast<std::int32_t>(left);
        metrics.originY = static_cast<std::int32_t>(top);
    }
    metrics.advanceX = static_cast<std::int16_t>((face->glyph->advance.x + 32) >> 6);
    if (outline.n_contours == 0) return true;

    if (format_ == GlyphFormat::CurveRecords) return EncodeCurveRecords(outline, data);
    std::vector<Contour> contours;
    if (!Flatten(code, contours)) return false;
    switch (format_) {
        case GlyphFormat::GroupedFloats:
            EncodeGroupedFloats(contours, FT_Outline_Get_Orientation(&face->glyph->outline) ==
                                              FT_ORIENTATION_TRUETYPE, data);
            break;
        case GlyphFormat::PolygonsOfDoubles: EncodePolygons(contours, data); break;
        default: EncodeSinglePath(contours, data); break;
    }
    return true;
}

std::int32_t GlyphSource::Callback(uintptr_t context, std::uint32_t characterCode, void* metrics,
                                   std::uint32_t bufferSize, void* buffer, const std::int32_t*) {
    auto* source = reinterpret_cast<GlyphSource*>(context);
    if (source == nullptr) return 0;
    std::vector<std::uint8_t> data;
    GlyphMetricsRecord record;
    if (!source->Encode(characterCode, data, record)) return 0;
    if (metrics != nullptr) std::memcpy(metrics, &record, sizeof record);
    if (buffer == nullptr) return static_cast<std::int32_t>(data.size());
    if (data.size() > bufferSize || data.empty()) return 0;
    std::memcpy(buffer, data.data(), data.size());
    return static_cast<std::int32_t>(data.size());
}

}  // namespace tr::tools
