// raster/transform_stack.cpp — the fixed-function transform of CRasterizer_:
// column-major matrices with the semantics of the GL calls of the same
// names, the viewport, the affine vertex transform, the perspective taper
// and gluProject.
//
// Drawing uses only the affine part of the matrices: eye = MV * (x, y, 0, 1)
// restricted to x and y, clip x = eye x * P[0] + P[12] (y likewise with P[5],
// P[13]), no division by w. Intermediate values are doubles; screen
// coordinates are stored as floats.
#include <cmath>
#include <cstring>

#include "raster/rasterizer_impl.h"

namespace {

// out = (column-major m) * in, summed in GLU's order.
void MultMatrixVec(const double* m, const double in[4], double out[4]) {
    for (int i = 0; i < 4; ++i) {
        out[i] = in[0] * m[0 * 4 + i] + in[1] * m[1 * 4 + i] + in[2] * m[2 * 4 + i] +
                 in[3] * m[3 * 4 + i];
    }
}

}  // namespace

void CRasterizer_::MatrixMode(uint32_t mode) {
    currentMatrix_ = mode == kGlModelView ? modelView_ : projection_;
}

void CRasterizer_::LoadIdentity() {
    for (int i = 0; i < 16; ++i) currentMatrix_[i] = (i % 5 == 0) ? 1.0 : 0.0;
}

void CRasterizer_::MultMatrix(const double* m) {
    double a[16], r[16];
    std::memcpy(a, m, sizeof a);  // m may alias the current matrix
    const double* c = currentMatrix_;
    for (int col = 0; col < 4; ++col) {
        for (int row = 0; row < 4; ++row) {
            r[col * 4 + row] = c[0 * 4 + row] * a[col * 4 + 0] + c[1 * 4 + row] * a[col * 4 + 1] +
                               c[2 * 4 + row] * a[col * 4 + 2] + c[3 * 4 + row] * a[col * 4 + 3];
        }
    }
    std::memcpy(currentMatrix_, r, sizeof r);
}

void CRasterizer_::Translate(double x, double y, double z) {
    double* m = currentMatrix_;
    for (int i = 0; i < 4; ++i) m[12 + i] = m[i] * x + m[4 + i] * y + m[8 + i] * z + m[12 + i];
}

void CRasterizer_::Scale(double x, double y, double z) {
    double* m = currentMatrix_;
    for (int i = 0; i < 4; ++i) {
        m[i] *= x;
        m[4 + i] *= y;
        m[8 + i] *= z;
    }
}

void CRasterizer_::Viewport(float x, float y, float w, float h) {
    viewport_[0] = x;
    viewport_[1] = y;
    viewport_[2] = w;
    viewport_[3] = h;
    scaleX_ = w / 2;
    offsetX_ = x + w / 2;
    scaleY_ = h / 2;
    offsetY_ = y + h / 2;
}

void CRasterizer_::SetTaper(float horizontal, float vertical) {
    taperX_ = horizontal;
    taperY_ = vertical;
    taperDistX_ = horizontal != 0.0f ? height_ * 100.0 / std::fabs(horizontal) : 0.0;
    taperDistY_ = vertical != 0.0f ? width_ * 100.0 / std::fabs(vertical) : 0.0;
    // The kept pair of a strip is tapered when its next quad is filled.
    stripPreparedMask_ = 0;
}

// h > 0 narrows the figure towards the bottom of the map, h < 0 towards the
// top, by h percent at the far edge; v likewise towards the right or left,
// using the already tapered x.
void CRasterizer_::TaperVertex(float& xOut, float& yOut) const {
    const double cx = width_ / 2.0, cy = height_ / 2.0;
    const double dh = taperDistX_, dv = taperDistY_;
    double x = xOut, y = yOut;
    if (taperX_ > 0.0f) {
        x = cx + (x - cx) * (dh - y) / dh;
    } else if (taperX_ < 0.0f) {
        x = cx + (x - cx) * (y + dh - height_) / dh;
    }
    if (taperY_ > 0.0f) {
        y = cy + (y - cy) * (dv - x) / dv;
    } else if (taperY_ < 0.0f) {
        y = cy + (y - cy) * (x + dv - width_) / dv;
    }
    xOut = static_cast<float>(x);
    yOut = static_cast<float>(y);
}

void CRasterizer_::ApplyTaper(tr::ScreenTriangle& t) const {
    for (int i = 0; i < 3; ++i) TaperVertex(t.x[i], t.y[i]);
}

int CRasterizer_::Project(double x, double y, double z, const double* modelView,
                          const double* projection, const float* viewport, double* winX,
                          double* winY, double* winZ) {
    if (modelView == nullptr) {
        modelView = modelView_;
        projection = projection_;
        viewport = viewport_;
    }
    const double in[4] = {x, y, z, 1.0};
    double eye[4], clip[4];
    MultMatrixVec(modelView, in, eye);
    MultMatrixVec(projection, eye, clip);
    if (clip[3] == 0.0) return 0;
    const double nx = clip[0] / clip[3], ny = clip[1] / clip[3], nz = clip[2] / clip[3];
    *winX = viewport[0] + viewport[2] * (nx + 1) / 2;
    *winY = viewport[1] + viewport[3] * (ny + 1) / 2;
    *winZ = (nz + 1) / 2;
    return 1;
}
