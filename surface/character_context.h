// surface/character_context.h — CharacterContext, the state of the
// character being described on a surface.
//
// Created by NewCharacterCallBack and owned by the surface until the next
// character or the close: the fragment compositor with the character's
// option bytes, the fragment list, the face (which owns the painter set) and
// the outline flags handed to the outline object.
#pragma once

#include <cstdint>
#include <vector>

#include "paint/xyr.h"
#include "surface/fragment.h"

class CFace;

struct CharacterContext {
    static constexpr uint32_t kInitialOutlineFlags = 2;
    static constexpr double kWideOutlineFactor = 1.42;

    // Builds the compositor, an empty fragment list and a face with its
    // painter set. Returns null when memory cannot be obtained.
    static CharacterContext* Create();
    // Destroys the face (and the painter set still attached to it), the
    // fragment list and the compositor.
    static void Destroy(CharacterContext* context);

    // Applies the character option bits to the compositor's option bytes.
    void ApplyCharacterOptions(uint32_t characterFlags);
    // Appends a fragment; with wide outlines, an outline fragment (kinds 1, 2,
    // 4, 5) also gets a map-less twin 1.42 times as wide.
    void AddFragment(const uint8_t* map, int32_t kind, double width, double angle,
                     double distance);

    uint32_t reserved = 0;
    CXyR compositor;
    std::vector<CFragment> fragments;
    CFace* face = nullptr;  // owned
    uint32_t outlineFlags = kInitialOutlineFlags;
};
