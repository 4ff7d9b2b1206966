// tests/outline/block_view.h — test-private: a character outline block read
// back into plain vectors from its byte layout (not through the library's
// readers), and independent polygon geometry.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "outline/point3d.h"

namespace tr::test {

inline std::uint32_t U32(const std::uint8_t* block, std::size_t offset) {
    std::uint32_t v;
    std::memcpy(&v, block + offset, 4);
    return v;
}

struct GroupView {
    std::vector<CPoint3D> outer;
    std::vector<std::vector<CPoint3D>> holes;
    std::vector<std::uint32_t> triangles;
    std::vector<CPoint3D> all;  // what indices address: outer, holes, extra vertices
};

inline std::vector<CPoint3D> Points(const std::uint8_t* block, std::uint32_t offset, std::uint32_t count) {
    std::vector<CPoint3D> p(count);
    if (count != 0) std::memcpy(p.data(), block + offset, 24 * std::size_t{count});
    return p;
}

// The vertex array runs from the outer points up to the index array.
inline std::vector<GroupView> ReadGroups(const std::uint8_t* block) {
    std::vector<GroupView> groups(U32(block, 40));
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const std::uint8_t* rec = block + U32(block, 64 + 4 * g);
        GroupView& v = groups[g];
        v.outer = Points(block, U32(rec, 12), U32(rec, 8));
        for (std::uint32_t j = 0; j < U32(rec, 16); ++j) {
            v.holes.push_back(Points(block, U32(rec, 28 + 8 * j), U32(rec, 24 + 8 * j)));
        }
        v.triangles.resize(U32(rec, 0));
        if (!v.triangles.empty()) std::memcpy(v.triangles.data(), block + U32(rec, 4), 4 * v.triangles.size());
        v.all = Points(block, U32(rec, 12), (U32(rec, 4) - U32(rec, 12)) / 24);
    }
    return groups;
}

// Shoelace area, positive for counter-clockwise (y up).
inline double SignedArea(const std::vector<CPoint3D>& p) {
    double a = 0.0;
    for (std::size_t i = 0, j = p.size() - 1; i < p.size(); j = i++) a += p[j].x * p[i].y - p[i].x * p[j].y;
    return a / 2.0;
}

inline bool Inside(const std::vector<CPoint3D>& p, double x, double y) {
    bool in = false;
    for (std::size_t i = 0, j = p.size() - 1; i < p.size(); j = i++) {
        if ((p[i].y > y) != (p[j].y > y) && x < (p[j].x - p[i].x) * (y - p[i].y) / (p[j].y - p[i].y) + p[i].x) {
            in = !in;
        }
    }
    return in;
}

inline double TriangleArea(const CPoint3D& a, const CPoint3D& b, const CPoint3D& c) {
    return std::fabs((b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y)) / 2.0;
}

// Sum of the triangle areas of every group; `at` throws on a bad index.
inline double TiledArea(const std::vector<GroupView>& groups) {
    double sum = 0;
    for (const GroupView& g : groups) {
        for (std::size_t t = 0; t + 2 < g.triangles.size(); t += 3) {
            sum += TriangleArea(g.all.at(g.triangles[t]), g.all.at(g.triangles[t + 1]), g.all.at(g.triangles[t + 2]));
        }
    }
    return sum;
}

}  // namespace tr::test
