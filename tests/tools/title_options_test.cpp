// CLI options: the documented defaults, every option's accepted values,
// and refusals that name the option and the offending value.
#include "tools/cli/title_options.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using tr::cli::TitleOptions;

struct Parsed {
    bool ok = false;
    bool help = false;
    std::string error;
    TitleOptions options;
};

Parsed Parse(std::vector<std::string> args) {
    args.insert(args.begin(), "titlerender");
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    Parsed p;
    p.ok = tr::cli::ParseTitleOptions(static_cast<int>(args.size()), argv.data(), p.options, p.help,
                                      p.error);
    return p;
}

std::string Join(const std::vector<std::string>& args) {
    std::string s;
    for (const std::string& a : args) s += "[" + a + "]";
    return s;
}

// The defaults the usage text promises.
TEST(TitleOptions, NoArgumentsGiveTheDocumentedDefaults) {
    const Parsed p = Parse({});
    ASSERT_TRUE(p.ok) << p.error;
    const TitleOptions& o = p.options;
    EXPECT_EQ(o.text, "Title");
    EXPECT_EQ(o.font, "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");
    EXPECT_EQ(o.size, 64.0);
    EXPECT_EQ(o.width, 640);
    EXPECT_EQ(o.height, 160);
    EXPECT_EQ(o.x, 20.0);
    EXPECT_EQ(o.y, 110.0);
    EXPECT_EQ(o.fill, 0xFFFFFFFFu);
    EXPECT_EQ(o.outlineSide, "");
    EXPECT_EQ(o.outlineWidth, 0.0);
    EXPECT_EQ(o.outlineColour, 0xFF000000u);
    EXPECT_EQ(o.shadowAngle, 0.0);
    EXPECT_EQ(o.shadowDistance, 0.0);
    EXPECT_EQ(o.shadowColour, 0x80000000u);
    EXPECT_TRUE(o.transparent);
    EXPECT_EQ(o.output, "title.png");
}

struct Accepted {
    std::vector<std::string> args;
    std::function<void(const TitleOptions&)> expect;
};

TEST(TitleOptions, EveryOptionStoresItsValue) {
    const Accepted cases[] = {
        {{"--text", "Grüße AV"}, [](const TitleOptions& o) { EXPECT_EQ(o.text, "Grüße AV"); }},
        {{"--text", "--size"}, [](const TitleOptions& o) { EXPECT_EQ(o.text, "--size"); }},
        {{"--font", "/tmp/f.otf"}, [](const TitleOptions& o) { EXPECT_EQ(o.font, "/tmp/f.otf"); }},
        {{"--size", "48.5"}, [](const TitleOptions& o) { EXPECT_EQ(o.size, 48.5); }},
        {{"--size", "4095.5"}, [](const TitleOptions& o) { EXPECT_EQ(o.size, 4095.5); }},
        {{"--size", "1e1"}, [](const TitleOptions& o) { EXPECT_EQ(o.size, 10.0); }},
        {{"--width", "1"}, [](const TitleOptions& o) { EXPECT_EQ(o.width, 1); }},
        {{"--width", "16384"}, [](const TitleOptions& o) { EXPECT_EQ(o.width, 16384); }},
        {{"--height", "90"}, [](const TitleOptions& o) { EXPECT_EQ(o.height, 90); }},
        {{"--x", "-12.25"}, [](const TitleOptions& o) { EXPECT_EQ(o.x, -12.25); }},
        {{"--y", "0"}, [](const TitleOptions& o) { EXPECT_EQ(o.y, 0.0); }},
        {{"--fill", "80112233"}, [](const TitleOptions& o) { EXPECT_EQ(o.fill, 0x80112233u); }},
        {{"--fill", "1a2B3c"}, [](const TitleOptions& o) { EXPECT_EQ(o.fill, 0xFF1A2B3Cu); }},
        {{"--fill", "#00ff00"}, [](const TitleOptions& o) { EXPECT_EQ(o.fill, 0xFF00FF00u); }},
        {{"--fill", "00000000"}, [](const TitleOptions& o) { EXPECT_EQ(o.fill, 0u); }},
        {{"--outline", "in"}, [](const TitleOptions& o) { EXPECT_EQ(o.outlineSide, "in"); }},
        {{"--outline", "out"}, [](const TitleOptions& o) { EXPECT_EQ(o.outlineSide, "out"); }},
        {{"--outline-width", "2.5"}, [](const TitleOptions& o) { EXPECT_EQ(o.outlineWidth, 2.5); }},
        {{"--outline-width", "0"}, [](const TitleOptions& o) { EXPECT_EQ(o.outlineWidth, 0.0); }},
        {{"--outline-colour", "C0FFEE"},
         [](const TitleOptions& o) { EXPECT_EQ(o.outlineColour, 0xFFC0FFEEu); }},
        {{"--shadow-angle", "-45"}, [](const TitleOptions& o) { EXPECT_EQ(o.shadowAngle, -45.0); }},
        {{"--shadow-angle", "720"}, [](const TitleOptions& o) { EXPECT_EQ(o.shadowAngle, 720.0); }},
        {{"--shadow-distance", "6"},
         [](const TitleOptions& o) { EXPECT_EQ(o.shadowDistance, 6.0); }},
        {{"--shadow-colour", "40102030"},
         [](const TitleOptions& o) { EXPECT_EQ(o.shadowColour, 0x40102030u); }},
        {{"--background", "102030"},
         [](const TitleOptions& o) {
             EXPECT_FALSE(o.transparent);
             EXPECT_EQ(o.background, 0xFF102030u);
         }},
        {{"--background", "00102030"},  // an explicit background, even a clear one
         [](const TitleOptions& o) {
             EXPECT_FALSE(o.transparent);
             EXPECT_EQ(o.background, 0x00102030u);
         }},
        {{"--out", "a b.png"}, [](const TitleOptions& o) { EXPECT_EQ(o.output, "a b.png"); }},
        {{"--size", "10", "--size", "20"}, [](const TitleOptions& o) { EXPECT_EQ(o.size, 20.0); }},
        {{"--x", "1", "--y", "2", "--text", "Hi"},
         [](const TitleOptions& o) {
             EXPECT_EQ(o.x, 1.0);
             EXPECT_EQ(o.y, 2.0);
             EXPECT_EQ(o.text, "Hi");
         }},
    };
    for (const Accepted& c : cases) {
        SCOPED_TRACE(Join(c.args));
        const Parsed p = Parse(c.args);
        ASSERT_TRUE(p.ok) << p.error;
        EXPECT_FALSE(p.help);
        c.expect(p.options);
    }
}

