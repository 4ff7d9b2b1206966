// surface/region_decomposition.cpp — removal, clipping, edge grid, cell
// assignment and merge of the plans composite's regions.
#include "surface/region_decomposition.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <tuple>

namespace {

// A region as half-open 64-bit bounds, with its plans (borrowed).
struct Box {
    int64_t x0, y0, x1, y1;
    const std::vector<uint32_t>* plans;
};

struct Grid {
    std::vector<int64_t> xs;  // sorted, unique x edges
    std::vector<int64_t> ys;
    bool columnOrder = true;
    int64_t columns() const { return static_cast<int64_t>(xs.size()) - 1; }
    int64_t rows() const { return static_cast<int64_t>(ys.size()) - 1; }
    // Cells are numbered in visiting order: down each column, or along each row.
    size_t CellIndex(int64_t ix, int64_t iy) const {
        return static_cast<size_t>(columnOrder ? ix * rows() + iy : iy * columns() + ix);
    }
};

void SortUnique(std::vector<int64_t>& v) {
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
}

void SortUnique(std::vector<uint32_t>& v) {
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
}

// Steps 1-2: regions with plans that overlap the clip, limited to it.
std::vector<Box> ClippedBoxes(const std::vector<Region>& regions, const RegionRect& clip) {
    const int64_t cx0 = clip.x, cy0 = clip.y;
    const int64_t cx1 = cx0 + clip.width, cy1 = cy0 + clip.height;
    std::vector<Box> boxes;
    for (const Region& r : regions) {
        const int64_t x0 = r.rect.x, y0 = r.rect.y;
        const int64_t x1 = x0 + r.rect.width, y1 = y0 + r.rect.height;
        if (x1 <= cx0 || x0 >= cx1 || y1 <= cy0 || y0 >= cy1) continue;
        if (r.plans.empty()) continue;
        // A region of zero or negative size still adds its edges to the
        // grid but covers no cell.
        boxes.push_back(
            {std::max(x0, cx0), std::max(y0, cy0), std::min(x1, cx1), std::min(y1, cy1), &r.plans});
    }
    return boxes;
}

// Steps 3-5: sort, edges, cell order.
Grid MakeGrid(std::vector<Box>& boxes) {
    std::sort(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) {
        return std::tie(a.x0, a.y0) < std::tie(b.x0, b.y0);
    });
    Grid grid;
    for (const Box& b : boxes) {
        grid.xs.insert(grid.xs.end(), {b.x0, b.x1});
        grid.ys.insert(grid.ys.end(), {b.y0, b.y1});
    }
    SortUnique(grid.xs);
    SortUnique(grid.ys);
    grid.columnOrder = grid.xs.size() >= grid.ys.size();
    if (!grid.columnOrder) {
        std::stable_sort(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) {
            return std::tie(a.y0, a.x0) < std::tie(b.y0, b.x0);
        });
    }
    return grid;
}

int64_t EdgeIndex(const std::vector<int64_t>& edges, int64_t v) {
    return std::lower_bound(edges.begin(), edges.end(), v) - edges.begin();
}

// Steps 6-7: every box's plans go to the cells it covers. A box's bounds
// are grid edges, so it covers exactly the cells from its first edge up to
// (not including) its last edge on each axis.
std::vector<std::vector<uint32_t>> AssignCells(const std::vector<Box>& boxes, const Grid& grid) {
    if (grid.columns() < 1 || grid.rows() < 1) return {};
    std::vector<std::vector<uint32_t>> cells(static_cast<size_t>(grid.columns() * grid.rows()));
    for (const Box& b : boxes) {
        const int64_t ix0 = EdgeIndex(grid.xs, b.x0), ix1 = EdgeIndex(grid.xs, b.x1);
        const int64_t iy0 = EdgeIndex(grid.ys, b.y0), iy1 = EdgeIndex(grid.ys, b.y1);
        for (int64_t ix = ix0; ix < ix1; ++ix) {
            for (int64_t iy = iy0; iy < iy1; ++iy) {
                std::vector<uint32_t>& list = cells[grid.CellIndex(ix, iy)];
                list.insert(list.end(), b.plans->begin(), b.plans->end());
                SortUnique(list);
            }
        }
    }
    return cells;
}

// Output bounds lie within the clip, whose width and height are 32-bit.
int32_t Narrow(int64_t v) {
    assert(v >= INT32_MIN && v <= INT32_MAX);
    return static_cast<int32_t>(v);
}

Region MakeRegion(int64_t x0, int64_t y0, int64_t x1, int64_t y1, std::vector<uint32_t> plans) {
    Region r;
    r.rect = {Narrow(x0), Narrow(y0), Narrow(x1 - x0), Narrow(y1 - y0)};
    r.plans = std::move(plans);
    return r;
}

// Step 9: cells in visiting order; a cell continues the current rectangle
// when it lies right after it along the visiting direction, spans the same
// extent across it and lists the same plans.
std::vector<Region> MergeCells(std::vector<std::vector<uint32_t>>& cells, const Grid& grid) {
    std::vector<Region> out;
    bool open = false;
    int64_t cx0 = 0, cy0 = 0, cx1 = 0, cy1 = 0;
    std::vector<uint32_t> current;
    const int64_t outer = grid.columnOrder ? grid.columns() : grid.rows();
    const int64_t inner = grid.columnOrder ? grid.rows() : grid.columns();
    for (int64_t o = 0; o < outer; ++o) {
        for (int64_t i = 0; i < inner; ++i) {
            const int64_t ix = grid.columnOrder ? o : i, iy = grid.columnOrder ? i : o;
            std::vector<uint32_t>& list = cells[grid.CellIndex(ix, iy)];
            if (list.empty()) continue;
            const int64_t x0 = grid.xs[ix], x1 = grid.xs[ix + 1];
            const int64_t y0 = grid.ys[iy], y1 = grid.ys[iy + 1];
            const bool continues = grid.columnOrder ? (x0 == cx0 && x1 == cx1 && y0 == cy1)
                                                    : (y0 == cy0 && y1 == cy1 && x0 == cx1);
            if (open && continues && list == current) {
                if (grid.columnOrder) {
                    cy1 = y1;
                } else {
                    cx1 = x1;
                }
                continue;
            }
            if (open) out.push_back(MakeRegion(cx0, cy0, cx1, cy1, std::move(current)));
            cx0 = x0, cy0 = y0, cx1 = x1, cy1 = y1;
            current = std::move(list);
            open = true;
        }
    }
    if (open) out.push_back(MakeRegion(cx0, cy0, cx1, cy1, std::move(current)));
    return out;
}

}  // namespace

void DecomposeRegions(std::vector<Region>& regions, const RegionRect& clip) {
    std::vector<Box> boxes = ClippedBoxes(regions, clip);
    const Grid grid = MakeGrid(boxes);
    std::vector<std::vector<uint32_t>> cells = AssignCells(boxes, grid);
    boxes.clear();  // they point into the input's plan lists
    for (Region& r : regions) r.plans.clear();
    std::vector<Region> merged = MergeCells(cells, grid);
    regions = std::move(merged);
}
