// paint/stroke_walk.h — folder-private: the contour walks that feed outline
// strokes, shadow extrusions and smears to the rasterizer as quad strips.
//
// Every walk emits vertex pairs (first vertex through Vertex2dv, second
// through Vertex2d) between one Begin and one End, so consecutive pairs form
// the quads of a strip. Coordinates are outline units; the rasterizer's
// transform maps them to coverage sub-samples.
#pragma once

#include <cstdint>

#include "outline/point3d.h"

class CRasterizer;

namespace tr {

// One closed contour of an outline block: count points, the last joined
// back to the first. directionsStored: each point's z holds the direction
// of the edge arriving at it, atan2 of the edge plus 2π when negative, as
// the outline builder leaves every contour of three points or more; the
// default stroke walk then reads the directions instead of recomputing
// them (same doubles), the plain twin always recomputes.
struct ContourView {
    const CPoint3D* points = nullptr;
    uint32_t count = 0;
    bool directionsStored = false;
};

// Which side of the contour's direction a stroke lies on: right-hand
// (normal at direction − π/2, inner outlines) or left-hand (+ π/2, outer).
enum class StrokeSide { Right, Left };

// What a stroke inserts at a vertex whose turn leaves a gap on its side.
enum class JoinKind { None, Mitre, Round };

// The join at a vertex with the given turn (θ − θprev + π in [0, 2π); π is
// a straight continuation). Plain strokes use round joins past 1.1π (right)
// or below 0.9π (left); wide strokes skip the smallest turns and mitre the
// middle ones. NaN gives None.
JoinKind ClassifyTurn(double turn, StrokeSide side, bool wide);

// Number of intermediate pairs of a round join: steps of at most π/16 over
// the turn's deviation from π, at least 3.
int32_t RoundJoinSteps(double turn, StrokeSide side);

// Kinds 1 and 2: the strip between the contour and its offset by width on
// the given side, with the joins ClassifyTurn picks.
void DrawStroke(CRasterizer& r, ContourView c, double width, StrokeSide side, bool wide);
// Its plain twin: every pair's offset evaluated on its own (same calls, same
// doubles; for differential tests and benchmarks).
void DrawStrokePlain(CRasterizer& r, ContourView c, double width, StrokeSide side, bool wide);

// Kinds 4 and 5: the strip between the stroke's outer edge (plain joins) and
// that edge moved by (offsetX, offsetY).
void DrawStrokeExtrusion(CRasterizer& r, ContourView c, double width, StrokeSide side,
                         double offsetX, double offsetY);
void DrawStrokeExtrusionPlain(CRasterizer& r, ContourView c, double width, StrokeSide side,
                              double offsetX, double offsetY);

// Kinds 3, 8 and 9: the contour moved by (shiftX, shiftY), extruded along
// (offsetX, offsetY); the strip closes on the first point again.
void DrawExtrusion(CRasterizer& r, ContourView c, double shiftX, double shiftY, double offsetX,
                   double offsetY);

// Kinds 6 and 7: two strips, from every point p to p + (dx, dy) and then to
// p − (dx, dy), each closed on the first point again.
void DrawSmear(CRasterizer& r, ContourView c, double dx, double dy);

}  // namespace tr
