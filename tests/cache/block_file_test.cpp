// Tests of the block file layout and the block digest (the reader's refusals
// of damaged files are tested through the disk cache).
#include "cache/block_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "cache_level_support.h"
#include "host/file.h"

namespace tr::test {
namespace {

// The size word little-endian, then the block; nothing for a block without a
// pointer; false only when the file does not open.
TEST(BlockFile, SizeWordLittleEndianThenTheBlock) {
    const std::string path = Talc::PathUtils::GetTempDirectory() + "/tr_block_file_test";
    std::vector<std::uint8_t> block(0x10203);
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i * 29);
    ASSERT_TRUE(WriteBlockFile(path, OMData{block.data(), std::uint32_t{0x10203}}));
    std::vector<std::uint8_t> expected = {0x03, 0x02, 0x01, 0x00};
    expected.insert(expected.end(), block.begin(), block.end());
    EXPECT_EQ(FileBytes(path), expected);
    const OMData back = ReadBlockFile(path);
    EXPECT_EQ(BytesOf(back), block);
    delete[] back.pointer;
    EXPECT_TRUE(WriteBlockFile(path, OMData{nullptr, 8}));
    EXPECT_EQ(std::filesystem::file_size(path), 0u);
    EXPECT_FALSE(WriteBlockFile(path + "/below", OMData{block.data(), 1}));
    std::filesystem::remove(path);
}

// 109 bytes (three 32-byte stripes, a word, five tail bytes: every part of
// the digest): each bit flipped, two words swapped (across or within a lane)
// and another length all change the digest.
TEST(BlockDigest, EverySmallChangeChangesTheDigest) {
    constexpr std::uint32_t kSize = 109;
    std::vector<std::uint8_t> bytes(kSize);
    for (std::size_t i = 0; i < kSize; ++i) bytes[i] = static_cast<std::uint8_t>(i * 37 + 11);
    const std::uint64_t digest = BlockDigest(bytes.data(), kSize);
    for (std::size_t bit = 0; bit < kSize * 8; ++bit) {
        bytes[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
        EXPECT_NE(BlockDigest(bytes.data(), kSize), digest) << "bit " << bit;
        bytes[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    }
    for (const std::size_t other : {8u, 32u, 96u}) {
        std::vector<std::uint8_t> swapped = bytes;
        std::swap_ranges(swapped.begin(), swapped.begin() + 8, swapped.begin() + other);
        EXPECT_NE(BlockDigest(swapped.data(), kSize), digest) << "word 0 swapped with " << other;
    }
    EXPECT_NE(BlockDigest(bytes.data(), kSize - 1), digest);
    bytes.push_back(0);
    EXPECT_NE(BlockDigest(bytes.data(), kSize + 1), digest) << "a trailing zero byte";
}

}  // namespace
}  // namespace tr::test