struct Refused {
    std::vector<std::string> args;
    std::string message;  // the whole message
};

TEST(TitleOptions, RefusalsNameTheOptionAndTheValue) {
    const std::string colour = "(expected a colour AARRGGBB or RRGGBB in hexadecimal)";
    const std::string side = "(expected a whole number of pixels from 1 to 16384)";
    const std::string size = "(expected a number of pixels above 0 and below 4096)";
    const std::string finite = "(expected a finite number)";
    const std::string nonNegative = "(expected a number of pixels, 0 or more)";
    const Refused cases[] = {
        {{"--colour", "FF0000"}, "unknown option --colour"},
        {{"-s", "12"}, "unknown option -s"},
        // A stray word is unknown, not an option missing its value.
        {{"Hello"}, "unknown option Hello"},
        {{"--size"}, "missing value after --size"},
        {{"--text", "A", "--out"}, "missing value after --out"},
        {{"--size", "abc"}, "bad value for --size: \"abc\" " + size},
        {{"--size", "0"}, "bad value for --size: \"0\" " + size},
        {{"--size", "-3"}, "bad value for --size: \"-3\" " + size},
        {{"--size", "4096"}, "bad value for --size: \"4096\" " + size},
        {{"--size", "nan"}, "bad value for --size: \"nan\" " + size},
        {{"--size", "12px"}, "bad value for --size: \"12px\" " + size},
        {{"--size", " 12"}, "bad value for --size: \" 12\" " + size},
        {{"--size", ""}, "bad value for --size: \"\" " + size},
        {{"--width", "0"}, "bad value for --width: \"0\" " + side},
        {{"--width", "-5"}, "bad value for --width: \"-5\" " + side},
        {{"--width", "16385"}, "bad value for --width: \"16385\" " + side},
        {{"--width", "12.5"}, "bad value for --width: \"12.5\" " + side},
        {{"--width", "99999999999999999999"},
         "bad value for --width: \"99999999999999999999\" " + side},
        {{"--height", "0"}, "bad value for --height: \"0\" " + side},
        {{"--x", "nan"}, "bad value for --x: \"nan\" " + finite},
        {{"--x", "1e999"}, "bad value for --x: \"1e999\" " + finite},
        {{"--y", "3q"}, "bad value for --y: \"3q\" " + finite},
        {{"--fill", "GG0000"}, "bad value for --fill: \"GG0000\" " + colour},
        {{"--fill", "12345"}, "bad value for --fill: \"12345\" " + colour},
        {{"--fill", "1234567"}, "bad value for --fill: \"1234567\" " + colour},
        {{"--fill", "FF00000000"}, "bad value for --fill: \"FF00000000\" " + colour},
        {{"--fill", "0x1234"}, "bad value for --fill: \"0x1234\" " + colour},
        {{"--fill", "-12345"}, "bad value for --fill: \"-12345\" " + colour},
        {{"--fill", " 12345"}, "bad value for --fill: \" 12345\" " + colour},
        {{"--fill", "#12345"}, "bad value for --fill: \"#12345\" " + colour},
        {{"--outline", "sideways"}, "bad value for --outline: \"sideways\" (expected in or out)"},
        {{"--outline", "OUT"}, "bad value for --outline: \"OUT\" (expected in or out)"},
        {{"--outline-width", "-1"}, "bad value for --outline-width: \"-1\" " + nonNegative},
        {{"--outline-width", "inf"}, "bad value for --outline-width: \"inf\" " + nonNegative},
        {{"--outline-colour", "black"}, "bad value for --outline-colour: \"black\" " + colour},
        {{"--shadow-angle", "nan"},
         "bad value for --shadow-angle: \"nan\" (expected a finite number of degrees)"},
        {{"--shadow-distance", "-2"}, "bad value for --shadow-distance: \"-2\" " + nonNegative},
        {{"--shadow-colour", "zz"}, "bad value for --shadow-colour: \"zz\" " + colour},
        {{"--background", "red"}, "bad value for --background: \"red\" " + colour},
        // The first error wins, even with --help after it.
        {{"--size", "x", "--help"}, "bad value for --size: \"x\" " + size},
    };
    for (const Refused& c : cases) {
        SCOPED_TRACE(Join(c.args));
        const Parsed p = Parse(c.args);
        EXPECT_FALSE(p.ok);
        EXPECT_FALSE(p.help);
        EXPECT_EQ(p.error, c.message);
    }
}

