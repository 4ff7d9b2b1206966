// surface/region_decomposition.h — cutting overlapping regions into
// disjoint rectangles that each list every plan covering them.
//
// The plans composite makes one region per character (or per character's
// shadow). Each pixel of an overlap must be composited once, by a routine
// that sees all the characters there, so the regions are cut along every
// region edge into a grid of cells, each cell collects the plans of the
// regions covering it, and neighbouring cells with equal plan lists are
// merged back along the grid's longer direction:
//
//   x edges 0   5  10  15          column order (more x edges than y edges):
//        +---+---+---+ y 0          the cells of one column are visited top
//        | A |A,B| B |              to bottom and merged while they touch
//        +---+---+---+ y 10         and list the same plans; row order does
//                                   the same along rows.
//
// Regions are first limited to the clip rectangle (regions outside it, or
// touching it only along an edge, are dropped). Coordinates are computed in
// 64 bits so that no sum of a position and a size can overflow; every output
// lies within the clip, so its size fits 32 bits again.
#pragma once

#include <vector>

#include "surface/region.h"

// Replaces the regions by their decomposition within the clip rectangle,
// in cell order; regions without plans take no part and the result may be
// empty. Every output region lists its plans in ascending order, once each.
void DecomposeRegions(std::vector<Region>& regions, const RegionRect& clip);
