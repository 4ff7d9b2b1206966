// surface/plans_composite.cpp — grouping, regions and compositing at close.
#include "surface/plans_composite.h"

#include <algorithm>
#include <vector>

#include "paint/color_applicator.h"
#include "paint/compositor.h"
#include "paint/numeric.h"
#include "paint/overlap_compositor.h"
#include "paint/painter.h"
#include "surface/plans.h"
#include "surface/region_decomposition.h"

namespace tr {
namespace {

// The image margin: the 3-pixel inset keeps every footprint read inside the
// coverage buffer.
constexpr int32_t kInset = 3;
constexpr int32_t kBlendModeFirstOnly = 2;

bool IsDrawn(const CPlan& plan) { return plan.coverage && plan.painters; }

void SortUnique(std::vector<uint32_t>& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

Region CharacterRegion(const CPlan& plan, uint32_t index) {
    Region region;
    region.rect.x = FloorToInt32(plan.painters->positionX) + kInset;
    region.rect.y = FloorToInt32(plan.painters->positionY) + kInset;
    region.rect.width = plan.width - 2 * kInset;
    region.rect.height = plan.height - 2 * kInset;
    region.plans.push_back(index);
    return region;
}

// The shadow's box: its layer, moved by the shadow shift, less a one-pixel
// border.
Region ShadowRegion(const CPlan& plan, uint32_t index) {
    CColorApplicator& shadow = *plan.painters->GetSlot(CPainter::kShadowSlot);
    Region region;
    region.rect.x = FloorToInt32(plan.painters->positionX) - shadow.GetLayerOriginX() +
                    shadow.GetShiftX() + 1;
    region.rect.y = FloorToInt32(plan.painters->positionY) - shadow.GetLayerOriginY() +
                    shadow.GetShiftY() + 1;
    region.rect.width = shadow.GetLayerWidth() - 2;
    region.rect.height = shadow.GetLayerHeight() - 2;
    region.plans.push_back(index);
    return region;
}

CompositeRect ToCompositeRect(const RegionRect& r) { return {r.x, r.y, r.width, r.height}; }

// The dirty rectangle: the last drawn plan's clip rectangle, kept inside the
// surface.
RegionRect DirtyRectangle(const CPlan& plan) {
    RegionRect dirty;
    dirty.x = std::clamp(plan.clipX, 0, std::max(0, plan.surfaceWidth));
    dirty.y = std::clamp(plan.clipY, 0, std::max(0, plan.surfaceHeight));
    dirty.width = std::min(plan.clipWidth, plan.surfaceWidth - dirty.x);
    dirty.height = std::min(plan.clipHeight, plan.surfaceHeight - dirty.y);
    return dirty;
}

void CompositeCharacterRegions(CPlans& plans, std::vector<Region>& regions, int32_t blendMode) {
    DecomposeRegions(regions, plans.dirty);
    std::vector<CPainter*> painters;
    for (const Region& region : regions) {
        painters.clear();
        for (uint32_t index : region.plans) painters.push_back(plans.Get(index).painters);
        CompositeRegion(painters.data(), static_cast<int32_t>(painters.size()),
                        ToCompositeRect(region.rect), blendMode);
    }
    regions.clear();
}

// Shadow regions are cut exactly like character regions. Blurred shadow
// layers are not rendered yet, so a shadow's layer is empty and its region
// never survives the cut; once layers exist, each region goes to the shadow
// compositor for its number of plans.
void CompositeShadowRegions(CPlans& plans, std::vector<Region>& regions) {
    DecomposeRegions(regions, plans.dirty);
    regions.clear();
}

}  // namespace

void CompositePlanList(CPlans& plans) {
    const uint32_t count = plans.GetCount();
    if (count < 2) return;
    int32_t lastDrawn = -1;
    for (uint32_t i = 1; i < count; ++i) {
        const CPlan& plan = plans.Get(i);
        if (!IsDrawn(plan)) continue;
        plans.groups1.push_back(plan.userValue1);
        plans.groups2.push_back(plan.userValue2);
        lastDrawn = static_cast<int32_t>(i);
    }
    if (lastDrawn < 0) return;
    plans.compositeMode = static_cast<uint32_t>(plans.Get(lastDrawn).painters->blendMode);
    SortUnique(plans.groups1);
    SortUnique(plans.groups2);
    plans.dirty = DirtyRectangle(plans.Get(lastDrawn));

    for (uint32_t i = 1; i < count; ++i) {
        if (IsDrawn(plans.Get(i))) plans.Get(i).painters->PrepareApplicators();
    }

    std::vector<Region>& regions = plans.characterRegions;
    if (plans.compositeMode == kBlendModeFirstOnly) {
        for (uint32_t i = 1; i < count; ++i) {
            if (IsDrawn(plans.Get(i))) regions.push_back(CharacterRegion(plans.Get(i), i));
        }
        DecomposeRegions(regions, plans.dirty);
        for (const Region& region : regions) {
            if (!region.plans.empty()) {
                CompositeCharacter(*plans.Get(region.plans.front()).painters,
                                   ToCompositeRect(region.rect));
            }
        }
        regions.clear();
        return;
    }

    std::vector<Region>& shadows = plans.shadowRegions;
    for (uint32_t group : plans.groups2) {
        for (uint32_t i = 1; i < count; ++i) {
            const CPlan& plan = plans.Get(i);
            if (IsDrawn(plan) && plan.userValue2 == group &&
                plan.painters->GetSlot(CPainter::kShadowSlot)) {
                shadows.push_back(ShadowRegion(plan, i));
            }
        }
        CompositeShadowRegions(plans, shadows);
    }

    for (uint32_t group : plans.groups1) {
        int32_t blendMode = static_cast<int32_t>(plans.compositeMode);
        for (uint32_t i = 1; i < count; ++i) {
            const CPlan& plan = plans.Get(i);
            if (IsDrawn(plan) && plan.userValue1 == group) {
                regions.push_back(CharacterRegion(plan, i));
                blendMode = plan.painters->blendMode;
            }
        }
        plans.compositeMode = static_cast<uint32_t>(blendMode);
        CompositeCharacterRegions(plans, regions, blendMode);
    }
}

}  // namespace tr
