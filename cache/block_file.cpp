// cache/block_file.cpp — writing and reading one block file, and the block
// digest.
//
// The digest reads the bytes as 8-byte words in the machine's own order (it
// never leaves the process, so no fixed order is needed). Four lanes take
// every fourth word, so that their multiplications overlap; each word is
// spread by a multiplication with an odd constant and folded into its lane
// by xor, rotation and a second multiplication (the constants are the 64-bit
// primes of a well-known multiply-rotate hash family). Every step is a
// bijection of the lane for a fixed word and of the word for a fixed lane,
// so a change confined to one word always changes the digest. The lanes are
// merged by rotations and sums, the last words and the tail bytes are folded
// in one by one, then the length, and a final avalanche (xor-shift-multiply
// twice) lets every input bit reach every output bit. It is no defence
// against a deliberate forger, only against damage.
#include "cache/block_file.h"

#include <cstring>
#include <new>

#include "host/file.h"

namespace tr {
namespace {

constexpr std::uint64_t kSpread = 0x9E3779B185EBCA87ull;
constexpr std::uint64_t kLaneSeeds[4] = {0x27D4EB2F165667C5ull, 0x85EBCA77C2B2AE63ull,
                                         0x165667B19E3779F9ull, 0xC2B2AE3D27D4EB4Full};
constexpr int kLaneRotations[4] = {1, 7, 12, 18};
constexpr std::uint32_t kWordBytes = 8;
constexpr std::uint32_t kStripeBytes = 4 * kWordBytes;
constexpr std::uint64_t kFold = 0xC2B2AE3D27D4EB4Full;
constexpr std::uint64_t kAvalanche1 = 0xFF51AFD7ED558CCDull;
constexpr std::uint64_t kAvalanche2 = 0xC4CEB9FE1A85EC53ull;
constexpr int kFoldRotation = 31;

std::uint64_t RotateLeft(std::uint64_t value, int bits) {
    return (value << bits) | (value >> (64 - bits));
}

std::uint64_t FoldWord(std::uint64_t state, std::uint64_t word) {
    return RotateLeft(state ^ (word * kSpread), kFoldRotation) * kFold;
}

std::uint64_t LoadWord(const std::uint8_t* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

std::uint64_t LoadLittleEndian(const std::uint8_t* bytes, std::uint32_t count) {
    std::uint64_t word = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        word |= std::uint64_t{bytes[i]} << (8 * i);
    }
    return word;
}

void StoreU32(std::uint8_t* out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        out[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

// Reads exactly `count` bytes; a short read is a failure.
bool ReadExactly(Talc::File& file, void* buffer, std::uint32_t count) {
    std::uint32_t done = 0;
    return file.Read(buffer, count, done) >= 0 && done == count;
}

}  // namespace

bool WriteBlockFile(const std::string& path, const OMData& block) {
    Talc::File file;
    if (Talc::File::Open(path, Talc::FileAccessFlags::Write, file) < 0) {
        return false;
    }
    if (block.size == 0 || block.pointer == nullptr) {
        return true;
    }
    std::uint8_t header[kBlockFileHeaderBytes];
    StoreU32(header, block.size);
    std::uint32_t done = 0;
    if (file.Write(header, kBlockFileHeaderBytes, done) >= 0 && done == kBlockFileHeaderBytes) {
        (void)file.Write(block.pointer, block.size, done);
    }
    return true;
}

OMData ReadBlockFile(const std::string& path) {
    Talc::File file;
    if (Talc::File::Open(path, Talc::FileAccessFlags::Read, file) < 0) {
        return OMData{};
    }
    std::uint8_t header[kBlockFileHeaderBytes];
    if (!ReadExactly(file, header, kBlockFileHeaderBytes)) {
        return OMData{};
    }
    const auto size = static_cast<std::uint32_t>(LoadLittleEndian(header, kBlockFileHeaderBytes));
    std::uint64_t fileBytes = 0;
    if (size == 0 || file.GetSize(fileBytes) < 0 || size > fileBytes - kBlockFileHeaderBytes) {
        return OMData{};
    }
    auto* buffer = new (std::nothrow) std::uint8_t[size];
    if (buffer == nullptr) {
        return OMData{};
    }
    if (!ReadExactly(file, buffer, size)) {
        delete[] buffer;
        return OMData{};
    }
    return OMData{buffer, size};
}

std::uint64_t BlockDigest(const std::uint8_t* bytes, std::uint32_t size) {
    std::uint64_t lanes[4] = {kLaneSeeds[0], kLaneSeeds[1], kLaneSeeds[2], kLaneSeeds[3]};
    std::uint32_t offset = 0;
    for (; size - offset >= kStripeBytes; offset += kStripeBytes) {
        for (int lane = 0; lane < 4; ++lane) {
            lanes[lane] = FoldWord(lanes[lane], LoadWord(bytes + offset + lane * kWordBytes));
        }
    }
    std::uint64_t state = 0;
    for (int lane = 0; lane < 4; ++lane) state += RotateLeft(lanes[lane], kLaneRotations[lane]);
    for (; size - offset >= kWordBytes; offset += kWordBytes) {
        state = FoldWord(state, LoadWord(bytes + offset));
    }
    if (offset < size) {
        state = FoldWord(state, LoadLittleEndian(bytes + offset, size - offset));
    }
    state ^= size;
    state ^= state >> 33;
    state *= kAvalanche1;
    state ^= state >> 33;
    state *= kAvalanche2;
    state ^= state >> 33;
    return state;
}

}  // namespace tr
