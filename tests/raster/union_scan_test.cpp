// The union scan against the reference walk, triangle by triangle, on
// meshes sharing edges; the inverted-row count; the cost estimate that
// decides between scanning and walking.
#include "raster/union_scan.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;
using trtest::Mesh;

// Sets covered nibbles to 5.
struct FiveWords {
    uint16_t Whole(uint16_t) const { return 0x5555; }
    uint16_t Part(uint16_t v, uint16_t m) const { return static_cast<uint16_t>((v & ~m) | (0x5555 & m)); }
};

// The mesh through the union scan, chunk by chunk; returns the number of
// chunks scanned (rather than rejected as too costly, unless forced).
int DrawUnion(GuardedMap& m, const Mesh& mesh, bool force) {
    auto scan = std::make_unique<tr::CUnionScan>();
    int scanned = 0;
    auto flush = [&] {
        if (scan->Empty() || (!force && !scan->ScanPays())) return;
        scan->Scan(m.Words(), FiveWords{});
        ++scanned;
    };
    scan->Begin(m.W(), m.H());
    for (size_t t = 0; t < mesh.triangles.size(); t += 3) {
        const uint32_t* i = &mesh.triangles[t];
        tr::PreparedVertex v[3];
        for (int k = 0; k < 3; ++k) v[k] = tr::PrepareVertex(mesh.x[i[k]], mesh.y[i[k]]);
        if (!scan->Add(v[0], v[1], v[2], i[0], i[1], i[2])) {
            flush();
            scan->Begin(m.W(), m.H());
            EXPECT_TRUE(scan->Add(v[0], v[1], v[2], i[0], i[1], i[2]));
        }
    }
    flush();
    return scanned;
}

void ExpectSameAsReference(const Mesh& mesh, int32_t w, int32_t h, int n) {
    GuardedMap scanned(w, h), reference(w, h);
    DrawUnion(scanned, mesh, true);
    for (size_t t = 0; t < mesh.triangles.size() / 3; ++t) {
        float xs[3], ys[3];
        mesh.Triangle(t, xs, ys);
        trtest::WalkReference(reference, xs, ys, [&](int32_t row, int32_t x0, int32_t x1) {
            for (int32_t x = x0; x < x1; ++x) reference.Set(x, row, 5);
        });
    }
    ASSERT_TRUE(scanned.SameAs(reference)) << "case " << n;
}

// Cells from a quarter sub-sample to nine, some over the borders, up to
// four chunks; in half the grids some triangles are drawn twice (reversed)
// or span several cells. Tall grids start segments more than 2,048 rows
// apart (a comparison sort rather than counting).
TEST(UnionScan, GridsAndFansMatchTheReference) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    for (int n = 0; n < 600; ++n) {
        const int cols = 1 + static_cast<int>(rng() % 16), rows = 1 + static_cast<int>(rng() % 16);
        const float cell = n % 4 == 0 ? 0.25f + u(rng) * 0.3f : 0.7f + u(rng) * 9.0f;
        Mesh mesh = trtest::JitteredGrid(rng, cols, rows, -10.0f + u(rng) * 40.0f,
                                         -10.0f + u(rng) * 40.0f, cell, cell * 0.45f);
        const size_t base = n % 2 ? mesh.triangles.size() : 0;
        for (size_t t = 0; t < base; t += 3) {
            const uint32_t* tri = &mesh.triangles[t];
            if (rng() % 3 == 0) mesh.triangles.insert(mesh.triangles.end(), {tri[2], tri[1], tri[0]});
            const auto any = [&] { return static_cast<uint32_t>(rng() % mesh.x.size()); };
            if (rng() % 5 == 0) mesh.triangles.insert(mesh.triangles.end(), {any(), any(), any()});
        }
        ExpectSameAsReference(mesh, 64, 60, n);
    }
    for (int n = 0; n < 4; ++n)
        ExpectSameAsReference(trtest::JitteredGrid(rng, 2, 16, -20.0f, 3.0f, 150.0f + 10.0f * n, 40.0f),
                              64, 2600, n);
    // Fans of slivers from one apex to a dense, gently curved polyline, as
    // the tessellator makes them: near the apex the slivers are thinner
    // than the walk's rounding, so their edges cross.
    std::uniform_real_distribution<float> j(-0.02f, 0.02f);
    for (int n = 0; n < 300; ++n) {
        const float bx = u(rng) * 64, by = 150 + u(rng) * 100;
        const float ex = bx + (u(rng) - 0.5f) * 30, ey = by + (u(rng) - 0.5f) * 30;
        const uint32_t spokes = 20 + rng() % 200;
        Mesh mesh;
        mesh.Add(u(rng) * 64, u(rng) * 16);
        for (uint32_t i = 0; i <= spokes; ++i) {
            const float t = static_cast<float>(i) / spokes;
            mesh.Add(bx + (ex - bx) * t + 3.0f * t * (1 - t) + j(rng), by + (ey - by) * t + j(rng));
            if (i > 0) mesh.triangles.insert(mesh.triangles.end(), {0, i, i + 1});
        }
        ExpectSameAsReference(mesh, 64, 256, n);
    }
}

// Rows where a part's left edge lies right of its right edge, against a
// row-by-row count, for slopes of every size and sign.
TEST(UnionScan, InvertedRowsAreTheRowsWithPositiveDifference) {
    std::mt19937_64 rng(8);
    for (int n = 0; n < 200000; ++n) {
        const int64_t rows = 1 + static_cast<int64_t>(rng() % 40);
        const int64_t scale = int64_t{1} << (rng() % 30);
        const int64_t slope = static_cast<int64_t>(rng() % (2 * scale + 1)) - scale;
        const int64_t d0 = static_cast<int64_t>(rng() % (2 * scale * rows + 1)) - scale * rows;
        if (d0 <= 0 && d0 + (rows - 1) * slope <= 0) continue;
        const int64_t r0 = static_cast<int64_t>(rng() % 100);
        const tr::RowRange got = tr::InvertedRows(d0, d0 + (rows - 1) * slope, slope, r0, r0 + rows);
        for (int64_t i = 0; i < rows; ++i)
            ASSERT_EQ(d0 + i * slope > 0, r0 + i >= got.begin && r0 + i < got.end)
                << "d0 " << d0 << " slope " << slope << " row " << i;
    }
}

// A mesh sharing its edges is worth scanning; the same triangles with
// their own vertices each are not.
TEST(UnionScan, ScanPaysOnlyWhenEdgesAreShared) {
    std::mt19937 rng(3);
    const Mesh shared = trtest::JitteredGrid(rng, 8, 8, 2.0f, 2.0f, 7.0f, 1.0f);
    Mesh separate;
    for (uint32_t v : shared.triangles) {
        separate.triangles.push_back(static_cast<uint32_t>(separate.x.size()));
        separate.Add(shared.x[v], shared.y[v]);
    }
    GuardedMap a(64, 64), b(64, 64);
    EXPECT_EQ(DrawUnion(a, shared, false), 1);
    EXPECT_EQ(DrawUnion(b, separate, false), 0);
}

}  // namespace
