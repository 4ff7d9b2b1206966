// Matrix operations, viewport transform, taper and Project of CRasterizer_,
// checked against a naive column-major reference and against GLU.
#include <GL/glu.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;
using trtest::ScreenSpaceRasterizer;

// r = a * b, column-major (entry = column * 4 + row).
void Mul(const double* a, const double* b, double* r) {
    for (int c = 0; c < 4; ++c)
        for (int row = 0; row < 4; ++row) {
            double s = 0;
            for (int k = 0; k < 4; ++k) s += a[k * 4 + row] * b[c * 4 + k];
            r[c * 4 + row] = s;
        }
}

TEST(TransformStack, OperationsComposeLikeColumnMajorProducts) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(-3, 3);
    GuardedMap map(16, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 16, 16);
    double* mv = r->Init(map.Words(), 0, 16, 16, 0);
    for (int trial = 0; trial < 200; ++trial) {
        double ref[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        r->MatrixMode(kGlModelView);
        r->LoadIdentity();
        for (int op = 0; op < 6; ++op) {
            double m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
            const double x = u(rng), y = u(rng), z = u(rng);
            switch (rng() % 3) {
            case 0:
                r->Translate(x, y, z);
                m[12] = x, m[13] = y, m[14] = z;
                break;
            case 1:
                r->Scale(x, y, z);
                m[0] = x, m[5] = y, m[10] = z;
                break;
            default:
                for (double& e : m) e = u(rng);
                r->MultMatrix(m);
                break;
            }
            double out[16];
            Mul(ref, m, out);
            std::memcpy(ref, out, sizeof ref);
        }
        for (int i = 0; i < 16; ++i) ASSERT_NEAR(mv[i], ref[i], 1e-9 * (1 + std::fabs(ref[i]))) << i;
    }
}

TEST(TransformStack, MatrixModeSelectsProjectionForAnyOtherMode) {
    GuardedMap map(16, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 16, 16);
    double* mv = r->Init(map.Words(), 0, 16, 16, 0);
    r->MatrixMode(12345);  // not GL_MODELVIEW: projection
    r->LoadIdentity();
    r->Scale(2, 4, 1);
    r->MatrixMode(kGlModelView);
    r->LoadIdentity();
    EXPECT_EQ(mv[0], 1.0);
    double wx, wy, wz;
    const float vp[4] = {0, 0, 2, 2};
    ASSERT_EQ(r->Project(1, 1, 0, nullptr, nullptr, vp, &wx, &wy, &wz), 1);
    // Own viewport (0, 0, 2, 2): win = 1 + clip.
    EXPECT_DOUBLE_EQ(wx, 3.0);
    EXPECT_DOUBLE_EQ(wy, 5.0);
}

