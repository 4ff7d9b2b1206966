// surface/plans_composite.h — the close-time composite of a surface's plans.
//
// Shadows first, group by group (user value 2), then the characters, group
// by group (user value 1). Each group's image boxes are cut into disjoint
// regions that list every plan covering them, so every pixel of an overlap
// is composited once by a routine that sees all the characters there.
#pragma once

class CPlans;

namespace tr {

void CompositePlanList(CPlans& plans);

}  // namespace tr
