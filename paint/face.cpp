// paint/face.cpp — CFace lifetime.
#include "paint/face.h"

#include <new>

#include "paint/painter.h"

CFace::CFace(CXyR* xyr) : painter(new (std::nothrow) CPainter()), compositor(xyr) {}

CFace::~CFace() { delete painter; }
