// tools/cli/title_options.h — command-line options of the titlerender CLI.
#pragma once

#include <cstdint>
#include <string>

namespace tr::cli {

struct TitleOptions {
    std::string text = "Title";
    std::string font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
    double size = 64.0;  // pixels per em
    int32_t width = 640;
    int32_t height = 160;
    double x = 20.0;  // pen start, pixels
    double y = 110.0;  // baseline, pixels from the top
    uint32_t fill = 0xFFFFFFFFu;
    std::string outlineSide;  // "", "in" or "out"
    double outlineWidth = 0.0;
    uint32_t outlineColour = 0xFF000000u;
    double shadowAngle = 0.0;  // degrees; 90 points right, 180 down
    double shadowDistance = 0.0;
    uint32_t shadowColour = 0x80000000u;
    bool transparent = true;
    uint32_t background = 0;
    std::string output = "title.png";
};

// Parses argv[1..argc): pairs of option and value, a later option replacing
// an earlier one. False with `help` set when --help or -h comes before any
// error; false with a message in `error` (naming the option, and the value
// with what was expected when the value is bad) on an unknown option, a
// missing value or a bad value.
bool ParseTitleOptions(int argc, char** argv, TitleOptions& options, bool& help,
                       std::string& error);
const char* TitleOptionsHelp();

}  // namespace tr::cli
