// surface/fragment.cpp — fragment records and the SetFragment rules.
#include "surface/fragment.h"

#include <cstring>

CFragment::CFragment(const uint8_t* map, int32_t kindValue, double widthValue, double angleValue,
                     double distanceValue)
    : kind(kindValue), angle(angleValue), width(widthValue), distance(distanceValue) {
    if (map) {
        std::memcpy(nibbleMap, map, kMapSize);
        noMap = 0;
    }
}

std::optional<int32_t> ApplyFragmentRules(int32_t kind, double width, double distance) {
    if (width == 0.0) {
        switch (kind) {
            case 1: case 2: case 6: case 7: return std::nullopt;
            case 4: case 5: kind = 3; break;
            default: break;
        }
    }
    if (distance == 0.0) {
        switch (kind) {
            case 4: kind = 1; break;
            case 5: kind = 2; break;
            case 8: kind = 6; break;
            case 9: kind = 7; break;
            case 3: return std::nullopt;
            default: break;
        }
    }
    return kind;
}

const char* FragmentKindName(int32_t kind) {
    static const char* const kNames[] = {
        "Face            ", "OutlineIn       ", "OutlineOut      ", "FaceShadow      ",
        "OutlineInShadow ", "OutlineOutShadow", "ERR*****",         "ERR*****",
        "ERR*****",         "ERR*****",         "ERR*****",
    };
    // Larger kinds share the last entry; negative kinds are outside the
    // host contract and print the error name too.
    if (kind < 0 || kind > 10) kind = 10;
    return kNames[kind];
}
