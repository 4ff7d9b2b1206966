// surface/plans.cpp — plan list management and release.
#include "surface/plans.h"

#include "memory/coverage_recycler.h"
#include "paint/painter.h"

CPlans::CPlans() : plans(1) {}

CPlans::~CPlans() {
    for (CPlan& plan : plans) ReleasePlanResources(plan);
}

uint32_t CPlans::Append() {
    plans.emplace_back();
    return static_cast<uint32_t>(plans.size() - 1);
}

uint32_t CPlans::InsertFirst() {
    plans.insert(plans.begin() + 1, CPlan());
    return 1;
}

void CPlans::ReleasePlanResources(CPlan& plan) {
    if (plan.coverage && !plan.pooled) {
        tr::RecycleBuffer(plan.coverage);
        plan.coverage = nullptr;
    }
    delete plan.painters;
    plan.painters = nullptr;
}

void CPlans::Release() {
    for (std::size_t i = 1; i < plans.size(); ++i) ReleasePlanResources(plans[i]);
    values.clear();
    plans.clear();
    characterRegions.clear();
    shadowRegions.clear();
}
