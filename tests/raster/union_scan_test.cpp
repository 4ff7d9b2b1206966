// The union scan against the reference walk: meshes whose triangles share
// edges (jittered grids, fans of slivers thinner than the walk's rounding,
// duplicated and overlapping triangles), more triangles than a chunk holds,
// and the cost estimate that decides between scanning and walking.
#include "raster/union_scan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;

constexpr uint16_t kPattern = 0x5555;  // value 5 everywhere

// Sets covered nibbles to 5.
struct FiveWords {
    uint16_t Whole(uint16_t) const { return kPattern; }
    uint16_t Part(uint16_t v, uint16_t m) const {
        return static_cast<uint16_t>((v & ~m) | (kPattern & m));
    }
};

struct Mesh {
    std::vector<float> x, y;
    std::vector<uint32_t> triangles;  // three vertex numbers each
};

// Every triangle through the reference set-up and walk: the sub-samples
// of the union get 5.
void DrawReference(GuardedMap& m, const Mesh& mesh) {
    const tr::WalkWindow window{0, m.H(), m.W()};
    auto span = [&](int32_t row, int32_t x0, int32_t x1) {
        for (int32_t x = x0; x < x1; ++x) m.Set(x, row, 5);
    };
    auto onSetup = [&](const tr::TriangleSetup&, const tr::ScreenTriangle&) { return span; };
    for (size_t t = 0; t < mesh.triangles.size(); t += 3) {
        tr::ScreenTriangle tri{};
        for (int k = 0; k < 3; ++k) {
            tri.x[k] = mesh.x[mesh.triangles[t + k]];
            tri.y[k] = mesh.y[mesh.triangles[t + k]];
        }
        tr::RasterizeTriangle(tri, window, onSetup);
    }
}

// The mesh through the union scan, chunk by chunk; the number of chunks
// scanned (rather than rejected as too costly) is returned.
int DrawUnion(GuardedMap& m, const Mesh& mesh, bool force = false) {
    auto scan = std::make_unique<tr::CUnionScan>();
    int scanned = 0;
    auto flush = [&] {
        if (scan->Empty()) return;
        if (!force && !scan->ScanPays()) return;
        scan->Scan(m.Words(), FiveWords{});
        ++scanned;
    };
    scan->Begin(m.W(), m.H());
    for (size_t t = 0; t < mesh.triangles.size(); t += 3) {
        const uint32_t* i = &mesh.triangles[t];
        const tr::PreparedVertex a = tr::PrepareVertex(mesh.x[i[0]], mesh.y[i[0]]);
        const tr::PreparedVertex b = tr::PrepareVertex(mesh.x[i[1]], mesh.y[i[1]]);
        const tr::PreparedVertex c = tr::PrepareVertex(mesh.x[i[2]], mesh.y[i[2]]);
        if (!scan->Add(a, b, c, i[0], i[1], i[2])) {
            flush();
            scan->Begin(m.W(), m.H());
            EXPECT_TRUE(scan->Add(a, b, c, i[0], i[1], i[2]));
        }
    }
    flush();
    return scanned;
}

// A jittered grid of cols x rows cells, two triangles per cell sharing
// the diagonal (either one), neighbours sharing the cell sides.
Mesh Grid(std::mt19937& rng, int cols, int rows, float x0, float y0, float cell, float jitter) {
    std::uniform_real_distribution<float> j(-jitter, jitter);
    Mesh mesh;
    for (int r = 0; r <= rows; ++r) {
        for (int c = 0; c <= cols; ++c) {
            mesh.x.push_back(x0 + c * cell + j(rng));
            mesh.y.push_back(y0 + r * cell + j(rng));
        }
    }
    auto at = [&](int c, int r) { return static_cast<uint32_t>(r * (cols + 1) + c); };
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            const uint32_t a = at(c, r), b = at(c + 1, r), d = at(c, r + 1), e = at(c + 1, r + 1);
            if (rng() % 2) {
                mesh.triangles.insert(mesh.triangles.end(), {a, b, e, a, e, d});
            } else {
                mesh.triangles.insert(mesh.triangles.end(), {a, b, d, b, e, d});
            }
        }
    }
    return mesh;
}

