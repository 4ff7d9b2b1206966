// outline/contour_group.h — folder-private: one filled region of a glyph.
//
// A group is one outer contour with the holes directly inside it and the
// triangulation of the region. Triangle indices number the group's vertices
// as one array: the points of `outer` (0 .. n-1), then each hole's points in
// turn, then `extraVertices`, the vertices the tessellator created where
// edges cross. The block stores the points in exactly that order, so an
// index addresses a point directly.
#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "outline/contour.h"

struct CContourGroup {
    Coutline extraVertices;  // orientation flag not read
    Coutline outer;
    std::list<Coutline> holes;
    std::vector<std::uint32_t> triangles;  // three per triangle
};
