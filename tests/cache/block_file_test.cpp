// Tests of the block file: its layout, the reader's refusals (without ever
// allocating more than the file holds), and the block digest.
#include "cache/block_file.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "allocation_probe.h"
#include "host/file.h"

namespace tr {
namespace {

namespace fs = std::filesystem;
using test::LargestNothrowArray;
using test::ResetLargestNothrowArray;

std::vector<std::uint8_t> Pattern(std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 29 + 3);
    return bytes;
}

std::vector<std::uint8_t> ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void WriteAll(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

class BlockFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = Talc::PathUtils::GetTempDirectory() + "/tr_block_file_XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
    }
    void TearDown() override { fs::remove_all(root_); }
    std::string root_;
};

TEST_F(BlockFileTest, SizeWordLittleEndianThenTheBlock) {
    std::vector<std::uint8_t> block = Pattern(0x10203);
    const std::string path = root_ + "/17Character_0";
    ASSERT_TRUE(WriteBlockFile(path, OMData{block.data(), static_cast<std::uint32_t>(block.size())}));
    const std::vector<std::uint8_t> file = ReadAll(path);
    ASSERT_EQ(file.size(), 4 + block.size());
    EXPECT_EQ(file[0], 0x03);
    EXPECT_EQ(file[1], 0x02);
    EXPECT_EQ(file[2], 0x01);
    EXPECT_EQ(file[3], 0x00);
    EXPECT_TRUE(std::equal(block.begin(), block.end(), file.begin() + 4));

    const OMData back = ReadBlockFile(path);
    ASSERT_NE(back.pointer, nullptr);
    EXPECT_EQ(back.size, block.size());
    EXPECT_TRUE(std::equal(block.begin(), block.end(), back.pointer));
    delete[] back.pointer;
}

TEST_F(BlockFileTest, WritingReportsOnlyWhetherTheFileOpened) {
    std::uint8_t byte = 1;
    const std::string path = root_ + "/empty";
    EXPECT_TRUE(WriteBlockFile(path, OMData{}));
    EXPECT_TRUE(WriteBlockFile(root_ + "/no pointer", OMData{nullptr, 8}));
    EXPECT_TRUE(WriteBlockFile(root_ + "/no size", OMData{&byte, 0}));
    for (const char* name : {"/empty", "/no pointer", "/no size"}) {
        EXPECT_EQ(fs::file_size(root_ + name), 0u) << name;
    }
    WriteAll(root_ + "/plain", {1});
    EXPECT_FALSE(WriteBlockFile(root_ + "/plain/below", OMData{&byte, 1}));
}

TEST_F(BlockFileTest, TheReaderRefusesShortAndLyingFilesWithoutAllocatingBeyondThem) {
    struct Case {
        const char* name;
        std::vector<std::uint8_t> file;
    };
    const Case cases[] = {
        {"empty", {}},
        {"three bytes", {4, 0, 0}},
        {"size 0", {0, 0, 0, 0, 9, 9}},
        {"one byte missing", {4, 0, 0, 0, 1, 2, 3}},
        {"huge size", {0xF0, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4}},
        {"size beyond 2^31", {0x00, 0x00, 0x00, 0x80, 1}},
    };
    for (const Case& c : cases) {
        const std::string path = root_ + "/case";
        WriteAll(path, c.file);
        ResetLargestNothrowArray();
        const OMData read = ReadBlockFile(path);
        EXPECT_EQ(read.pointer, nullptr) << c.name;
        EXPECT_EQ(read.size, 0u) << c.name;
        EXPECT_LE(LargestNothrowArray(), c.file.size()) << c.name;
    }
    EXPECT_EQ(ReadBlockFile(root_ + "/missing").pointer, nullptr);
    // A file longer than it says is read as far as it says.
    WriteAll(root_ + "/longer", {2, 0, 0, 0, 7, 8, 9});
    const OMData read = ReadBlockFile(root_ + "/longer");
    ASSERT_EQ(read.size, 2u);
    EXPECT_EQ(read.pointer[0], 7);
    EXPECT_EQ(read.pointer[1], 8);
    delete[] read.pointer;
}

// The block digest over 109 bytes (three 32-byte stripes, one more word and
// five tail bytes, so every part of the digest is reached): every single-bit
// change, a swap of two words (in other lanes or in the same lane), and a
// change of length give another digest.
TEST(BlockDigest, EverySmallChangeChangesTheDigest) {
    constexpr std::uint32_t kSize = 109;
    std::vector<std::uint8_t> bytes(kSize);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 37 + 11);
    const std::uint64_t digest = BlockDigest(bytes.data(), kSize);
    EXPECT_EQ(BlockDigest(bytes.data(), kSize), digest);
    for (std::size_t bit = 0; bit < kSize * 8; ++bit) {
        bytes[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
        EXPECT_NE(BlockDigest(bytes.data(), kSize), digest) << "bit " << bit;
        bytes[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    }
    for (const std::size_t other : {8u, 32u, 96u}) {
        std::vector<std::uint8_t> swapped = bytes;
        std::swap_ranges(swapped.begin(), swapped.begin() + 8, swapped.begin() + other);
        EXPECT_NE(BlockDigest(swapped.data(), kSize), digest) << "word 0 swapped with the word at " << other;
    }
    EXPECT_NE(BlockDigest(bytes.data(), kSize - 1), digest);
    bytes.push_back(0);
    EXPECT_NE(BlockDigest(bytes.data(), kSize + 1), digest) << "a trailing zero byte";
}

}  // namespace
}  // namespace tr
