// outline/contour_cleanup.h — folder-private: the clean-up passes the
// outline builder runs on each contour, and the final edge angles.
#pragma once

#include "outline/contour.h"

namespace tr {

// Removes every point equal (x, y and z) to the point before it.
void RemoveConsecutiveDuplicates(Coutline& contour);

// Removes the first point when first and last have equal x and y.
void RemoveClosingDuplicate(Coutline& contour);

// Cuts self-crossing loops out of a contour of at least 4 points: a crossing
// between an edge and one of the next ten removes the smaller side; then the
// closing edge is tested against the others. Repeats from the start after
// each removal. No intersection point is inserted.
void RemoveLoops(Coutline& contour);

// The same pass restarting literally at the first edge after every removal;
// quadratic in the number of loops, kept as the reference for RemoveLoops.
void RemoveLoopsFromStart(Coutline& contour);

// Removes points lying closer than tolerance to the line that joins an anchor
// to a later point (see contour_cleanup.cpp). Nothing when tolerance is 0.
void Simplify(Coutline& contour, double tolerance);

// Sets `clockwise` from the signed area at the lowest vertex, widening the
// neighbourhood while the three points are collinear. Empty: unchanged.
void Orient(Coutline& contour);

// z of every point := direction of its arriving edge, in [0, 2pi).
// Contours of fewer than 3 points are left alone.
void SetEdgeAngles(Coutline& contour);

}  // namespace tr
