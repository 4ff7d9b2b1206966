// tools/cli/title_options.cpp — parsing and help text of the CLI options.
//
// Every option takes one value; a table names each option, what its value
// must be (quoted in the error message) and how it is stored. Values are
// read whole: a number with trailing text, a non-finite number or a colour
// with anything but its hex digits is refused rather than half read.
#include "tools/cli/title_options.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace tr::cli {
namespace {

constexpr int32_t kMaxCanvas = 16384;  // pixels per side
constexpr double kMaxSize = 4096.0;    // the glyph source needs glyphs below 32768 px

// strtod and strtol skip leading blanks; a value is the whole argument.
bool StartsWithBlank(const char* text) { return std::isspace(static_cast<unsigned char>(text[0])) != 0; }

bool ParseDouble(const char* text, double& value) {
    if (StartsWithBlank(text)) return false;
    char* end = nullptr;
    const double v = std::strtod(text, &end);
    if (end == text || *end != '\0' || !std::isfinite(v)) return false;
    value = v;
    return true;
}

bool ParseCanvasSide(const char* text, int32_t& value) {
    if (StartsWithBlank(text)) return false;
    char* end = nullptr;
    const long v = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || v < 1 || v > kMaxCanvas) return false;
    value = static_cast<int32_t>(v);
    return true;
}

// AARRGGBB, or RRGGBB for an opaque colour; an optional leading '#'.
bool ParseColour(const char* text, uint32_t& value) {
    const char* digits = text[0] == '#' ? text + 1 : text;
    const std::size_t length = std::strlen(digits);
    if (length != 6 && length != 8) return false;
    uint32_t v = 0;
    for (std::size_t i = 0; i < length; ++i) {
        const auto c = static_cast<unsigned char>(digits[i]);
        if (!std::isxdigit(c)) return false;
        v = v << 4 | static_cast<uint32_t>(std::isdigit(c) ? c - '0' : std::tolower(c) - 'a' + 10);
    }
    value = length == 6 ? v | 0xFF000000u : v;
    return true;
}

bool ParseNonNegative(const char* text, double& value) {
    double v = 0.0;
    if (!ParseDouble(text, v) || v < 0.0) return false;
    value = v;
    return true;
}

struct OptionEntry {
    const char* name;
    const char* expected;  // completes "bad value for NAME: VALUE (expected ...)"
    bool (*store)(const char* value, TitleOptions& o);
};

constexpr const char* kColour = "a colour AARRGGBB or RRGGBB in hexadecimal";
constexpr const char* kSide = "a whole number of pixels from 1 to 16384";

const OptionEntry kOptions[] = {
    {"--text", "", [](const char* v, TitleOptions& o) { o.text = v; return true; }},
    {"--font", "", [](const char* v, TitleOptions& o) { o.font = v; return true; }},
    {"--size", "a number of pixels above 0 and below 4096",
     [](const char* v, TitleOptions& o) {
         double s = 0.0;
         if (!ParseDouble(v, s) || !(s > 0.0 && s < kMaxSize)) return false;
         o.size = s;
         return true;
     }},
    {"--width", kSide, [](const char* v, TitleOptions& o) { return ParseCanvasSide(v, o.width); }},
    {"--height", kSide, [](const char* v, TitleOptions& o) { return ParseCanvasSide(v, o.height); }},
    {"--x", "a finite number", [](const char* v, TitleOptions& o) { return ParseDouble(v, o.x); }},
    {"--y", "a finite number", [](const char* v, TitleOptions& o) { return ParseDouble(v, o.y); }},
    {"--fill", kColour, [](const char* v, TitleOptions& o) { return ParseColour(v, o.fill); }},
    {"--outline", "in or out",
     [](const char* v, TitleOptions& o) {
         const std::string side = v;
         if (side != "in" && side != "out") return false;
         o.outlineSide = side;
         return true;
     }},
    {"--outline-width", "a number of pixels, 0 or more",
     [](const char* v, TitleOptions& o) { return ParseNonNegative(v, o.outlineWidth); }},
    {"--outline-colour", kColour,
     [](const char* v, TitleOptions& o) { return ParseColour(v, o.outlineColour); }},
    {"--shadow-angle", "a finite number of degrees",
     [](const char* v, TitleOptions& o) { return ParseDouble(v, o.shadowAngle); }},
    {"--shadow-distance", "a number of pixels, 0 or more",
     [](const char* v, TitleOptions& o) { return ParseNonNegative(v, o.shadowDistance); }},
    {"--shadow-colour", kColour,
     [](const char* v, TitleOptions& o) { return ParseColour(v, o.shadowColour); }},
    {"--background", kColour,
     [](const char* v, TitleOptions& o) {
         if (!ParseColour(v, o.background)) return false;
         o.transparent = false;
         return true;
     }},
    {"--out", "", [](const char* v, TitleOptions& o) { o.output = v; return true; }},
};

const OptionEntry* FindOption(const std::string& name) {
    for (const OptionEntry& entry : kOptions) {
        if (name == entry.name) return &entry;
    }
    return nullptr;
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
           "  --help, -h             this text\n"
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
        const OptionEntry* entry = FindOption(name);
        if (entry == nullptr) {
            error = "unknown option " + name;
            return false;
        }
        if (i + 1 >= argc) {
            error = "missing value after " + name;
            return false;
        }
        const char* value = argv[++i];
        if (!entry->store(value, o)) {
            error = "bad value for " + name + ": \"" + value + "\" (expected " + entry->expected + ")";
            return false;
        }
    }
    return true;
}

}  // namespace tr::cli