// A closed ring of thin triangles between two concentric polygons, as the
// tessellator makes for a stroke; with many sides the slivers are thinner
// than the walk's rounding on many rows.
Mesh Ring(float cx, float cy, float outer, float inner, int sides, float turn) {
    constexpr double kTwoPi = 6.283185307179586;
    Mesh mesh;
    for (int i = 0; i < sides; ++i) {
        const double a = kTwoPi * i / sides, b = a + turn;
        mesh.x.push_back(cx + outer * static_cast<float>(std::cos(a)));
        mesh.y.push_back(cy + outer * static_cast<float>(std::sin(a)));
        mesh.x.push_back(cx + inner * static_cast<float>(std::cos(b)));
        mesh.y.push_back(cy + inner * static_cast<float>(std::sin(b)));
    }
    for (int i = 0; i < sides; ++i) {
        const uint32_t o0 = 2 * i, i0 = 2 * i + 1;
        const uint32_t o1 = 2 * ((i + 1) % sides), i1 = o1 + 1;
        mesh.triangles.insert(mesh.triangles.end(), {o0, o1, i0, o1, i1, i0});
    }
    return mesh;
}

// A fan of slivers from one apex to a dense, gently curved polyline, as
// the tessellator fans out from a far contour point: near the apex the
// slivers are far thinner than the walk's rounding.
Mesh Fan(std::mt19937& rng, float ax, float ay, float bx, float by, float ex, float ey,
         int spokes) {
    std::uniform_real_distribution<float> j(-0.02f, 0.02f);
    Mesh mesh;
    mesh.x.push_back(ax);
    mesh.y.push_back(ay);
    for (int i = 0; i <= spokes; ++i) {
        const float t = static_cast<float>(i) / spokes;
        const float bend = 3.0f * t * (1 - t);
        mesh.x.push_back(bx + (ex - bx) * t + bend + j(rng));
        mesh.y.push_back(by + (ey - by) * t + j(rng));
    }
    for (uint32_t i = 1; i <= static_cast<uint32_t>(spokes); ++i) {
        mesh.triangles.insert(mesh.triangles.end(), {0, i, i + 1});
    }
    return mesh;
}

void ExpectSameAsReference(const Mesh& mesh, int32_t w, int32_t h, const std::string& what) {
    GuardedMap scanned(w, h), reference(w, h);
    DrawUnion(scanned, mesh, true);
    DrawReference(reference, mesh);
    ASSERT_TRUE(scanned.SameAs(reference)) << what;
    ASSERT_TRUE(scanned.GuardsIntact()) << what;
}

TEST(UnionScan, JitteredGridsMatchTheReference) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    for (int n = 0; n < 400; ++n) {
        const int cols = 1 + static_cast<int>(rng() % 12), rows = 1 + static_cast<int>(rng() % 12);
        // Cells from a quarter sub-sample (triangles near the area limit)
        // to nine sub-samples.
        const float cell = n % 4 == 0 ? 0.25f + u(rng) * 0.3f : 0.7f + u(rng) * 9.0f;
        // Some grids hang over the map's borders.
        const Mesh mesh = Grid(rng, cols, rows, -10.0f + u(rng) * 40.0f,
                               -10.0f + u(rng) * 40.0f, cell, cell * 0.45f);
        ExpectSameAsReference(mesh, 64, 60, "grid " + std::to_string(n));
    }
}

TEST(UnionScan, RingsOfSliversMatchTheReference) {
    for (int sides : {7, 40, 150, 400}) {
        for (float turn : {0.0f, 0.003f, 0.02f}) {
            for (float inner : {10.0f, 27.0f, 29.9f}) {
                const Mesh mesh = Ring(32.3f, 31.9f, 30.0f, inner, sides, turn);
                ExpectSameAsReference(mesh, 64, 64,
                                      "sides " + std::to_string(sides) + " inner " +
                                          std::to_string(inner) + " turn " + std::to_string(turn));
            }
        }
    }
}