TEST(TitleOptions, RefusedValuesLeaveTheOptionsUntouched) {
    const Parsed p = Parse({"--background", "red", "--fill", "0x1234"});
    ASSERT_FALSE(p.ok);
    EXPECT_TRUE(p.options.transparent);
    const Parsed q = Parse({"--width", "300", "--width", "0"});
    ASSERT_FALSE(q.ok);
    EXPECT_EQ(q.options.width, 300);
}

TEST(TitleOptions, HelpWinsOverTheRestOfTheLine) {
    const std::vector<std::string> cases[] = {
        {"--help"}, {"-h"}, {"--size", "12", "--help"}, {"--help", "--size", "nonsense"}, {"-h", "x"}};
    for (const std::vector<std::string>& args : cases) {
        SCOPED_TRACE(Join(args));
        const Parsed p = Parse(args);
        EXPECT_FALSE(p.ok);
        EXPECT_TRUE(p.help);
    }
}

// Every option, with a value it accepts: the parser knows each one and the
// help text lists each one as a whole word.
TEST(TitleOptions, HelpListsEveryOption) {
    const std::pair<const char*, const char*> options[] = {
        {"--text", "x"},           {"--font", "f.ttf"},       {"--size", "12"},
        {"--width", "10"},         {"--height", "10"},        {"--x", "1"},
        {"--y", "1"},              {"--fill", "FFFFFF"},      {"--outline", "in"},
        {"--outline-width", "1"},  {"--outline-colour", "FFFFFF"},
        {"--shadow-angle", "90"},  {"--shadow-distance", "2"}, {"--shadow-colour", "FFFFFF"},
        {"--background", "FFFFFF"}, {"--out", "o.png"},
    };
    const std::string help = tr::cli::TitleOptionsHelp();
    EXPECT_EQ(help.rfind("usage: titlerender", 0), 0u);
    for (const auto& [name, value] : options) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(Parse({name, value}).ok);
        const std::string word = std::string(" ") + name + " ";
        EXPECT_NE(help.find(word), std::string::npos);
    }
    EXPECT_NE(help.find("--help"), std::string::npos);
    EXPECT_NE(help.find("AARRGGBB"), std::string::npos);
}

}  // namespace
