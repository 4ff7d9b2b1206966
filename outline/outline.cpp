// outline/outline.cpp — COutline: only the destructor has a body.
#include "outline/outline.h"

COutline::~COutline() = default;
