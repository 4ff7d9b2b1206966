// CLI options: values in their accepted forms, refusals naming the option
// and the value, --help.
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
    p.ok = tr::cli::ParseTitleOptions(static_cast<int>(args.size()), argv.data(), p.options,
                                      p.help, p.error);
    return p;
}

// A value that looks like an option, the last of a repeated option,
// limits, exponents, colours of 6 digits (opaque) and 8, an explicit
// background even when clear.
TEST(TitleOptions, ValuesInTheirForms) {
    const Parsed p = Parse({"--text", "--size", "--size", "10", "--size", "4095.5", "--y", "1e1",
                            "--width", "16384", "--fill", "80112233", "--outline-colour",
                            "#C0ffEE", "--background", "00102030"});
    ASSERT_TRUE(p.ok) << p.error;
    const TitleOptions& o = p.options;
    EXPECT_TRUE(o.text == "--size" && o.size == 4095.5 && o.y == 10.0 && o.width == 16384);
    EXPECT_TRUE(o.fill == 0x80112233u && o.outlineColour == 0xFFC0FFEEu);
    EXPECT_TRUE(!o.transparent && o.background == 0x00102030u);
    EXPECT_TRUE(Parse({}).options.transparent);
}

TEST(TitleOptions, RefusalsNameTheOptionAndTheValue) {
    const std::string colour = "(expected a colour AARRGGBB or RRGGBB in hexadecimal)";
    const std::string side = "(expected a whole number of pixels from 1 to 16384)";
    const std::string size = "(expected a number of pixels above 0 and below 4096)";
    const std::string finite = "(expected a finite number)";
    const std::string pixels = "(expected a number of pixels, 0 or more)";
    const auto bad = [](const std::string& option, const std::string& value,
                        const std::string& expected) {
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
        {{"--shadow-angle", "nan"},
         bad("--shadow-angle", "nan", "(expected a finite number of degrees)")},
        {{"--background", "red"}, bad("--background", "red", colour)},
        {{"--size", "x", "--help"}, bad("--size", "x", size)},  // the first error wins
    };
    for (const auto& [args, message] : cases) {
        const Parsed p = Parse(args);
        EXPECT_TRUE(!p.ok && !p.help && p.error == message) << p.error;
    }
    const Parsed p = Parse({"--width", "300", "--background", "red"});
    EXPECT_TRUE(p.options.transparent && p.options.width == 300) << "a refusal changes nothing";
}

TEST(TitleOptions, HelpWinsOverTheRestOfTheLine) {
    const std::vector<std::string> cases[] = {
        {"-h"}, {"--size", "12", "--help"}, {"--help", "--size", "nonsense"}};
    for (const auto& args : cases) EXPECT_TRUE(Parse(args).help && !Parse(args).ok) << args.size();
}

}  // namespace
