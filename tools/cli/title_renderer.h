// tools/cli/title_renderer.h — drives the library's entry points to draw a
// laid-out line of text into a host image.
#pragma once

#include <cstdint>
#include <vector>

#include "titlerender.h"
#include "tools/cli/title_options.h"
#include "tools/glyph_source/glyph_source.h"

namespace tr::cli {

// Fills the image with the background (when the options ask for one), then
// draws codes[i] with its pen at penX[i] on the baseline: one surface, one
// described and finished character per code, composited at close. `glyphs`
// answers the glyph callback and must outlive the call; `penX` has one pen
// per code.
void RenderTitleLine(const TitleOptions& options, tools::GlyphSource& glyphs,
                     const std::vector<uint32_t>& codes, const std::vector<double>& penX,
                     const ImageBlock& image);

}  // namespace tr::cli
