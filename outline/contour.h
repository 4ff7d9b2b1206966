// outline/contour.h — folder-private: one closed contour (`Coutline`).
//
// The contour is closed implicitly: the last point connects back to the
// first, which is never repeated at the end. `clockwise` is true when the
// contour, read with y pointing up, runs clockwise; it is set by the
// orientation step of the builder and toggled by Reverse.
#pragma once

#include <list>

#include "outline/point3d.h"

class Coutline {
public:
    Coutline() = default;
    Coutline(const Coutline&) = default;
    Coutline& operator=(const Coutline&) = default;
    Coutline(Coutline&&) noexcept = default;
    Coutline& operator=(Coutline&&) noexcept = default;
    virtual ~Coutline();

    // Reverses the point order, toggles `clockwise` and returns the new flag.
    virtual bool Reverse();

    std::list<CPoint3D> points;
    bool clockwise = false;
};
