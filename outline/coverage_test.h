// outline/coverage_test.h — folder-private: containment of contours and the
// even-odd grouping of contours into outer boundaries and holes.
//
// Relation codes of contour a to contour b: 0 disjoint (or either empty),
// 1 a inside b, 2 b inside a, 3 a partly inside b (they overlap). The
// relation matrix is n x n, row-major, [i][j] = relation of i to j, zero
// diagonal, [j][i] the mirror of [i][j] (1 and 2 swap).
//
// `CCoverageTest` forms the groups at construction: a contour enclosed by no
// other starts a group; contours at odd depth below a group's outer contour
// become its holes, contours at even depth below a hole start new groups.
// Overlapping contours (code 3) do not enclose each other.
#pragma once

#include <cstdint>
#include <vector>

#include "outline/contour.h"

namespace tr {

enum : std::uint32_t {
    kRelationDisjoint = 0,
    kRelationInside = 1,
    kRelationContains = 2,
    kRelationOverlap = 3,
};

// Even-odd crossing test of (x, y) against the closed contour.
bool PointInside(const Coutline& contour, double x, double y);

std::uint32_t Relation(const Coutline& a, const Coutline& b);

// A contour's points in one array with their vertical extent: the form in
// which nesting tests each pair. Same arithmetic as the list forms above.
struct ContourArray {
    explicit ContourArray(const Coutline& contour);
    std::vector<CPoint3D> points;
    double minY = 0.0;
    double maxY = 0.0;
};
bool PointInside(const ContourArray& contour, double x, double y);
std::uint32_t Relation(const ContourArray& a, const ContourArray& b);

// The relation of j to i given that of i to j.
constexpr std::uint32_t MirrorRelation(std::uint32_t code) {
    return code == kRelationInside ? kRelationContains
           : code == kRelationContains ? kRelationInside
                                       : code;
}

}  // namespace tr

class CCoverageTest {
public:
    // relations: n x n matrix, not owned, read during construction only.
    CCoverageTest(const std::uint32_t* relations, std::uint32_t n);
    CCoverageTest(const CCoverageTest&) = delete;
    CCoverageTest& operator=(const CCoverageTest&) = delete;
    virtual ~CCoverageTest();

    std::vector<std::vector<std::uint32_t>> groups;  // [outer, holes...]
    std::uint32_t groupCount = 0;
    const std::uint32_t* relations;
    std::uint32_t contourCount;

private:
    std::uint32_t Depth(std::uint32_t outer, std::uint32_t j) const;
    void CollectHoles(std::uint32_t depth, std::uint32_t group);
    void CollectGroups(std::uint32_t depth, std::uint32_t hole);
    std::uint32_t StartGroup(std::uint32_t outer);

    std::vector<std::uint32_t> enclosures_;  // contours that enclose each one
    std::vector<bool> grouped_;
};
