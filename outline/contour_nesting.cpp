// outline/contour_nesting.cpp — Nest and NestSinglePath.
//
// Nest builds the full pairwise relation matrix (each unordered pair is
// tested once, the mirror filled in), lets CCoverageTest group the contours
// and then normalises orientation, so the tessellator and the painters see
// outer boundaries clockwise and holes counter-clockwise.
#include "outline/contour_nesting.h"

#include <vector>

#include "outline/coverage_test.h"

namespace tr {

std::list<CContourGroup> Nest(std::list<Coutline>& contours) {
    std::vector<Coutline*> byIndex;
    byIndex.reserve(contours.size());
    for (Coutline& contour : contours) byIndex.push_back(&contour);
    const std::size_t n = byIndex.size();
    std::vector<ContourArray> arrays;
    arrays.reserve(n);
    for (const Coutline* contour : byIndex) arrays.emplace_back(*contour);
    std::vector<std::uint32_t> relations(n * n, kRelationDisjoint);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = i + 1; j < n; ++j) {
            const std::uint32_t code = Relation(arrays[i], arrays[j]);
            relations[i * n + j] = code;
            relations[j * n + i] = MirrorRelation(code);
        }
    }
    const CCoverageTest coverage(relations.data(), static_cast<std::uint32_t>(n));

    std::list<CContourGroup> groups;
    for (std::uint32_t g = 0; g < coverage.groupCount; ++g) {
        const std::vector<std::uint32_t>& members = coverage.groups[g];
        CContourGroup group;
        Coutline& outer = *byIndex[members.front()];
        if (!outer.clockwise) outer.Reverse();
        group.outer.points.splice(group.outer.points.end(), outer.points);
        group.outer.clockwise = outer.clockwise;
        for (std::size_t m = 1; m < members.size(); ++m) {
            Coutline& hole = *byIndex[members[m]];
            if (hole.clockwise) hole.Reverse();
            Coutline& stored = group.holes.emplace_back();
            stored.points.splice(stored.points.end(), hole.points);
            stored.clockwise = hole.clockwise;
        }
        if (!group.outer.points.empty()) groups.push_back(std::move(group));
    }
    return groups;
}

std::list<CContourGroup> NestSinglePath(std::list<Coutline>& contours) {
    std::list<CContourGroup> groups;
    for (Coutline& contour : contours) {
        if (contour.points.empty() || contour.clockwise) continue;
        CContourGroup& group = groups.emplace_back();
        group.outer = std::move(contour);
    }
    if (groups.empty()) return groups;
    for (Coutline& contour : contours) {
        if (contour.points.empty() || !contour.clockwise) continue;
        groups.front().holes.push_back(std::move(contour));
    }
    return groups;
}

}  // namespace tr
