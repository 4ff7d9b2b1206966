// paint/xyr.cpp — CXyR lifetime.
#include "paint/xyr.h"

// The rasterizer is created by the fragment drawing on first use; until that
// exists no CXyR ever holds one.
CXyR::~CXyR() = default;
