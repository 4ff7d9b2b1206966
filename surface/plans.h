// surface/plans.h — CPlan, the placement of one finished character, and
// CPlans, the per-surface list composited when the surface is closed.
//
// Entry 0 of the list is a placeholder that is never drawn, so real plans
// have indices from 1 — the index FinishCharacter returns. A plan owns its
// character's coverage buffer (borrowed from the memory recycler) and its
// painter set until the close releases them.
#pragma once

#include <cstdint>
#include <vector>

#include "surface/region.h"

class CPainter;

class CPlan {
public:
    CPlan() = default;
    virtual ~CPlan() = default;
    CPlan(const CPlan&) = default;
    CPlan& operator=(const CPlan&) = default;

    CPainter* painters = nullptr;  // owned
    uint8_t pooled = 0;            // coverage belongs to the shape pool (never today)
    uint8_t poolReferenced = 0;
    int32_t poolIndex = -1;
    int32_t width = 0;  // image box, pixels
    int32_t height = 0;
    int32_t left = 0;
    int32_t top = 0;
    int32_t surfaceWidth = 0;
    int32_t surfaceHeight = 0;
    int32_t clipX = 0;
    int32_t clipY = 0;
    int32_t clipWidth = 0;
    int32_t clipHeight = 0;
    uint32_t* pixels = nullptr;
    uint16_t* coverage = nullptr;  // owned, W × H × 8 bytes, or null
    uint32_t userValue1 = 0;
    uint32_t userValue2 = 0;
};

class CPlans {
public:
    CPlans();
    // Releases whatever the plans still hold (a record-only surface is
    // destroyed without composite or release).
    virtual ~CPlans();
    CPlans(const CPlans&) = delete;
    CPlans& operator=(const CPlans&) = delete;

    // A new plan at the end; returns its index.
    uint32_t Append();
    // A new plan at index 1, before every earlier real plan; returns 1.
    uint32_t InsertFirst();
    // Number of plans, placeholder included.
    uint32_t GetCount() const { return static_cast<uint32_t>(plans.size()); }
    CPlan& Get(uint32_t index) { return plans[index]; }

    // Returns coverage buffers to the recycler, destroys painter sets, then
    // empties the list (placeholder included) and the regions.
    void Release();

    std::vector<CPlan> plans;
    std::vector<uint32_t> values;
    std::vector<Region> characterRegions;
    std::vector<Region> shadowRegions;
    RegionRect dirty;
    std::vector<uint32_t> reserved;
    uint32_t compositeMode = 0;
    std::vector<uint32_t> groups1;
    std::vector<uint32_t> groups2;

private:
    void ReleasePlanResources(CPlan& plan);
};
