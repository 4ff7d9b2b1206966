// Matrix operations, taper and Project of CRasterizer_, against a naive
// column-major reference, drawn trapezoids and GLU.
#include <GL/glu.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;
using trtest::ScreenSpaceRasterizer;

TEST(TransformStack, OperationsComposeLikeColumnMajorProducts) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(-3, 3);
    GuardedMap map(16, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 16, 16);
    const double* mv = r->Init(map.Words(), 0, 16, 16, 0);
    for (int trial = 0; trial < 200; ++trial) {
        double ref[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        r->LoadIdentity();
        for (int op = 0; op < 6; ++op) {
            double m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
            const double x = u(rng), y = u(rng), z = u(rng);
            switch (rng() % 3) {
                case 0: r->Translate(x, y, z), m[12] = x, m[13] = y, m[14] = z; break;
                case 1: r->Scale(x, y, z), m[0] = x, m[5] = y, m[10] = z; break;
                default:
                    for (double& e : m) e = u(rng);
                    r->MultMatrix(m);
            }
            double out[16] = {};  // ref * m, entry = column * 4 + row
            for (int c = 0; c < 4; ++c)
                for (int row = 0; row < 4; ++row)
                    for (int k = 0; k < 4; ++k) out[c * 4 + row] += ref[k * 4 + row] * m[c * 4 + k];
            std::memcpy(ref, out, sizeof ref);
        }
        for (int i = 0; i < 16; ++i) ASSERT_NEAR(mv[i], ref[i], 1e-9 * (1 + std::fabs(ref[i])));
    }
}

TEST(TransformStack, ProjectAgreesWithGluAndLeavesOutputsWhenWIsZero) {
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> u(-2, 2);
    GuardedMap map(16, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 16, 16);
    for (int n = 0; n < 1000; ++n) {
        double mv[16], pr[16];
        for (int i = 0; i < 16; ++i) mv[i] = u(rng), pr[i] = u(rng);
        if (n % 10 == 0) pr[3] = pr[7] = pr[11] = pr[15] = 0;  // w = 0
        const GLint vpi[4] = {int(rng() % 50), int(rng() % 50), int(1 + rng() % 500),
                              int(1 + rng() % 500)};
        const float vpf[4] = {float(vpi[0]), float(vpi[1]), float(vpi[2]), float(vpi[3])};
        const double x = u(rng), y = u(rng), z = u(rng);
        double gx, gy, gz, ox = 7, oy = 8, oz = 9;
        const GLint glOk = gluProject(x, y, z, mv, pr, vpi, &gx, &gy, &gz);
        const int ok = r->Project(x, y, z, mv, pr, vpf, &ox, &oy, &oz);
        ASSERT_EQ(ok, glOk == GL_TRUE ? 1 : 0);
        if (!ok) {
            ASSERT_TRUE(ox == 7 && oy == 8 && oz == 9);
            continue;
        }
        const double tol = 1e-9 * (1 + std::fabs(gx) + std::fabs(gy) + std::fabs(gz));
        ASSERT_TRUE(std::fabs(ox - gx) < tol && std::fabs(oy - gy) < tol &&
                    std::fabs(oz - gz) < tol) << n;
    }
    // Any mode but GL_MODELVIEW selects the projection; a null model-view
    // projects with the own matrices and viewport (0, 0, 2, 2).
    r->MatrixMode(12345);
    r->LoadIdentity();
    r->Scale(2, 4, 1);
    r->MatrixMode(kGlModelView);
    double wx, wy, wz;
    ASSERT_EQ(r->Project(1, 1, 0, nullptr, nullptr, nullptr, &wx, &wy, &wz), 1);
    EXPECT_TRUE(wx == 3.0 && wy == 5.0) << wx << ", " << wy;  // 1 + clip
}

void DrawQuad(CRasterizer& r, const double (&p)[4][2]) {
    r.Begin();
    for (const auto& v : p) r.Vertex2d(v[0], v[1]);
}

// SetTaper (+-20, 0) and (0, +-20) on a 100 x 100 map: the far edge is
// pulled 20 % towards the centre, the near edge stays; Init switches the
// taper off.
TEST(TransformStack, TaperPullsFarEdgeTowardsCentre) {
    const double rows[4][2] = {{10, 0}, {90, 0}, {10, 100}, {90, 100}};  // strip order
    const double cols[4][2] = {{0, 10}, {0, 90}, {100, 10}, {100, 90}};
    const struct {
        float h, v;
        double corners[4][2];
    } cases[] = {
        {20, 0, {{10, 0}, {90, 0}, {18, 100}, {82, 100}}},
        {-20, 0, {{18, 0}, {82, 0}, {10, 100}, {90, 100}}},
        {0, 20, {{0, 10}, {0, 90}, {100, 18}, {100, 82}}},
        {0, -20, {{0, 18}, {0, 82}, {100, 10}, {100, 90}}},
    };
    for (const auto& c : cases) {
        GuardedMap tapered(100, 100), expected(100, 100), reset(100, 100);
        auto r = ScreenSpaceRasterizer(tapered.Words(), 100, 100);
        trtest::SetConstantMap(*r, 3);
        r->SetTaper(c.h, c.v);
        DrawQuad(*r, c.h != 0 ? rows : cols);
        r->Init(expected.Words(), 0, 100, 100, 0);
        DrawQuad(*r, c.corners);
        EXPECT_TRUE(tapered.SameAs(expected) && tapered.Count(3) > 6000) << c.h << ", " << c.v;
        r->Init(reset.Words(), 0, 100, 100, 0);
        DrawQuad(*r, c.h != 0 ? rows : cols);
        EXPECT_EQ(reset.Count(3), 8000) << c.h << ", " << c.v << " after Init";
    }
}

}  // namespace
