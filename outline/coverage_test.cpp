// outline/coverage_test.cpp — point-in-contour, pairwise relations and the
// grouping by nesting depth.
//
// The depth of a contour j below an outer candidate o is the number of
// contours that enclose j, counted only when o itself encloses j and j is
// not yet in a group. Those counts do not change while grouping, so they are
// computed once; each collection step is then a linear scan and the whole
// grouping O(n^2) in the number of contours.
#include "outline/coverage_test.h"

#include <cassert>
#include <iterator>

namespace tr {

ContourArray::ContourArray(const Coutline& contour)
    : points(contour.points.begin(), contour.points.end()) {
    for (const CPoint3D& p : points) {
        if (&p == points.data() || p.y < minY) minY = p.y;
        if (&p == points.data() || p.y > maxY) maxY = p.y;
    }
}

// An edge counts only for cur.y <= y < prev.y or prev.y <= y < cur.y, so no
// edge counts for y outside [minY, maxY): the early answer is exact.
bool PointInside(const ContourArray& contour, double x, double y) {
    const std::vector<CPoint3D>& p = contour.points;
    if (p.empty() || !(y >= contour.minY && y < contour.maxY)) return false;
    bool inside = false;
    const CPoint3D* prev = &p.back();
    for (const CPoint3D& cur : p) {
        if ((cur.y <= y && y < prev->y) || (prev->y <= y && y < cur.y)) {
            const double xi = (prev->x - cur.x) * (y - cur.y) / (prev->y - cur.y) + cur.x;
            if (xi > x) inside = !inside;
        }
        prev = &cur;
    }
    return inside;
}

bool PointInside(const Coutline& contour, double x, double y) {
    return PointInside(ContourArray(contour), x, y);
}

std::uint32_t Relation(const ContourArray& a, const ContourArray& b) {
    if (a.points.empty() || b.points.empty()) return kRelationDisjoint;
    bool someInside = false;
    bool someOutside = false;
    for (const CPoint3D& p : a.points) {
        if (PointInside(b, p.x, p.y)) {
            someInside = true;
        } else {
            someOutside = true;
        }
        if (someInside && someOutside) return kRelationOverlap;
    }
    if (someInside) return kRelationInside;
    const CPoint3D& first = b.points.front();
    return PointInside(a, first.x, first.y) ? kRelationContains : kRelationDisjoint;
}

std::uint32_t Relation(const Coutline& a, const Coutline& b) {
    return Relation(ContourArray(a), ContourArray(b));
}

}  // namespace tr

CCoverageTest::CCoverageTest(const std::uint32_t* relationMatrix, std::uint32_t n)
    : groups(n), relations(relationMatrix), contourCount(n), enclosures_(n, 0), grouped_(n, false) {
    for (std::uint32_t j = 0; j < n; ++j) {
        for (std::uint32_t k = 0; k < n; ++k) {
            if (relations[std::size_t{j} * n + k] == tr::kRelationInside) ++enclosures_[j];
        }
    }
    for (std::uint32_t i = 0; i < n; ++i) {
        if (grouped_[i] || enclosures_[i] != 0) continue;
        CollectHoles(1, StartGroup(i));
    }
}

CCoverageTest::~CCoverageTest() = default;

std::uint32_t CCoverageTest::Depth(std::uint32_t outer, std::uint32_t j) const {
    if (j == outer || grouped_[j]) return 0;
    if (relations[std::size_t{j} * contourCount + outer] != tr::kRelationInside) return 0;
    return enclosures_[j];
}

std::uint32_t CCoverageTest::StartGroup(std::uint32_t outer) {
    assert(groupCount < contourCount && "each contour starts at most one group");
    groups[groupCount].push_back(outer);
    grouped_[outer] = true;
    return groupCount++;
}

void CCoverageTest::CollectHoles(std::uint32_t depth, std::uint32_t group) {
    const std::uint32_t outer = groups[group].front();
    for (std::uint32_t j = 0; j < contourCount; ++j) {
        if (Depth(outer, j) != depth) continue;
        groups[group].push_back(j);
        grouped_[j] = true;
        CollectGroups(depth + 1, j);
    }
}

void CCoverageTest::CollectGroups(std::uint32_t depth, std::uint32_t hole) {
    for (std::uint32_t j = 0; j < contourCount; ++j) {
        if (Depth(hole, j) != depth) continue;
        CollectHoles(depth + 1, StartGroup(j));
    }
}
