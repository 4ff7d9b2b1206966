// outline/contour_nesting.h — folder-private: forming contour groups from
// cleaned contours.
#pragma once

#include <list>

#include "outline/contour_group.h"

namespace tr {

// Normal mode: groups by even-odd nesting depth (CCoverageTest), outer
// contours made clockwise and holes counter-clockwise; the points are moved
// out of `contours`. Groups whose outer contour is empty are dropped.
std::list<CContourGroup> Nest(std::list<Coutline>& contours);

// Boundary contours of a single path: each non-empty counter-clockwise
// contour is the outer contour of a group, in list order; every non-empty
// clockwise contour becomes a hole of the first group. Nothing is reversed.
std::list<CContourGroup> NestSinglePath(std::list<Coutline>& contours);

}  // namespace tr
