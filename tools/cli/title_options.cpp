// tools/cli/title_options.cpp — parsing and help text of the CLI options.
#include "tools/cli/title_options.h"

#include <cstdlib>
#include <cstring>

namespace tr::cli {
namespace {

bool ParseDouble(const char* text, double& value) {
    char* end = nullptr;
    value = std::strtod(text, &end);
    return end != text && *end == '\0';
}

bool ParseInt(const char* text, int32_t& value) {
    char* end = nullptr;
    const long v = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || v < 1 || v > 16384) return false;
    value = static_cast<int32_t>(v);
    return true;
}

// Colours are AARRGGBB in hexadecimal (RRGGBB means opaque).
bool ParseColour(const char* text, uint32_t& value) {
    const char* digits = text[0] == '#' ? text + 1 : text;
    const std::size_t length = std::strlen(digits);
    if (length != 6 && length != 8) return false;
    char* end = nullptr;
    const unsigned long v = std::strtoul(digits, &end, 16);
    if (*end != '\0') return false;
    value = static_cast<uint32_t>(v) | (length == 6 ? 0xFF000000u : 0u);
    return true;
}

}  // namespace

const char* TitleOptionsHelp() {
    return "usage: titlerender [options]\n"
           "Renders one line of text through the titlerender library and writes a PNG.\n"
           "  --text TEXT            the text (default \"Title\")\n"
           "  --font PATH            TrueType/OpenType font (default DejaVu Sans)\n"
           "  --size PX              size in pixels per em (default 64)\n"
           "  --width PX --height PX canvas size (default 640 x 160)\n"
           "  --x PX --y PX          pen start and baseline, from the top left (default 20, 110)\n"
           "  --fill COLOUR          face colour (default FFFFFFFF)\n"
           "  --outline in|out       inner or outer outline\n"
           "  --outline-width PX     outline width (default 0: none)\n"
           "  --outline-colour COLOUR outline colour (default FF000000)\n"
           "  --shadow-angle DEG     shadow direction: 90 right, 180 down (default 0)\n"
           "  --shadow-distance PX   shadow distance (default 0: no shadow)\n"
           "  --shadow-colour COLOUR shadow colour (default 80000000)\n"
           "  --background COLOUR    opaque background instead of transparency\n"
           "  --out PATH             output PNG (default title.png)\n"
           "Colours are hexadecimal AARRGGBB, or RRGGBB for opaque.\n";
}

bool ParseTitleOptions(int argc, char** argv, TitleOptions& o, bool& help, std::string& error) {
    help = false;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--help" || name == "-h") {
            help = true;
            return false;
        }
        if (i + 1 >= argc) {
            error = "missing value after " + name;
            return false;
        }
        const char* value = argv[++i];
        bool ok = true;
        if (name == "--text") o.text = value;
        else if (name == "--font") o.font = value;
        else if (name == "--size") ok = ParseDouble(value, o.size) && o.size > 0.0 && o.size < 4096.0;
        else if (name == "--width") ok = ParseInt(value, o.width);
        else if (name == "--height") ok = ParseInt(value, o.height);
        else if (name == "--x") ok = ParseDouble(value, o.x);
        else if (name == "--y") ok = ParseDouble(value, o.y);
        else if (name == "--fill") ok = ParseColour(value, o.fill);
        else if (name == "--outline") {
            o.outlineSide = value;
            ok = o.outlineSide == "in" || o.outlineSide == "out";
        } else if (name == "--outline-width") ok = ParseDouble(value, o.outlineWidth) && o.outlineWidth >= 0.0;
        else if (name == "--outline-colour") ok = ParseColour(value, o.outlineColour);
        else if (name == "--shadow-angle") ok = ParseDouble(value, o.shadowAngle);
        else if (name == "--shadow-distance") ok = ParseDouble(value, o.shadowDistance) && o.shadowDistance >= 0.0;
        else if (name == "--shadow-colour") ok = ParseColour(value, o.shadowColour);
        else if (name == "--background") {
            ok = ParseColour(value, o.background);
            o.transparent = false;
        } else if (name == "--out") o.output = value;
        else {
            error = "unknown option " + name;
            return false;
        }
        if (!ok) {
            error = "bad value for " + name + ": " + value;
            return false;
        }
    }
    return true;
}

}  // namespace tr::cli
