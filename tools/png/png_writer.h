// PNG output for the tools: a host image block (straight-alpha BGRA words)
// written as an 8-bit RGBA PNG through libpng's simplified API.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "titlerender.h"

namespace tr {

// Encodes the block's width x height pixels (rows stride / 4 pixels apart,
// a negative stride walking upward, as for the generators). On failure
// returns false, leaves `png` empty and puts the reason in `error`: an
// unusable block (null, empty, no pixels, overlapping rows) or a libpng
// error.
[[nodiscard]] bool EncodePng(const ImageBlock& image, std::vector<uint8_t>& png,
                             std::string& error);

// EncodePng, then writes the bytes to `path` (replacing the file).
[[nodiscard]] bool WritePngFile(const std::string& path, const ImageBlock& image,
                                std::string& error);

} // namespace tr
