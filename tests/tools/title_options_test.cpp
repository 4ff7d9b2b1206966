// CLI options: every option stores its value, colours in their three forms,
// refusals that name the option and the offending value, and --help.
#include "tools/cli/title_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using tr::cli::TitleOptions;

struct Parsed {
    bool ok = false, help = false;
    std::string error;
    TitleOptions options;
};

Parsed Parse(std::vector<std::string> args) {
    args.insert(args.begin(), "titlerender");
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    Parsed p;
    p.ok = tr::cli::ParseTitleOptions(static_cast<int>(args.size()), argv.data(), p.options, p.help, p.error);
    return p;
}

TEST(TitleOptions, EveryOptionStoresItsValueAndTheHelpNamesIt) {
    const std::vector<std::string> args = {
        "--text", "--size", "--font", "/tmp/f.otf", "--size", "10", "--size", "4095.5", "--width", "16384",
        "--height", "1", "--x", "-12.25", "--y", "1e1", "--fill", "80112233", "--outline", "out",
        "--outline-width", "2.5", "--outline-colour", "#C0ffEE", "--shadow-angle", "720", "--shadow-distance", "0",
        "--shadow-colour", "40102030", "--background", "00102030", "--out", "a b.png"};
    const Parsed p = Parse(args);
    ASSERT_TRUE(p.ok) << p.error;
    const TitleOptions& o = p.options;
    EXPECT_EQ(o.text, "--size");
    EXPECT_EQ(o.font, "/tmp/f.otf");
    EXPECT_EQ(o.size, 4095.5) << "the last one wins";
    EXPECT_EQ(o.width, 16384);
    EXPECT_EQ(o.height, 1);
    EXPECT_EQ(o.x, -12.25);
    EXPECT_EQ(o.y, 10.0);
    EXPECT_EQ(o.fill, 0x80112233u);
    EXPECT_EQ(o.outlineSide, "out");
    EXPECT_EQ(o.outlineWidth, 2.5);
    EXPECT_EQ(o.outlineColour, 0xFFC0FFEEu) << "RRGGBB is opaque";
    EXPECT_EQ(o.shadowAngle, 720.0);
    EXPECT_EQ(o.shadowDistance, 0.0);
    EXPECT_EQ(o.shadowColour, 0x40102030u);
    EXPECT_FALSE(o.transparent) << "an explicit background, even a clear one";
    EXPECT_EQ(o.background, 0x00102030u);
    EXPECT_EQ(o.output, "a b.png");
    EXPECT_TRUE(Parse({}).options.transparent);
    const std::string help = tr::cli::TitleOptionsHelp();
    EXPECT_EQ(help.rfind("usage: titlerender", 0), 0u);
    for (std::size_t i = 0; i < args.size(); i += 2) {
        EXPECT_NE(help.find(" " + args[i] + " "), std::string::npos) << args[i];
    }
}

TEST(TitleOptions, RefusalsNameTheOptionAndTheValue) {
    const std::string colour = "(expected a colour AARRGGBB or RRGGBB in hexadecimal)";
    const std::string side = "(expected a whole number of pixels from 1 to 16384)";
    const std::string size = "(expected a number of pixels above 0 and below 4096)";
    const std::string finite = "(expected a finite number)", pixels = "(expected a number of pixels, 0 or more)";
    const auto bad = [](const std::string& option, const std::string& value, const std::string& expected) {
        return "bad value for " + option + ": \"" + value + "\" " + expected;
    };
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--colour", "FF0000"}, "unknown option --colour"},
        {{"Hello"}, "unknown option Hello"},  // a stray word, not an option missing its value
        {{"--text", "A", "--out"}, "missing value after --out"},
        {{"--size", "0"}, bad("--size", "0", size)},
        {{"--size", "4096"}, bad("--size", "4096", size)},
        {{"--size", "12px"}, bad("--size", "12px", size)},
        {{"--size", " 12"}, bad("--size", " 12", size)},
        {{"--width", "16385"}, bad("--width", "16385", side)},
        {{"--width", "12.5"}, bad("--width", "12.5", side)},
        {{"--height", "99999999999999999999"}, bad("--height", "99999999999999999999", side)},
        {{"--x", "1e999"}, bad("--x", "1e999", finite)},
        {{"--y", "nan"}, bad("--y", "nan", finite)},
        {{"--fill", "12345"}, bad("--fill", "12345", colour)},
        {{"--fill", "0x1234"}, bad("--fill", "0x1234", colour)},
        {{"--fill", "-12345"}, bad("--fill", "-12345", colour)},
        {{"--outline", "OUT"}, bad("--outline", "OUT", "(expected in or out)")},
        {{"--outline-width", "inf"}, bad("--outline-width", "inf", pixels)},
        {{"--shadow-distance", "-2"}, bad("--shadow-distance", "-2", pixels)},
        {{"--shadow-angle", "nan"}, bad("--shadow-angle", "nan", "(expected a finite number of degrees)")},
        {{"--background", "red"}, bad("--background", "red", colour)},
        {{"--size", "x", "--help"}, bad("--size", "x", size)},  // the first error wins
    };
    for (const auto& [args, message] : cases) {
        const Parsed p = Parse(args);
        EXPECT_TRUE(!p.ok && !p.help) << args[0];
        EXPECT_EQ(p.error, message);
    }
    const Parsed p = Parse({"--width", "300", "--background", "red"});
    EXPECT_TRUE(p.options.transparent && p.options.width == 300) << "a refused value changes nothing";
}

TEST(TitleOptions, HelpWinsOverTheRestOfTheLine) {
    const std::vector<std::string> cases[] = {{"-h"}, {"--size", "12", "--help"}, {"--help", "--size", "nonsense"}};
    for (const auto& args : cases) EXPECT_TRUE(Parse(args).help && !Parse(args).ok) << args.size();
}

}  // namespace
