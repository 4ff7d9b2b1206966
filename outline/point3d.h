// outline/point3d.h — folder-private: the outline point.
//
// x and y are in the units of the host's outline data. z is scratch while a
// contour is built (the parser stores a constant there) and, once the
// contour is finished, the direction in radians [0, 2pi) of the edge that
// arrives at the point. The block stores points as these three doubles.
#pragma once

struct CPoint3D {
    double x;
    double y;
    double z;
};

static_assert(sizeof(CPoint3D) == 24, "a block stores a point as three doubles");
