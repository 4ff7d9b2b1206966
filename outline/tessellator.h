// outline/tessellator.h — folder-private: triangulation of contour groups
// and boundary extraction of single paths through the GLU tessellator.
//
// GLU reports its results through callbacks without a user pointer of ours
// (gluBeginPolygon passes none), so the callbacks work on process-wide state
// and every call here runs under one process-wide recursive lock.
#pragma once

#include <cstdint>
#include <list>

#include "outline/contour_group.h"
#include "outline/coverage_test.h"

namespace tr {

// Fills group.triangles (three indices per triangle, non-zero winding) and
// appends to group.extraVertices the vertices created where edges cross,
// numbered after all outer and hole points in creation order.
void Tessellate(CContourGroup& group);

// The closed boundary contours of one possibly self-overlapping path (z of
// every output point is 0). flags bit 0x1000 selects the non-zero winding
// rule, otherwise odd; option bit 0 empties sliver contours.
std::list<Coutline> Boundary(const Coutline& path, std::uint32_t flags, std::uint32_t options);

// A contour too thin to keep: fewer than 3 points, or 3 to 5 points with
// short sides (Euclidean length below 4.0) in the patterns of the sliver
// table (see tessellator.cpp).
bool IsSliver(const Coutline& contour);

// Time spent in Tessellate and Boundary (GLU and its callbacks), for
// profiling; off by default, then costing one relaxed load per call.
struct TessellationStats {
    std::uint64_t calls = 0;
    std::uint64_t nanoseconds = 0;
};
void EnableTessellationTiming(bool on);
TessellationStats TakeTessellationStats();  // and reset

}  // namespace tr
