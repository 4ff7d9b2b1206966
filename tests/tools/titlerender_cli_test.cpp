// The built titlerender binary, end to end: it is run as a user runs it,
// its PNG is read back with libpng, and the pixels are probed at places
// measured from the font's design units: the stem of an "I", the ring an
// outline draws round it, the side a shadow falls on.
#include <png.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/title_probe.h"

namespace {

namespace fs = std::filesystem;
using titleprobe::Canvas;
using titleprobe::GlyphBox;
using titleprobe::Hex;

const fs::path kDir = TR_CLI_TEST_DIR;

std::string Quote(const std::string& s) {
    std::string q = "'";
    for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

std::string Slurp(const fs::path& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

struct CliRun {
    int status = -1;  // exit status, -1 when the program did not exit normally
    std::string out, err;
};

// Runs the CLI with TMPDIR inside the build tree, so nothing it may keep
// between runs lands outside it. `shell` is put before the command.
CliRun RunCli(const std::vector<std::string>& args, const std::string& shell = "") {
    fs::create_directories(kDir / "tmp");
    std::string command =
        shell + "TMPDIR=" + Quote((kDir / "tmp").string()) + " " + Quote(TR_CLI_PATH);
    for (const std::string& a : args) command += " " + Quote(a);
    const fs::path out = kDir / "stdout.txt", err = kDir / "stderr.txt";
    command += " >" + Quote(out.string()) + " 2>" + Quote(err.string());
    CliRun run;
    const int status = std::system(command.c_str());
    if (status != -1 && WIFEXITED(status)) run.status = WEXITSTATUS(status);
    run.out = Slurp(out);
    run.err = Slurp(err);
    return run;
}

bool ReadPng(const fs::path& path, Canvas& canvas) {
    png_image info;
    std::memset(&info, 0, sizeof info);
    info.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&info, path.c_str())) return false;
    info.format = PNG_FORMAT_BGRA;  // the bytes of a little-endian BGRA word
    canvas.width = static_cast<int>(info.width);
    canvas.height = static_cast<int>(info.height);
    canvas.pixels.assign(static_cast<std::size_t>(canvas.width) * canvas.height, 0);
    return png_image_finish_read(&info, nullptr, canvas.pixels.data(), 0, nullptr) != 0;
}

// One "I" large enough that its stem (about 15.8 px wide) keeps pixels of
// pure fill between 5-pixel inner rims, on a canvas of odd size. A pixel's
// compositing footprint reaches about a pixel into its neighbours (and half
// a pixel up and down), so probes keep that far from every edge: a probe in
// the middle of a 5-pixel ring sees nothing but the ring.
constexpr double kSize = 160, kPenX = 60, kBaseline = 150;
constexpr int kWidth = 203, kHeight = 211;
constexpr uint32_t kFill = 0xFF3060C0u, kOutline = 0xFF10A020u, kShadow = 0xFF802040u;

std::vector<std::string> StemArgs(const std::string& name) {
    return {"--text", "I", "--size", "160", "--x", "60", "--y", "150", "--width", "203",
            "--height", "211", "--fill", Hex(kFill), "--outline-colour", Hex(kOutline),
            "--shadow-colour", Hex(kShadow), "--out", (kDir / (name + ".png")).string()};
}

// Renders the stem with extra options and reads the PNG back.
void RenderStem(const std::string& name, const std::vector<std::string>& extra, Canvas& canvas,
                GlyphBox& box) {
    std::vector<std::string> args = StemArgs(name);
    args.insert(args.end(), extra.begin(), extra.end());
    const fs::path png = kDir / (name + ".png");
    fs::remove(png);
    const CliRun run = RunCli(args);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, png.string() + "\n");
    ASSERT_TRUE(ReadPng(png, canvas)) << png;
    ASSERT_TRUE(titleprobe::MeasureGlyph('I', kSize, kPenX, kBaseline, box));
}

struct Probe {
    const char* what;
    double dx, dy;  // from the stem's centre, in pixels
    uint32_t expected;
};