TEST(TransformStack, ProjectOfOriginWithIdentities) {
    GuardedMap map(16, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 16, 16);
    const double id[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const float vp[4] = {0, 0, 100, 50};
    double wx = -1, wy = -1, wz = -1;
    ASSERT_EQ(r->Project(0, 0, 0, id, id, vp, &wx, &wy, &wz), 1);
    EXPECT_EQ(wx, 50.0);
    EXPECT_EQ(wy, 25.0);
    EXPECT_EQ(wz, 0.5);
}

TEST(TransformStack, ProjectReturnsZeroAndWritesNothingWhenWIsZero) {
    GuardedMap map(16, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 16, 16);
    const double id[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    double flat[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0};  // w row all zero
    const float vp[4] = {0, 0, 10, 10};
    double wx = 7, wy = 8, wz = 9;
    EXPECT_EQ(r->Project(1, 2, 3, id, flat, vp, &wx, &wy, &wz), 0);
    EXPECT_EQ(wx, 7);
    EXPECT_EQ(wy, 8);
    EXPECT_EQ(wz, 9);
}

TEST(TransformStack, ProjectAgreesWithGlu) {
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> u(-2, 2);
    GuardedMap map(16, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 16, 16);
    for (int n = 0; n < 1000; ++n) {
        double mv[16], pr[16];
        for (int i = 0; i < 16; ++i) mv[i] = u(rng), pr[i] = u(rng);
        const GLint vpi[4] = {int(rng() % 50), int(rng() % 50), int(1 + rng() % 500),
                              int(1 + rng() % 500)};
        const float vpf[4] = {float(vpi[0]), float(vpi[1]), float(vpi[2]), float(vpi[3])};
        const double x = u(rng), y = u(rng), z = u(rng);
        double gx, gy, gz, ox, oy, oz;
        const GLint glOk = gluProject(x, y, z, mv, pr, vpi, &gx, &gy, &gz);
        const int ok = r->Project(x, y, z, mv, pr, vpf, &ox, &oy, &oz);
        ASSERT_EQ(ok, glOk == GL_TRUE ? 1 : 0);
        if (!ok) continue;
        const double tol = 1e-9 * (1 + std::fabs(gx) + std::fabs(gy) + std::fabs(gz));
        ASSERT_NEAR(ox, gx, tol);
        ASSERT_NEAR(oy, gy, tol);
        ASSERT_NEAR(oz, gz, tol);
    }
}

// Draws the quad (x0, y0) (x1, y0) (x1, y1) (x0, y1) as a strip.
void DrawRect(CRasterizer& r, double x0, double y0, double x1, double y1) {
    r.Begin();
    r.Vertex2d(x0, y0);
    r.Vertex2d(x1, y0);
    r.Vertex2d(x0, y1);
    r.Vertex2d(x1, y1);
    r.End();
}

void DrawQuad(CRasterizer& r, const double (&p)[4][2]) {
    r.Begin();
    for (const auto& v : p) r.Vertex2d(v[0], v[1]);
    r.End();
}

// SetTaper (+-20, 0) and (0, +-20) on a 100 x 100 map: the far edge of the
// map is pulled 20 % towards the centre, the near edge keeps its place. The
// tapered rectangle must equal the trapezoid with those corners.
TEST(TransformStack, TaperPullsFarEdgeTowardsCentre) {
    const uint8_t three[16] = {3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
    struct Case {
        float h, v;
        double corners[4][2];  // strip order: a, b, c, d
    } cases[] = {
        {20, 0, {{10, 0}, {90, 0}, {18, 100}, {82, 100}}},
        {-20, 0, {{18, 0}, {82, 0}, {10, 100}, {90, 100}}},
        {0, 20, {{0, 10}, {0, 90}, {100, 18}, {100, 82}}},
        {0, -20, {{0, 18}, {0, 82}, {100, 10}, {100, 90}}},
    };
    for (const Case& c : cases) {
        GuardedMap tapered(100, 100), expected(100, 100);
        auto r = ScreenSpaceRasterizer(tapered.Words(), 100, 100);
        r->SetNibbleMap(three);
        r->SetTaper(c.h, c.v);
        if (c.h != 0) {
            DrawRect(*r, 10, 0, 90, 100);
        } else {
            const double q[4][2] = {{0, 10}, {0, 90}, {100, 10}, {100, 90}};
            DrawQuad(*r, q);
        }
        auto e = ScreenSpaceRasterizer(expected.Words(), 100, 100);
        e->SetNibbleMap(three);
        DrawQuad(*e, c.corners);
        EXPECT_TRUE(tapered.SameAs(expected)) << "taper " << c.h << ", " << c.v;
        int covered = 0;
        for (int32_t y = 0; y < 100; ++y)
            for (int32_t x = 0; x < 100; ++x) covered += tapered.At(x, y) == 3;
        EXPECT_GT(covered, 6000);  // the trapezoid is drawn, not dropped
    }
}

TEST(TransformStack, InitSwitchesTaperOff) {
    const uint8_t one[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    GuardedMap a(100, 100), b(100, 100);
    auto r = ScreenSpaceRasterizer(a.Words(), 100, 100);
    r->SetTaper(50, 50);
    r->Init(a.Words(), 0, 100, 100, 0);
    r->SetNibbleMap(one);
    DrawRect(*r, 10, 10, 90, 90);
    auto e = ScreenSpaceRasterizer(b.Words(), 100, 100);
    e->SetNibbleMap(one);
    DrawRect(*e, 10, 10, 90, 90);
    EXPECT_TRUE(a.SameAs(b));
}

}  // namespace