TEST(UnionScan, FansOfSliversMatchTheReference) {
    std::mt19937 rng(21);
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    for (int n = 0; n < 300; ++n) {
        const float ax = u(rng) * 64, ay = u(rng) * 16;
        const float bx = u(rng) * 64, by = 150 + u(rng) * 100;
        const float ex = bx + (u(rng) - 0.5f) * 30, ey = by + (u(rng) - 0.5f) * 30;
        const Mesh mesh = Fan(rng, ax, ay, bx, by, ex, ey, 20 + static_cast<int>(rng() % 200));
        ExpectSameAsReference(mesh, 64, 256, "fan " + std::to_string(n));
    }
}

// Triangles drawn twice (same and reversed order of vertices) and triangles
// overlapping others: the union is unchanged, nothing cancels wrongly.
TEST(UnionScan, DuplicatedAndOverlappingTrianglesMatchTheReference) {
    std::mt19937 rng(5);
    for (int n = 0; n < 300; ++n) {
        Mesh mesh = Grid(rng, 4, 4, 5.0f, 7.0f, 9.0f, 3.0f);
        const size_t base = mesh.triangles.size();
        for (size_t t = 0; t < base; t += 3) {
            if (rng() % 3 == 0) {
                mesh.triangles.insert(mesh.triangles.end(), {mesh.triangles[t + 2],
                                                             mesh.triangles[t + 1],
                                                             mesh.triangles[t]});
            }
            if (rng() % 5 == 0) {  // a triangle across several cells
                mesh.triangles.insert(mesh.triangles.end(),
                                      {static_cast<uint32_t>(rng() % 25),
                                       static_cast<uint32_t>(rng() % 25),
                                       static_cast<uint32_t>(rng() % 25)});
            }
        }
        ExpectSameAsReference(mesh, 48, 52, "mesh " + std::to_string(n));
    }
}

TEST(UnionScan, DrawsLongerThanAChunkMatchTheReference) {
    std::mt19937 rng(99);
    const Mesh mesh = Grid(rng, 30, 20, 1.0f, 1.0f, 3.0f, 1.2f);  // 1200 triangles
    ASSERT_GT(mesh.triangles.size() / 3, 4 * tr::CUnionScan::kMaxTriangles);
    ExpectSameAsReference(mesh, 100, 72, "big grid");
}

// The rows where a part's left edge lies right of its right edge, against
// a row-by-row count, for positive and negative slopes of every size.
TEST(UnionScan, InvertedRowsAreTheRowsWithPositiveDifference) {
    std::mt19937_64 rng(8);
    for (int n = 0; n < 200000; ++n) {
        const int64_t rows = 1 + static_cast<int64_t>(rng() % 40);
        const int64_t scale = int64_t{1} << (rng() % 30);
        const int64_t slope = static_cast<int64_t>(rng() % (2 * scale + 1)) - scale;
        const int64_t d0 = static_cast<int64_t>(rng() % (2 * scale * rows + 1)) - scale * rows;
        const int64_t d1 = d0 + (rows - 1) * slope;
        if (d0 <= 0 && d1 <= 0) continue;
        const int64_t r0 = static_cast<int64_t>(rng() % 100);
        const tr::RowRange got = tr::InvertedRows(d0, d1, slope, r0, r0 + rows);
        for (int64_t i = 0; i < rows; ++i) {
            const bool inverted = d0 + i * slope > 0;
            const bool inRange = r0 + i >= got.begin && r0 + i < got.end;
            ASSERT_EQ(inverted, inRange) << "d0 " << d0 << " slope " << slope << " row " << i;
        }
    }
}

// A mesh sharing its edges is worth scanning; the same triangles with
// their own vertices each (no shared edges) are not.
TEST(UnionScan, ScanPaysOnlyWhenEdgesAreShared) {
    std::mt19937 rng(3);
    const Mesh shared = Grid(rng, 8, 8, 2.0f, 2.0f, 7.0f, 1.0f);
    Mesh separate;
    for (uint32_t v : shared.triangles) {
        separate.triangles.push_back(static_cast<uint32_t>(separate.x.size()));
        separate.x.push_back(shared.x[v]);
        separate.y.push_back(shared.y[v]);
    }
    GuardedMap a(64, 64), b(64, 64);
    EXPECT_EQ(DrawUnion(a, shared), 1);
    EXPECT_EQ(DrawUnion(b, separate), 0);
}

}  // namespace
