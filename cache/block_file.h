// cache/block_file.h — folder-private: the disk cache's file of one
// character outline block, and the digest that tells a block read back from
// its file from one that changed there.
//
// File layout (little-endian), one block per file, nothing else:
//
//     offset 0   u32 N   size of the block in bytes
//     offset 4   N bytes the block, byte for byte
//
// There is no magic number, version or checksum in the file: a file is valid
// for exactly the process and entry that wrote it. The writer remembers the
// block's digest instead (BlockDigest) and refuses a read-back block whose
// digest differs, so that a file damaged or replaced behind the cache's back
// leads to a rebuild, never to a foreign block in the painters.
#pragma once

#include <cstdint>
#include <string>

#include "outline/block_source.h"

namespace tr {

// Bytes before the block in a file.
inline constexpr std::uint32_t kBlockFileHeaderBytes = 4;

// Opens `path` for writing and writes N and then the block: N only when the
// block has a pointer and a size, the block only when N was written. Returns
// whether the file opened; what happens after the open (a short write) is
// not reported: a later read of the short file fails and leads to a rebuild.
[[nodiscard]] bool WriteBlockFile(const std::string& path, const OMData& block);

// Reads the block of the file at `path` into a new allocation (delete[]), or
// returns (null, 0) when the file cannot be opened, is shorter than it says,
// or says 0. A size word larger than the file is refused before anything is
// allocated, so a damaged file never asks for more memory than it holds.
[[nodiscard]] OMData ReadBlockFile(const std::string& path);

// A 64-bit digest of the bytes: any change of a byte, of the order of the
// bytes, or of the length changes it but with negligible chance.
[[nodiscard]] std::uint64_t BlockDigest(const std::uint8_t* bytes, std::uint32_t size);

}  // namespace tr
