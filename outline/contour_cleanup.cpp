// outline/contour_cleanup.cpp — duplicate and loop removal, simplification,
// orientation and edge angles.
//
// Terminology: points are p1 .. pn in list order (1-based in the comments,
// 0-based in the code); edge i runs from p(i) to p(i+1); the closing edge
// joins pn back to p1. The passes that need random access copy the list to
// a vector, work there and write the survivors back; each pass is linear in
// the point count apart from the bounded windows described at each one.
#include "outline/contour_cleanup.h"

#include <cmath>
#include <iterator>
#include <numbers>
#include <vector>

namespace tr {
namespace {

constexpr double kCollinearArea = 0.00001;
constexpr std::size_t kLoopWindow = 10;  // following edges tested per edge

struct Vec {
    double x, y;
};

double Cross(Vec u, Vec v) { return u.x * v.y - u.y * v.x; }
Vec Sub(const CPoint3D& a, const CPoint3D& b) { return Vec{a.x - b.x, a.y - b.y}; }

// Edges a->b and c->d cross when they are not parallel and both parameters
// lie strictly inside (0, 1). With den = (d - c) x (b - a), solving
//   a + t(b - a) = c + u(d - c): crossing both sides with (d - c) gives
//   t = ((c - a) x (d - c)) / ((b - a) x (d - c)) = ((d - c) x (c - a)) / den,
//   and with (b - a): u = ((a - c) x (b - a)) / ((d - c) x (b - a))
//                     = ((b - a) x (c - a)) / den.
bool EdgesCross(const CPoint3D& a, const CPoint3D& b, const CPoint3D& c, const CPoint3D& d) {
    const Vec ab = Sub(b, a);
    const Vec cd = Sub(d, c);
    const Vec ac = Sub(c, a);
    const double den = Cross(cd, ab);
    if (den == 0.0) return false;
    const double t = Cross(cd, ac) / den;
    const double u = Cross(ab, ac) / den;
    return t > 0.0 && t < 1.0 && u > 0.0 && u < 1.0;
}

std::vector<CPoint3D> ToVector(const Coutline& contour) {
    return std::vector<CPoint3D>(contour.points.begin(), contour.points.end());
}

// Keeps the points whose 0-based index is in [first, last).
void KeepRange(std::vector<CPoint3D>& p, std::size_t first, std::size_t last) {
    p.erase(p.begin() + static_cast<std::ptrdiff_t>(last), p.end());
    p.erase(p.begin(), p.begin() + static_cast<std::ptrdiff_t>(first));
}

// Removes the points whose 0-based index is in [first, last).
void EraseRange(std::vector<CPoint3D>& p, std::size_t first, std::size_t last) {
    p.erase(p.begin() + static_cast<std::ptrdiff_t>(first),
            p.begin() + static_cast<std::ptrdiff_t>(last));
}

// One loop search with step 1 starting at edge `from` (1-based); edges
// before it are known to have no crossing in their windows. Returns 0 when
// nothing was removed, else the first edge whose window may have changed
// (1 when the points before the loop moved).
std::size_t RemoveFirstLoop(std::vector<CPoint3D>& p, std::size_t from) {
    const std::size_t n = p.size();
    const std::size_t half = n / 2;
    // 1-based i = 1 .. n-2 against j = i+2 .. min(i+11, n-1).
    for (std::size_t i = from; i + 2 <= n; ++i) {
        const std::size_t jEnd = std::min(i + 1 + kLoopWindow, n - 1);
        for (std::size_t j = i + 2; j <= jEnd; ++j) {
            if (!EdgesCross(p[i - 1], p[i], p[j - 1], p[j])) continue;
            const std::size_t k = j - i;  // loop points p(i+1) .. p(j)
            if (k <= half) {
                EraseRange(p, i, j);
                // Points p1 .. p(i) stay where they were: an edge m whose
                // window ends at p(m+12) <= p(i) sees exactly what it saw.
                return i > kLoopWindow + 2 ? i - (kLoopWindow + 1) : 1;
            }
            if (j != n) {
                KeepRange(p, i + 1, j - 1);  // drop p1..p(i+1) and p(j)..pn
            } else {
                EraseRange(p, 0, i + 1);
            }
            return 1;
        }
    }
    // The closing edge p1 -> pn against edges k = 2 .. n-2.
    for (std::size_t k = 2; k + 2 <= n; ++k) {
        if (!EdgesCross(p[0], p[n - 1], p[k - 1], p[k])) continue;
        if (n - k > half) {
            EraseRange(p, 0, k + 1);  // p1 .. p(k+1)
        } else {
            EraseRange(p, k, n);  // p(k+1) .. pn
        }
        return 1;
    }
    return 0;
}

// Perpendicular distance of p from the infinite line through a and e;
// 0 when a and e coincide.
double LineDistance(const CPoint3D& a, const CPoint3D& e, const CPoint3D& p) {
    const Vec ae = Sub(e, a);
    const double length = std::sqrt(ae.x * ae.x + ae.y * ae.y);
    if (length == 0.0) return 0.0;
    return std::fabs(Cross(ae, Sub(p, a))) / length;
}

bool AllWithin(const std::vector<CPoint3D>& p, std::size_t a, std::size_t e, double tolerance) {
    for (std::size_t m = a + 1; m < e; ++m) {
        if (!(LineDistance(p[a], p[e], p[m]) < tolerance)) return false;
    }
    return true;
}

void WriteBack(Coutline& contour, const std::vector<CPoint3D>& p) {
    contour.points.assign(p.begin(), p.end());
}

}  // namespace

void RemoveConsecutiveDuplicates(Coutline& contour) {
    auto& pts = contour.points;
    if (pts.empty()) return;
    for (auto prev = pts.begin(), cur = std::next(prev); cur != pts.end();) {
        if (cur->x == prev->x && cur->y == prev->y && cur->z == prev->z) {
            cur = pts.erase(cur);
        } else {
            prev = cur++;
        }
    }
}

void RemoveClosingDuplicate(Coutline& contour) {
    auto& pts = contour.points;
    if (pts.size() < 2) return;
    if (pts.front().x == pts.back().x && pts.front().y == pts.back().y) pts.pop_front();
}

// Every removal restarts the search. Restarting at the first edge whose
// window the removal touched finds the same first crossing as restarting at
// edge 1 (the edges before it were crossing-free and still see the same
// points), which keeps the pass linear for contours with many small loops.
// RemoveLoopsFromStart is the literal form, kept for comparison.
void RemoveLoops(Coutline& contour) {
    if (contour.points.size() < 4) return;
    std::vector<CPoint3D> p = ToVector(contour);
    bool changed = false;
    std::size_t from = 1;
    while (p.size() >= 4 && (from = RemoveFirstLoop(p, from)) != 0) changed = true;
    if (changed) WriteBack(contour, p);
}

void RemoveLoopsFromStart(Coutline& contour) {
    if (contour.points.size() < 4) return;
    std::vector<CPoint3D> p = ToVector(contour);
    bool changed = false;
    while (p.size() >= 4 && RemoveFirstLoop(p, 1) != 0) changed = true;
    if (changed) WriteBack(contour, p);
}

// The anchor a walks forward one point at a time; for each anchor the end e
// starts two points ahead and advances while every point strictly between a
// and e is within tolerance of the line a-e. The points between a and the
// last good e go. The closing edge and the first point are never touched.
void Simplify(Coutline& contour, double tolerance) {
    if (tolerance == 0.0 || contour.points.size() <= 2) return;
    std::vector<CPoint3D> p = ToVector(contour);
    std::vector<CPoint3D> kept;
    kept.reserve(p.size());
    std::size_t a = 0;
    kept.push_back(p[0]);
    while (a + 2 < p.size()) {
        std::size_t good = a + 1;
        while (good + 1 < p.size() && AllWithin(p, a, good + 1, tolerance)) ++good;
        // Points a+1 .. good-1 drop out; good becomes the next anchor.
        kept.push_back(p[good]);
        a = good;
    }
    for (std::size_t m = a + 1; m < p.size(); ++m) kept.push_back(p[m]);
    if (kept.size() != p.size()) WriteBack(contour, kept);
}

void Orient(Coutline& contour) {
    using It = std::list<CPoint3D>::const_iterator;
    const auto& pts = contour.points;
    if (pts.empty()) return;
    It v = pts.begin();
    for (It i = std::next(v); i != pts.end(); ++i) {
        if (i->y < v->y || (i->y == v->y && i->x > v->x)) v = i;
    }
    const auto back = [&pts](It i) { return i == pts.begin() ? std::prev(pts.end()) : std::prev(i); };
    const auto forward = [&pts](It i) { return std::next(i) == pts.end() ? pts.begin() : std::next(i); };
    const auto area = [v](It a, It b) {
        return (v->y + a->y) * (v->x - a->x) + (b->x - v->x) * (b->y + v->y) +
               (a->x - b->x) * (b->y + a->y);
    };
    It prev = back(v);
    It next = forward(v);
    double s = area(prev, next);
    while (std::fabs(s) <= kCollinearArea) {
        prev = back(prev);
        next = forward(next);
        if (prev == v || next == v || prev == next) break;
        s = area(prev, next);
    }
    contour.clockwise = s >= 0.0;
}

void SetEdgeAngles(Coutline& contour) {
    auto& pts = contour.points;
    if (pts.size() < 3) return;
    CPoint3D prev = pts.back();  // the first point's predecessor
    for (CPoint3D& cur : pts) {
        double angle = std::atan2(cur.y - prev.y, cur.x - prev.x);
        if (angle < 0.0) angle += 2.0 * std::numbers::pi;
        prev = cur;
        cur.z = angle;
    }
}

}  // namespace tr
