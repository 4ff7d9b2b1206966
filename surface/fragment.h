// surface/fragment.h — CFragment, one drawn part of a character, and the
// rules that decide which fragment a SetFragment call becomes.
//
// A character is drawn as a list of fragments: the face, inner and outer
// outline strokes, and shadow copies of those. Each carries a nibble map that
// rewrites the applicator number of every sub-sample it covers; a fragment
// without a map is never drawn but still enlarges the character's image box.
#pragma once

#include <cstdint>
#include <optional>

class CFace;

enum class FragmentKind : int32_t {
    Face = 0,
    OutlineIn = 1,
    OutlineOut = 2,
    FaceShadow = 3,
    OutlineInShadow = 4,
    OutlineOutShadow = 5,
    SmearVertical = 6,
    SmearHorizontal = 7,
    ShiftedYShadow = 8,
    ShiftedXShadow = 9,
};

class CFragment {
public:
    static constexpr int kMapSize = 16;

    CFragment() = default;
    // A fragment with the given map (null: zero map, noMap = 1).
    CFragment(const uint8_t* map, int32_t kind, double width, double angle, double distance);
    virtual ~CFragment() = default;
    CFragment(const CFragment&) = default;
    CFragment& operator=(const CFragment&) = default;

    CFace* face = nullptr;  // borrowed, set at preparation
    uint8_t nibbleMap[kMapSize] = {};
    int32_t kind = 0;
    double angle = 0.0;     // shadow direction, degrees
    double width = 0.0;     // stroke width, face units
    double distance = 0.0;  // shadow distance, face units
    double shadowOffsetA = 0.0;  // sin θ × distancePx
    double shadowOffsetB = 0.0;  // cos θ × distancePx
    double widthPx = 0.0;
    uint8_t noMap = 1;
};

// The kind a SetFragment call adds, or nothing when the call is dropped:
// without width, strokes vanish and stroke shadows fall back to the face
// shadow; without distance, shadows fall back to what they are the shadow
// of, and a face shadow vanishes. Comparisons with 0.0 are exact (−0.0
// counts as 0.0).
std::optional<int32_t> ApplyFragmentRules(int32_t kind, double width, double distance);

// The 16-character name of a kind in the trace ("ERR*****" past kind 5).
const char* FragmentKindName(int32_t kind);
