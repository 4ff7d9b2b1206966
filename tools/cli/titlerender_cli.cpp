// tools/cli/titlerender_cli.cpp — the titlerender command-line host.
//
// Parses the options, lays the text out with FreeType (text_layout), draws
// it through the library's entry points (title_renderer) into a canvas and
// writes the canvas as a PNG. Like a host, it creates the character caches
// before it renders and destroys them before it exits, so a letter that
// occurs several times is outlined once; the cache files go to
// "$TMPDIR/CG Cache/" (or /tmp) and are deleted with the caches.
// Exit status: 0 written (or help shown), 1 font, canvas memory or output
// file unusable, 2 bad options.
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "titlerender.h"
#include "tools/cli/text_layout.h"
#include "tools/cli/title_options.h"
#include "tools/cli/title_renderer.h"
#include "tools/glyph_source/glyph_source.h"
#include "tools/png/png_writer.h"

int main(int argc, char** argv) {
    tr::cli::TitleOptions options;
    bool help = false;
    std::string error;
    if (!tr::cli::ParseTitleOptions(argc, argv, options, help, error)) {
        if (help) {
            std::fputs(tr::cli::TitleOptionsHelp(), stdout);
            return 0;
        }
        std::fprintf(stderr, "titlerender: %s\n%s", error.c_str(), tr::cli::TitleOptionsHelp());
        return 2;
    }

    const std::vector<uint32_t> codes = tr::cli::DecodeUtf8(options.text);
    std::vector<double> penX;
    const int32_t outlineSize = static_cast<int32_t>(options.size + 0.5);
    auto glyphs = tr::tools::GlyphSource::Open(options.font, outlineSize > 0 ? outlineSize : 1,
                                               tr::tools::GlyphFormat::CurveRecords);
    if (!glyphs || !tr::cli::LayOutLine(options.font, options.size, options.x, codes, penX)) {
        std::fprintf(stderr, "titlerender: cannot read font %s\n", options.font.c_str());
        return 1;
    }

    // Up to 16384 x 16384 pixels (1 GiB): refuse politely when that much
    // memory is not there.
    std::vector<uint32_t> pixels;
    try {
        pixels.assign(static_cast<std::size_t>(options.width) * options.height, 0);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "titlerender: cannot allocate a %d x %d canvas\n", options.width,
                     options.height);
        return 1;
    }
    const ImageBlock image{pixels.data(), options.width, options.height, options.width * 4};
    CreateCharacterCaches();
    tr::cli::RenderTitleLine(options, *glyphs, codes, penX, image);
    DestroyCharacterCaches();

    if (!tr::WritePngFile(options.output, image, error)) {
        std::fprintf(stderr, "titlerender: %s\n", error.c_str());
        return 1;
    }
    std::printf("%s\n", options.output.c_str());
    return 0;
}