void ExpectProbes(const Canvas& canvas, const GlyphBox& box, const std::vector<Probe>& probes) {
    for (const Probe& p : probes) {
        const uint32_t got = canvas.At(box.CentreX() + p.dx, box.CentreY() + p.dy);
        EXPECT_EQ(Hex(got), Hex(p.expected)) << p.what;
    }
}

TEST(TitlerenderCli, FaceAndOutlinesLandOnTheStem) {
    struct Case {
        const char* name;
        std::vector<std::string> extra;
        double margin;  // ink may reach this far past the stem's box
        std::vector<Probe> (*probes)(const GlyphBox&);
    };
    const Case cases[] = {
        {"stem_plain", {}, 3,
         [](const GlyphBox& b) {
             return std::vector<Probe>{{"stem middle", 0, 0, kFill},
                                       {"stem near its top", 0, -b.HalfHeight() + 3, kFill},
                                       {"left of the stem", -b.HalfWidth() - 3, 0, 0u}};
         }},
        {"stem_outline_out", {"--outline", "out", "--outline-width", "5"}, 8,
         [](const GlyphBox& b) {
             return std::vector<Probe>{{"stem middle", 0, 0, kFill},
                                       {"ring left of the stem", -b.HalfWidth() - 2.5, 0, kOutline},
                                       {"ring right of the stem", b.HalfWidth() + 2.5, 0, kOutline},
                                       {"ring above the stem", 0, -b.HalfHeight() - 2.5, kOutline},
                                       {"past the ring", -b.HalfWidth() - 8, 0, 0u}};
         }},
        {"stem_outline_in", {"--outline", "in", "--outline-width", "5"}, 3,
         [](const GlyphBox& b) {
             return std::vector<Probe>{{"stem middle", 0, 0, kFill},
                                       {"rim inside the left edge", -b.HalfWidth() + 2.5, 0, kOutline},
                                       {"rim inside the right edge", b.HalfWidth() - 2.5, 0, kOutline},
                                       {"left of the stem", -b.HalfWidth() - 3, 0, 0u}};
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Canvas canvas;
        GlyphBox box;
        RenderStem(c.name, c.extra, canvas, box);
        ASSERT_EQ(canvas.width, kWidth);
        ASSERT_EQ(canvas.height, kHeight);
        ExpectProbes(canvas, box, c.probes(box));
        std::string first;
        EXPECT_EQ(titleprobe::CountOutside(canvas, {box}, c.margin, 0u, first), 0)
            << "a transparent background stays clear; first inked: " << first;
    }
}

// A shadow at angle a and distance d moves ink by d * (sin a, -cos a) on
// the canvas (0 up, 90 right, 180 down): past the stem on that side there
// is shadow, on the opposite side nothing.
TEST(TitlerenderCli, ShadowFallsTowardsItsAngle) {
    constexpr double kDistance = 16;
    const double angles[] = {0, 90, 180, 270};
    for (double angle : angles) {
        SCOPED_TRACE(angle);
        const std::string name = "stem_shadow_" + std::to_string(static_cast<int>(angle));
        Canvas canvas;
        GlyphBox box;
        RenderStem(name, {"--shadow-angle", std::to_string(angle), "--shadow-distance", "16"},
                   canvas, box);
        const double ux = std::round(std::sin(angle * M_PI / 180));
        const double uy = -std::round(std::cos(angle * M_PI / 180));
        // Half the stem along the direction, then half the distance: inside
        // the band swept between the face and its displaced copy.
        const double reach = (ux != 0 ? box.HalfWidth() : box.HalfHeight()) + kDistance / 2;
        ExpectProbes(canvas, box,
                     {{"stem middle", 0, 0, kFill},
                      {"shadow side", ux * reach, uy * reach, kShadow},
                      {"opposite side", -ux * reach, -uy * reach, 0u}});
        GlyphBox swept = box;
        swept.left = std::min(box.left, box.left + ux * kDistance);
        swept.right = std::max(box.right, box.right + ux * kDistance);
        swept.top = std::min(box.top, box.top + uy * kDistance);
        swept.bottom = std::max(box.bottom, box.bottom + uy * kDistance);
        std::string first;
        EXPECT_EQ(titleprobe::CountOutside(canvas, {swept}, 3, 0u, first), 0)
            << "first inked: " << first;
    }
}

TEST(TitlerenderCli, BackgroundFillsTheCanvasOutsideTheText) {
    constexpr uint32_t kBackground = 0xFF204060u;
    Canvas canvas;
    GlyphBox box;
    RenderStem("stem_background", {"--background", Hex(kBackground)}, canvas, box);
    ExpectProbes(canvas, box, {{"stem middle", 0, 0, kFill}});
    std::string first;
    EXPECT_EQ(titleprobe::CountOutside(canvas, {box}, 3, kBackground, first), 0)
        << "first differing: " << first;
}

struct Failure {
    const char* name;
    std::vector<std::string> args;  // --out is added in front
    int status;
    std::string message;  // the first line of standard error
};

TEST(TitlerenderCli, FailuresExplainThemselvesAndWriteNothing) {
    const fs::path plainFile = kDir / "plain_file";
    { std::ofstream(plainFile) << "not a directory\n"; }
    const fs::path underFile = plainFile / "x.png";
    const fs::path directory = kDir / "a_directory.png";
    fs::create_directories(directory);
    const Failure cases[] = {
        {"output under a file", {"--out", underFile.string()}, 1,
         "titlerender: cannot open " + underFile.string() + " for writing"},
        {"output is a directory", {"--out", directory.string()}, 1,
         "titlerender: cannot open " + directory.string() + " for writing"},
        {"missing font", {"--font", "/nonexistent/font.ttf"}, 1,
         "titlerender: cannot read font /nonexistent/font.ttf"},
        {"unknown option", {"--bogus", "1"}, 2, "titlerender: unknown option --bogus"},
        {"zero canvas", {"--width", "0"}, 2,
         "titlerender: bad value for --width: \"0\" (expected a whole number of pixels from 1 "
         "to 16384)"},
        {"missing value", {"--size"}, 2, "titlerender: missing value after --size"},
    };
    const fs::path unwanted = kDir / "should_not_exist.png";
    for (const Failure& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove(unwanted);
        std::vector<std::string> args = {"--text", "I", "--out", unwanted.string()};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const CliRun run = RunCli(args);
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(run.err.substr(0, run.err.find('\n')), c.message);
        EXPECT_EQ(run.out, "");
        EXPECT_FALSE(fs::exists(unwanted));
        if (c.status == 2) {
            EXPECT_NE(run.err.find("usage: titlerender"), std::string::npos) << "usage follows";
        }
    }
    EXPECT_TRUE(fs::is_directory(directory)) << "the directory is left alone";
}

#if defined(__SANITIZE_ADDRESS__)
#define TR_CLI_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TR_CLI_TEST_SANITIZED 1
#endif
#endif

// A 16384 x 16384 canvas needs 1 GiB; with less address space the CLI says
// so instead of aborting on an uncaught exception.
TEST(TitlerenderCli, ACanvasThatDoesNotFitInMemoryIsRefused) {
#ifdef TR_CLI_TEST_SANITIZED
    GTEST_SKIP() << "the address sanitizer reserves more address space than the limit allows";
#else
    const fs::path unwanted = kDir / "huge.png";
    fs::remove(unwanted);
    const CliRun run = RunCli({"--text", "I", "--width", "16384", "--height", "16384", "--out",
                               unwanted.string()},
                              "ulimit -v 400000; ");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "titlerender: cannot allocate a 16384 x 16384 canvas\n");
    EXPECT_FALSE(fs::exists(unwanted));
#endif
}

TEST(TitlerenderCli, HelpGoesToStandardOutput) {
    for (const char* flag : {"--help", "-h"}) {
        SCOPED_TRACE(flag);
        const CliRun run = RunCli({flag});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out.rfind("usage: titlerender", 0), 0u);
        EXPECT_NE(run.out.find("--shadow-distance"), std::string::npos);
        EXPECT_EQ(run.err, "");
    }
}

}  // namespace
