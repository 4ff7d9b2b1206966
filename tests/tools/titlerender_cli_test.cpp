// The built titlerender binary end to end: its PNG read back with libpng and
// probed where the font's design units put an "I"; failures, exit codes.
#include <png.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

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
using titleprobe::Hex;

const fs::path kDir = TR_CLI_TEST_DIR;

std::string Quote(const fs::path& path) {
    std::string q = "'";
    for (char c : path.string()) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

struct CliRun {
    int status = -1;  // -1 when the program did not exit normally
    std::string out, err;
};

// Runs the CLI with TMPDIR inside the build tree; `shell` goes before it.
CliRun RunCli(const std::vector<std::string>& args, const std::string& shell = "") {
    fs::create_directories(kDir / "tmp");
    std::string command = shell + "TMPDIR=" + Quote(kDir / "tmp") + " " + Quote(TR_CLI_PATH);
    for (const std::string& a : args) command += " " + Quote(a);
    command += " >" + Quote(kDir / "stdout.txt") + " 2>" + Quote(kDir / "stderr.txt");
    const int status = std::system(command.c_str());
    const auto slurp = [](const char* name) {
        return (std::stringstream() << std::ifstream(kDir / name).rdbuf()).str();
    };
    return {status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp("stdout.txt"),
            slurp("stderr.txt")};
}

TEST(TitlerenderCli, WritesThePngOfTheTitle) {
    constexpr uint32_t kFill = 0xFF3060C0u, kOutline = 0xFF10A020u, kBackground = 0xFF204060u;
    const fs::path png = kDir / "stem.png";
    fs::remove(png);
    const CliRun run = RunCli({"--text", "I", "--size", "160", "--x", "60", "--y", "150", "--width",
                               "203", "--height", "211", "--fill", Hex(kFill), "--outline", "out",
                               "--outline-width", "5", "--outline-colour", Hex(kOutline),
                               "--background", Hex(kBackground), "--out", png});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, png.string() + "\n");
    png_image info;
    std::memset(&info, 0, sizeof info);
    info.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&info, png.c_str()));
    info.format = PNG_FORMAT_BGRA;  // the bytes of a little-endian BGRA word
    ASSERT_TRUE(info.width == 203 && info.height == 211);
    titleprobe::Canvas canvas{203, 211, std::vector<uint32_t>(203 * 211)};
    ASSERT_TRUE(png_image_finish_read(&info, nullptr, canvas.pixels.data(), 0, nullptr));
    // The stem of the "I" and the ring round it; the background elsewhere.
    const titleprobe::GlyphBox b = titleprobe::MeasureGlyph('I', 160, 60, 150);
    const double middleY = (b.top + b.bottom) / 2;
    EXPECT_EQ(canvas.At((b.left + b.right) / 2, middleY), Hex(kFill));
    EXPECT_EQ(canvas.At(b.left - 2.5, middleY), Hex(kOutline));
    EXPECT_EQ(canvas.At(b.right + 2.5, middleY), Hex(kOutline));
    EXPECT_EQ(canvas.Stray(b, 8, kBackground), 0);
}

#if defined(__SANITIZE_ADDRESS__)
#define TR_CLI_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TR_CLI_TEST_SANITIZED 1
#endif
#endif

TEST(TitlerenderCli, FailuresExplainThemselvesAndWriteNothing) {
    const fs::path plainFile = kDir / "plain_file";
    std::ofstream(plainFile) << "not a directory\n";
    const std::string under = (plainFile / "x.png").string();
    const struct {
        std::vector<std::string> args;  // after --text I --out <unwanted>
        std::string shell;
        int status;
        std::string err;  // the first line
    } cases[] = {
        {{"--out", under}, "", 1, "titlerender: cannot open " + under + " for writing"},
        {{"--font", "/no/font.ttf"}, "", 1, "titlerender: cannot read font /no/font.ttf"},
        {{"--bogus", "1"}, "", 2, "titlerender: unknown option --bogus"},
#ifndef TR_CLI_TEST_SANITIZED  // the sanitizer reserves more address space than the limit
        // 16384 x 16384 needs 1 GiB: refused with a message, not an abort.
        {{"--width", "16384", "--height", "16384"}, "ulimit -v 400000; ", 1,
         "titlerender: cannot allocate a 16384 x 16384 canvas"},
#endif
    };
    const fs::path unwanted = kDir / "should_not_exist.png";
    for (const auto& c : cases) {
        fs::remove(unwanted);
        std::vector<std::string> args = {"--text", "I", "--out", unwanted.string()};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const CliRun run = RunCli(args, c.shell);
        EXPECT_EQ(run.err.substr(0, run.err.find('\n')), c.err);
        EXPECT_TRUE(run.status == c.status && run.out.empty() && !fs::exists(unwanted)) << c.err;
        EXPECT_EQ(run.err.find("usage: titlerender") != std::string::npos, c.status == 2) << c.err;
    }
    const CliRun help = RunCli({"-h"});
    EXPECT_TRUE(help.status == 0 && help.out.rfind("usage: titlerender", 0) == 0 && help.err.empty());
}

}  // namespace
