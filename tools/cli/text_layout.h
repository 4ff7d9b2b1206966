// tools/cli/text_layout.h — a line of text for the CLI: the character codes
// of its UTF-8 text and the pen position of each character.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tr::cli {

// Code points of UTF-8 text. A malformed sequence (stray continuation byte,
// bad lead byte, missing continuation byte, overlong form, surrogate, code
// above U+10FFFF) gives one U+FFFD and decoding resumes at the first byte
// that does not belong to it, so a good character after a broken one is
// kept.
std::vector<uint32_t> DecodeUtf8(const std::string& text);

// Pen x of each character of a line set in the font at `size` pixels per
// em: the first pen is `startX`; each next pen adds the previous glyph's
// unhinted advance and the unfitted kerning of the pair. A code the font
// lacks is set with the font's missing-glyph advance and is not kerned.
// False (and `penX` unspecified) when the font cannot be opened or sized.
bool LayOutLine(const std::string& fontPath, double size, double startX,
                const std::vector<uint32_t>& codes, std::vector<double>& penX);

}  // namespace tr::cli
