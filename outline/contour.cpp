// outline/contour.cpp — Coutline: the closed contour and its reversal.
#include "outline/contour.h"

Coutline::~Coutline() = default;

bool Coutline::Reverse() {
    points.reverse();
    clockwise = !clockwise;
    return clockwise;
}
