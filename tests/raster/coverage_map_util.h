// tests/raster/coverage_map_util.h — helpers shared by the raster tests: a
// coverage map with guard words around it, sub-sample access written from
// the layout definition, and a brute-force oracle of the fill rule.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace trtest {

// W x H sub-samples with kGuardWords guard words on each side.
class GuardedMap {
public:
    static constexpr size_t kGuardWords = 256;
    static constexpr uint16_t kGuardPattern = 0xA5C3;

    GuardedMap(int32_t w, int32_t h)
        : w_(w), h_(h), data_(static_cast<size_t>(w) * h / 4 + 2 * kGuardWords, kGuardPattern) {
        std::memset(Words(), 0, Bytes());
    }
    uint16_t* Words() { return data_.data() + kGuardWords; }
    const uint16_t* Words() const { return data_.data() + kGuardWords; }
    size_t Bytes() const { return static_cast<size_t>(w_) * h_ / 2; }
    int32_t W() const { return w_; }
    int32_t H() const { return h_; }
    // Sub-sample (x, y): word (y/4)*W + 4*(x/4) + y%4, nibble x%4 from the top.
    uint32_t At(int32_t x, int32_t y) const {
        const uint16_t w = Words()[(y / 4) * w_ + 4 * (x / 4) + (y % 4)];
        return (w >> (12 - 4 * (x % 4))) & 0xF;
    }
    void Set(int32_t x, int32_t y, uint32_t v) {
        uint16_t& w = Words()[(y / 4) * w_ + 4 * (x / 4) + (y % 4)];
        const int shift = 12 - 4 * (x % 4);
        w = static_cast<uint16_t>((w & ~(0xF << shift)) | (v << shift));
    }
    bool GuardsIntact() const {
        for (size_t i = 0; i < kGuardWords; ++i) {
            if (data_[i] != kGuardPattern || data_[data_.size() - 1 - i] != kGuardPattern) return false;
        }
        return true;
    }
    bool SameAs(const GuardedMap& o) const {
        return data_.size() == o.data_.size() &&
               std::memcmp(data_.data(), o.data_.data(), data_.size() * 2) == 0;
    }

private:
    int32_t w_, h_;
    std::vector<uint16_t> data_;
};

// The fill rule evaluated per sub-sample in closed form. Fixed point with
// 2048 units per sub-sample: X = trunc((x + 0.5) * 2048), Y = trunc((y -
// 0.5) * 2048), so the centre of (p, r) is at ((p + 1) * 2048, r * 2048).
// An edge walked down from (x0, y0) to (x1, y1) is at
//   x0 + trunc((first * 2048 - y0) * dx / dy) + (r - first) * trunc(dx / dy * 2048)
// on row r, first = ceil(y0 / 2048). The centre is covered when
// Ytop <= Cy < Ybot and Xleft(r) <= Cx < Xright(r).
class FillRuleOracle {
public:
    FillRuleOracle(const float* xs, const float* ys) {
        int o[3] = {0, 1, 2};
        for (int i = 0; i < 3; ++i)
            for (int j = i + 1; j < 3; ++j)
                if (ys[o[j]] < ys[o[i]] || (ys[o[j]] == ys[o[i]] && o[j] < o[i])) std::swap(o[i], o[j]);
        for (int i = 0; i < 3; ++i) {
            x_[i] = xs[o[i]];
            y_[i] = ys[o[i]];
            xf_[i] = static_cast<int64_t>((double(x_[i]) + 0.5) * 2048.0);
            yf_[i] = static_cast<int64_t>((double(y_[i]) - 0.5) * 2048.0);
        }
        area2_ = (double(x_[1]) - x_[0]) * (double(y_[2]) - y_[0]) -
                 (double(x_[2]) - x_[0]) * (double(y_[1]) - y_[0]);
        dropped_ = std::fabs(area2_) < 0.05;
    }
    bool Covers(int32_t p, int32_t r) const {
        if (dropped_) return false;
        const int64_t cy = int64_t{r} * 2048, cx = (int64_t{p} + 1) * 2048;
        if (cy < yf_[0] || cy >= yf_[2]) return false;
        const int64_t longX = EdgeX(0, 2, r);
        const int64_t shortX = cy < yf_[1] ? EdgeX(0, 1, r) : EdgeX(1, 2, r);
        const int64_t left = area2_ > 0 ? longX : shortX;
        const int64_t right = area2_ > 0 ? shortX : longX;
        return left <= cx && cx < right;
    }

private:
    static int64_t CeilDiv2048(int64_t v) { return (v >= 0 ? v + 2047 : v) / 2048; }
    int64_t EdgeX(int a, int b, int32_t r) const {
        const int64_t first = CeilDiv2048(yf_[a]);
        const double dx = double(xf_[b] - xf_[a]), dy = double(yf_[b] - yf_[a]);
        return xf_[a] + static_cast<int64_t>(double(first * 2048 - yf_[a]) * dx / dy) +
               (r - first) * static_cast<int64_t>(dx / dy * 2048.0);
    }
    float x_[3], y_[3];
    int64_t xf_[3], yf_[3];
    double area2_;
    bool dropped_;
};

inline std::string TriangleText(const float* xs, const float* ys) {
    char buf[256];
    std::snprintf(buf, sizeof buf, "(%.9g, %.9g) (%.9g, %.9g) (%.9g, %.9g)", xs[0], ys[0], xs[1],
                  ys[1], xs[2], ys[2]);
    return buf;
}

}  // namespace trtest
